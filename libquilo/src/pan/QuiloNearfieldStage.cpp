// SPDX-License-Identifier: MIT
#include "pan/QuiloNearfieldStage.h"

#include "filterdesign/VelkDspSectionDesign.h"
#include "processors/VelkDspRamp.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quilo {

namespace {

constexpr float kLargestState = 1e12f;

}  // namespace

NearfieldStage::NearfieldStage(unsigned numSources, float rateHz, std::size_t longestPiece)
    : rateHz_(rateHz),
      longestPiece_(longestPiece),
      sources_(numSources),
      groups_((numSources + kLanes - 1) / kLanes) {
    for (auto& ear : ears_) ear.resize(kLanes * longestPiece);
}

void NearfieldStage::SetSource(unsigned index, const NearfieldEars& ears, float glideMs) noexcept {
    const auto gOf = [this](float hz) {
        return static_cast<float>(
            tav::IntegratorGain(static_cast<double>(hz), static_cast<double>(rateHz_)));
    };
    Target target;
    for (std::size_t e = 0; e < kEars; ++e) {
        const NearfieldEar& ear = ears[e];
        target.ears[e] = {
            ear.gain, {ear.shelf, ear.parallax}, {gOf(ear.shelfHz), gOf(ear.parallaxHz)}};
    }
    target.numSteps = (tav::Ramp::GlideLength(glideMs, rateHz_) + kStep - 1) / kStep;
    sources_[index].shared.Store(target);
}

void NearfieldStage::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    Source& source = sources_[index];
    Group& group = groups_[index / kLanes];
    const std::size_t lane = index % kLanes;
    source.shared.Take(source.taken);
    Rest(group, lane, source);
    for (SectionRows& section : group.sections) {
        for (Row& row : section.states) row.values[lane] = 0.f;
    }
}

void NearfieldStage::TakeTarget(Group& group,
                                std::size_t lane,
                                Source& source) noexcept TAV_NONBLOCKING {
    const Target before = source.taken;
    if (!source.shared.Take(source.taken)) return;
    const std::uint32_t numSteps = source.taken.numSteps;
    if (numSteps == 0) return Rest(group, lane, source);
    // The target that is in force already neither starts its glide again nor changes its length.
    if (source.taken.ears == before.ears) {
        source.taken.numSteps = before.numSteps;
        return;
    }
    source.from = source.next;
    source.steps = 0;
    for (std::size_t e = 0; e < kEars; ++e) {
        for (std::size_t s = 0; s < kSections; ++s) {
            const float from = source.from[e].g[s], to = source.taken.ears[e].g[s];
            source.growth[e][s] =
                from == to ? 1.f : std::pow(to / from, 1.f / static_cast<float>(numSteps));
        }
    }
    if (!std::exchange(source.glides, true)) ++group.numGliding;
}

/// Everything is at its target.
void NearfieldStage::Rest(Group& group, std::size_t lane, Source& source) noexcept TAV_NONBLOCKING {
    source.next = source.taken.ears;
    if (std::exchange(source.glides, false)) --group.numGliding;
    SetLane(group, lane, source.next, source.next);
}

/// From one point of the grid to the next.
void NearfieldStage::Advance(Group& group,
                             std::size_t lane,
                             Source& source) noexcept TAV_NONBLOCKING {
    const std::uint32_t numSteps = source.taken.numSteps;
    if (source.steps == numSteps) return Rest(group, lane, source);
    const Ears before = source.next;
    ++source.steps;
    const float part = static_cast<float>(source.steps) / static_cast<float>(numSteps);
    for (std::size_t e = 0; e < kEars; ++e) {
        const Numbers &from = source.from[e], &to = source.taken.ears[e];
        Numbers& next = source.next[e];
        next.gain = std::lerp(from.gain, to.gain, part);
        for (std::size_t s = 0; s < kSections; ++s) {
            next.ratios[s] = std::lerp(from.ratios[s], to.ratios[s], part);
            next.g[s] *= source.growth[e][s];
        }
    }
    if (source.steps == numSteps) source.next = source.taken.ears;
    SetLane(group, lane, before, source.next);
}

void NearfieldStage::SetLane(Group& group,
                             std::size_t lane,
                             const Ears& from,
                             const Ears& to) noexcept TAV_NONBLOCKING {
    for (std::size_t s = 0; s < kSections; ++s) {
        SectionRows& rows = group.sections[s];
        for (std::size_t e = 0; e < kEars; ++e) {
            // lowpass + ratio * highpass, where the high-pass is what the low-pass leaves; the last
            // section has the gain.
            const auto mixOf = [s](const Numbers& ear) {
                const float gain = s == Parallax ? ear.gain : 1.f;
                return std::array{gain * ear.ratios[s], gain * (1.f - ear.ratios[s])};
            };
            const auto before = mixOf(from[e]), after = mixOf(to[e]);
            for (std::size_t m = 0; m < before.size(); ++m) {
                rows.mix[m * kEars + e].values[lane] = before[m];
                rows.steps[m * kEars + e].values[lane] =
                    (after[m] - before[m]) / static_cast<float>(kStep);
            }
            rows.gains[e].values[lane] = to[e].g[s] / (1.f + to[e].g[s]);
        }
    }
}

void NearfieldStage::Perform(std::size_t index,
                             const Signals& inputs,
                             std::size_t frames) noexcept TAV_NONBLOCKING {
    Group& group = groups_[index];
    for (std::size_t lane = 0; Source & source : MembersOf(index)) {
        TakeTarget(group, lane++, source);
    }
    for (std::size_t done = 0; done < frames; done += kChunk) {
        const std::size_t count = std::min(frames - done, kChunk);
        const auto n = static_cast<int>(count);
        Signals from = inputs;
        for (const float*& signal : from) signal += done;
        rowKernels_.toRows(from.data(), input_.front().values.data(), n);
        RunRows(index, count);
        for (std::size_t e = 0; e < kEars; ++e) {
            std::array<float*, kLanes> to{};
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                to[lane] = ears_[e].data() + lane * longestPiece_ + done;
            }
            rowKernels_.fromRows(rows_[e].front().values.data(), to.data(), n);
        }
    }
    Recover(group, frames);
}

/// From input_ to rows_.
void NearfieldStage::RunRows(std::size_t index, std::size_t frames) noexcept TAV_NONBLOCKING {
    Group& group = groups_[index];
    for (std::size_t done = 0; done < frames;) {
        if (group.untilStep == 0) {
            for (std::size_t lane = 0; Source & source : MembersOf(index)) {
                if (source.glides) Advance(group, lane, source);
                ++lane;
            }
            group.untilStep = group.numGliding > 0 ? kStep : 0;
        }
        std::size_t count = frames - done;
        if (group.untilStep > 0) count = std::min<std::size_t>(count, group.untilStep);
        RunSections(group, done, count);
        if (group.untilStep > 0) group.untilStep -= static_cast<unsigned>(count);
        done += count;
    }
}

void NearfieldStage::RunSections(Group& group,
                                 std::size_t first,
                                 std::size_t count) noexcept TAV_NONBLOCKING {
    float* const input = input_[first].values.data();
    const tav::EarRows ears{rows_[0][first].values.data(), rows_[1][first].values.data()};
    const bool moves = group.untilStep > 0;
    for (std::size_t s = 0; s < kSections; ++s) {
        SectionRows& rows = group.sections[s];
        kernels_.firstOrder(
            {rows.gains.front().values.data(), rows.mix.front().values.data(),
             moves ? rows.steps.front().values.data() : nullptr, rows.states.front().values.data()},
            s == 0 ? tav::EarRows{input, input} : ears, ears, false, static_cast<int>(count));
        for (std::size_t m = 0; moves && m < rows.mix.size(); ++m) {
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                rows.mix[m].values[lane] += static_cast<float>(count) * rows.steps[m].values[lane];
            }
        }
    }
}

/// A source that has run away is silent and begins anew.
void NearfieldStage::Recover(Group& group, std::size_t frames) noexcept TAV_NONBLOCKING {
    Row sums;
    for (const SectionRows& section : group.sections) {
        for (const Row& state : section.states) {
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                sums.values[lane] += std::abs(state.values[lane]);
            }
        }
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        if (sums.values[lane] <= kLargestState) continue;
        for (SectionRows& section : group.sections) {
            for (Row& state : section.states) state.values[lane] = 0.f;
        }
        for (auto& ear : ears_) std::fill_n(ear.data() + lane * longestPiece_, frames, 0.f);
    }
}

}  // namespace Quilo
