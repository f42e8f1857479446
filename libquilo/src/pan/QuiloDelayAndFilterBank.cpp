// SPDX-License-Identifier: MIT
#include "pan/QuiloDelayAndFilterBank.h"

#include "filterdesign/VelkDspSectionDesign.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace Quilo {

namespace {

constexpr float kGainMs = 5.f;
constexpr unsigned kCornerStep = 16;  // frames
constexpr float kLargestSum = 1e12f;

bool IsSaneSum(std::span<const float> signal) noexcept TAV_NONBLOCKING {
    float sum = 0.f;
    for (const float x : signal) sum += std::abs(x);
    return sum <= kLargestSum;
}

}  // namespace

DelayAndFilterBank::DelayAndFilterBank(unsigned numSources, float rateHz, bool hasTorso)
    : rateHz_(rateHz),
      hasTorso_(hasTorso),
      sources_(numSources),
      voices_(numSources, rateHz, kPiece, 0, 1, (hasTorso ? 2 : 1) * kEars),
      groups_((numSources + kLanes - 1) / kLanes) {}

void DelayAndFilterBank::SetCorners(const ShadowCorners& corners, float glideMs) noexcept {
    corners_.Store({corners, glideMs});
}

void DelayAndFilterBank::SetSource(unsigned index,
                                   const EarPaths& paths,
                                   float gain,
                                   float glideMs) noexcept {
    Voice& voice = sources_[index];
    if (glideMs == 0.f) voice.jump.Store({paths, gain, glideMs});
    voice.target.Store({paths, gain, glideMs});
}

void DelayAndFilterBank::Perform(float* left,
                                 float* right,
                                 const float* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    TakeCorners();
    const tav::DelayKind kind = kind_.load(std::memory_order_relaxed);
    if (std::exchange(kindInForce_, kind) != kind) voices_.SetKind(kind);
    const std::uint32_t resets = resets_.load(std::memory_order_relaxed);
    const bool forget = std::exchange(resetsDone_, resets) != resets;
    for (unsigned i = 0; i < sources_.size(); ++i) {
        if (forget && sources_[i].state == SourceState::Awake) Sleep(i, SourceState::Asleep);
        TakeTarget(i, inputs[i] != nullptr);
    }
    for (unsigned done = 0; done < frames;) {
        const unsigned count = GlideCorners(std::min(frames - done, kPiece));
        for (unsigned i = 0; i < sources_.size(); ++i) {
            if (sources_[i].state == SourceState::Awake) voices_.Take(i, {inputs[i] + done, count});
        }
        RunPiece(left != nullptr ? left + done : nullptr, right != nullptr ? right + done : nullptr,
                 count);
        done += count;
    }
}

// ---- Corners

void DelayAndFilterBank::TakeCorners() noexcept TAV_NONBLOCKING {
    CornersTarget target;
    if (!corners_.Take(target)) return;
    const float glideMs = std::exchange(hasCorners_, true) ? target.glideMs : 0.f;
    const std::uint32_t glide = tav::Ramp::GlideLength(glideMs, rateHz_);
    const auto log = [this](float hz) { return std::log(std::clamp(hz, 1.f, 0.49f * rateHz_)); };
    headLog_.SetOverSamples(log(target.corners.headHz), glide);
    torsoLog_.SetOverSamples(log(target.corners.torsoHz), glide);
    untilCorners_ = 0;
    if (headLog_.IsConstant() && torsoLog_.IsConstant()) SetGains();
}

void DelayAndFilterBank::SetGains() noexcept TAV_NONBLOCKING {
    const auto gainAt = [this](const tav::Ramp& log) {
        const double g = tav::IntegratorGain(std::exp(static_cast<double>(log.Value())),
                                             static_cast<double>(rateHz_));
        return static_cast<float>(g / (1.0 + g));
    };
    const float head = gainAt(headLog_), torso = gainAt(torsoLog_);
    for (std::size_t section = 0; section < kSections; ++section) {
        for (Row& row : gains_[section]) row.values.fill(section == Torso ? torso : head);
    }
}

/// @return frames until the corners move again, at most `frames`
unsigned DelayAndFilterBank::GlideCorners(unsigned frames) noexcept TAV_NONBLOCKING {
    if (untilCorners_ == 0) {
        if (headLog_.IsConstant() && torsoLog_.IsConstant()) return frames;
        headLog_.Skip(kCornerStep);
        torsoLog_.Skip(kCornerStep);
        SetGains();
        untilCorners_ = kCornerStep;
    }
    const unsigned count = std::min(frames, untilCorners_);
    untilCorners_ -= count;
    return count;
}

// ---- Sources

void DelayAndFilterBank::TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING {
    Voice& voice = sources_[index];
    const bool isAwake = voice.state == SourceState::Awake;
    if (voice.jump.Take(voice.taken) && isAwake) Apply(index, 0);
    if (voice.target.Take(voice.taken) && isAwake) {
        Apply(index, tav::Ramp::GlideLength(voice.taken.glideMs, rateHz_));
    }
    const bool isSilenced = isAwake && voices_.IsSilenced(index);
    const SourceState next = NextState(voice.state, present, voice.taken.gain != 0.f, isSilenced);
    if (next == SourceState::Awake && !isAwake) return Wake(index);
    if (next != SourceState::Awake && isAwake) return Sleep(index, next);
    voice.state = next;
}

/// Gives paths and gain their targets.
void DelayAndFilterBank::Apply(unsigned index,
                               std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    Voice& voice = sources_[index];
    const EarPaths& paths = voice.taken.paths;
    const auto set = [&](Section section, std::size_t ear, float gain, float shadow) {
        const float values[] = {gain * shadow, gain * (1.f - shadow)};
        for (std::size_t m = 0; m < std::size(values); ++m) {
            tav::Ramp& ramp = voice.mix[section][m * kEars + ear];
            if (values[m] != ramp.Target() || glideSamples == 0) {
                ramp.SetOverSamples(values[m], glideSamples);
            }
        }
    };
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        const EarPath &direct = paths.direct[ear], &reflected = paths.reflected[ear];
        voices_.SetDelay(index, ear, direct.delayMs, glideSamples);
        set(Head, ear, direct.gain, direct.headShadow);
        if (!hasTorso_) continue;
        voices_.SetDelay(index, kEars + ear, reflected.delayMs, glideSamples);
        set(Torso, ear, 1.f, direct.torsoShadow);
        set(ReflectedHead, ear, reflected.gain, reflected.headShadow);
    }
    voices_.SetGain(index, voice.taken.gain, tav::Ramp::GlideLength(kGainMs, rateHz_));
    if (!std::exchange(voice.glides, true)) ++groups_[index / kLanes].numGliding;
}

void DelayAndFilterBank::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = sources_[index];
    voices_.Wake(index);
    // A source that was muted may be in the middle of a sound.
    voices_.SetGain(index, voice.state == SourceState::Muted ? 0.f : voice.taken.gain, 0);
    voice.state = SourceState::Awake;
    ++groups_[index / kLanes].numAwake;
    Apply(index, 0);
}

void DelayAndFilterBank::Sleep(unsigned index, SourceState state) noexcept TAV_NONBLOCKING {
    Group& group = groups_[index / kLanes];
    sources_[index].state = state;
    --group.numAwake;
    if (std::exchange(sources_[index].glides, false)) --group.numGliding;
    for (SectionRows& section : group.sections) {
        for (Row& row : section.states) row.values[index % kLanes] = 0.f;
    }
}

// ---- Groups

void DelayAndFilterBank::RunPiece(float* left,
                                  float* right,
                                  unsigned frames) noexcept TAV_NONBLOCKING {
    std::fill_n(sum_.left.begin(), frames, Row{});
    std::fill_n(sum_.right.begin(), frames, Row{});
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        if (groups_[g].numAwake == 0) continue;
        FillPath(g, 0, frames);
        if (hasTorso_) FillPath(g, 1, frames);
        for (unsigned done = 0; done < frames;) {
            const unsigned count = GlideMix(g, frames - done);
            RunSections(groups_[g], done, count);
            done += count;
        }
    }
    std::array<float, kPiece> heard[kEars] = {};
    const auto n = static_cast<int>(frames);
    kernels_.sumLanes(sum_.left.front().values.data(), heard[0].data(), n);
    kernels_.sumLanes(sum_.right.front().values.data(), heard[1].data(), n);
    if (!IsSaneSum(heard[0]) || !IsSaneSum(heard[1])) return Recover();
    for (unsigned k = 0; left != nullptr && k < frames; ++k) left[k] += heard[0][k];
    for (unsigned k = 0; right != nullptr && k < frames; ++k) right[k] += heard[1][k];
}

/// The delayed sources at both ears as rows.
void DelayAndFilterBank::FillPath(std::size_t group,
                                  std::size_t path,
                                  unsigned frames) noexcept TAV_NONBLOCKING {
    const std::size_t first = group * kLanes;
    const std::size_t count = std::min(kLanes, sources_.size() - first);
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t lane = 0; lane < count; ++lane) {
            const auto voice = static_cast<unsigned>(first + lane);
            if (sources_[voice].state != SourceState::Awake) {
                reader_.SetSilent(lane);
            } else {
                reader_.Set(lane, voices_.ReadingOf(voice, path * kEars + ear));
            }
        }
        Rows& rows = ear == 0 ? paths_[path].left : paths_[path].right;
        reader_.Read(count, rows.front().values.data(), frames);
    }
}

/// Writes the mixes of the next frames.  @return how many: until one of the glides ends
unsigned DelayAndFilterBank::GlideMix(std::size_t group, unsigned frames) noexcept TAV_NONBLOCKING {
    if (groups_[group].numGliding == 0) return frames;
    const unsigned count = FramesToBend(group, frames);
    const std::size_t end = std::min((group + 1) * kLanes, sources_.size());
    for (std::size_t i = group * kLanes; i < end; ++i) {
        if (sources_[i].glides) WriteMix(static_cast<unsigned>(i), count);
    }
    return count;
}

unsigned DelayAndFilterBank::FramesToBend(std::size_t group,
                                          unsigned frames) const noexcept TAV_NONBLOCKING {
    const std::size_t end = std::min((group + 1) * kLanes, sources_.size());
    for (std::size_t i = group * kLanes; i < end; ++i) {
        if (!sources_[i].glides) continue;
        for (std::size_t s = 0; s < NumSections(); ++s) {
            for (const tav::Ramp& ramp : sources_[i].mix[s]) {
                if (!ramp.IsConstant()) frames = std::min(frames, ramp.SamplesLeft());
            }
        }
    }
    return frames;
}

void DelayAndFilterBank::WriteMix(unsigned index, unsigned frames) noexcept TAV_NONBLOCKING {
    Voice& voice = sources_[index];
    Group& group = groups_[index / kLanes];
    const std::size_t lane = index % kLanes;
    bool glides = false;
    for (std::size_t s = 0; s < NumSections(); ++s) {
        for (std::size_t m = 0; m < 2 * kEars; ++m) {
            tav::Ramp& ramp = voice.mix[s][m];
            const bool rests = ramp.IsConstant();
            const float before = ramp.Value();
            ramp.Skip(frames);
            group.sections[s].mix[m].values[lane] = before;
            group.sections[s].steps[m].values[lane] =
                rests ? 0.f : (ramp.Value() - before) / static_cast<float>(frames);
            glides = glides || !rests;
        }
    }
    if (glides) return;
    voice.glides = false;
    --group.numGliding;
}

void DelayAndFilterBank::RunSections(Group& group,
                                     unsigned first,
                                     unsigned count) noexcept TAV_NONBLOCKING {
    const auto from = [first](Ears& ears) {
        return tav::EarRows{ears.left[first].values.data(), ears.right[first].values.data()};
    };
    const tav::EarRows direct = from(paths_[0]), reflected = from(paths_[1]), sum = from(sum_);
    if (!hasTorso_) return RunSection(group, Head, direct, sum, count);
    RunSection(group, Torso, direct, direct, count);
    RunSection(group, Head, direct, sum, count);
    RunSection(group, ReflectedHead, reflected, sum, count);
}

/// Adds, unless it runs in place.
void DelayAndFilterBank::RunSection(Group& group,
                                    Section section,
                                    const tav::EarRows& in,
                                    const tav::EarRows& out,
                                    unsigned count) noexcept TAV_NONBLOCKING {
    SectionRows& rows = group.sections[section];
    const float* const steps = group.numGliding > 0 ? rows.steps.front().values.data() : nullptr;
    kernels_.firstOrder({gains_[section].front().values.data(), rows.mix.front().values.data(),
                         steps, rows.states.front().values.data()},
                        in, out, in.left != out.left, static_cast<int>(count));
}

void DelayAndFilterBank::Recover() noexcept TAV_NONBLOCKING {
    for (Group& group : groups_) {
        for (SectionRows& section : group.sections) {
            for (Row& row : section.states) {
                for (float& state : row.values) {
                    if (!(std::abs(state) <= kLargestSum)) state = 0.f;
                }
            }
        }
    }
}

}  // namespace Quilo
