// SPDX-License-Identifier: MIT
#include "processors/VelkDspMultiEqualizer.h"

#include "containers/VelkDspRelaxed.h"

#include <algorithm>
#include <cmath>

namespace tav {

namespace {

constexpr double kGlideSeconds = 0.02;
constexpr double kLargestStates = 1e12;  // larger states have diverged

}  // namespace

MultiEqualizer::MultiEqualizer(unsigned numChannels,
                               unsigned numBands,
                               const SectionKernels& kernels)
    : AudioProcessorWithAutoMute(numChannels, numChannels),
      numBands_(numBands),
      kernels_(kernels),
      settings_(std::size_t{numChannels} * numBands),
      targets_(settings_.size()),
      glides_(settings_.size()),
      active_(numChannels, 0),
      groups_((numChannels + kLanes - 1) / kLanes) {
    banks_.resize(groups_.size() * numBands);
    for (unsigned i = 0; i < groups_.size(); ++i) {
        Group& group = groups_[i];
        group.firstChannel = i * kLanes;
        group.numLanes = std::min(numChannels - group.firstChannel, kLanes);
        group.banks = banks_.data() + std::size_t{i} * numBands;
    }
    for (unsigned channel = 0; channel < numChannels; ++channel) {
        for (unsigned band = 0; band < numBands; ++band) Publish(channel, band);
    }
}

void MultiEqualizer::Process(float* const* outputs,
                             const float* const* inputs,
                             unsigned frames) noexcept TAV_NONBLOCKING {
    Run(outputs, inputs, frames, true);
}

std::string MultiEqualizer::Name() const { return "multi equalizer"; }

void MultiEqualizer::SetSampleRate(float hz) {
    const float before = SampleRate();
    AudioProcessorWithAutoMute::SetSampleRate(hz);
    if (SampleRate() == before) return;
    ++numJumps_;
    for (unsigned channel = 0; channel < NumInputs(); ++channel) {
        for (unsigned band = 0; band < numBands_; ++band) Publish(channel, band);
    }
    forget_.store(true, kRelaxed);
}

void MultiEqualizer::Reset() {
    AudioProcessorWithAutoMute::Reset();
    forget_.store(true, kRelaxed);
}

void MultiEqualizer::SetBand(unsigned channel, unsigned band, const FilterSetting& setting) {
    if (channel >= NumInputs() || band >= numBands_) return;
    if (!std::isfinite(setting.frequencyHz) || !std::isfinite(setting.quality) ||
        !std::isfinite(setting.gainDb)) {
        return;
    }
    FilterSetting& stored = settings_[std::size_t{channel} * numBands_ + band];
    if (stored == setting) return;
    stored = setting;
    Publish(channel, band);
}

FilterSetting MultiEqualizer::Band(unsigned channel, unsigned band) const {
    if (channel >= NumInputs() || band >= numBands_) return {};
    return settings_[std::size_t{channel} * numBands_ + band];
}

void MultiEqualizer::Publish(unsigned channel, unsigned band) noexcept {
    const std::size_t index = std::size_t{channel} * numBands_ + band;
    const auto rate = static_cast<double>(SampleRate());
    const double steps = std::round(kGlideSeconds * rate / kGrid);
    targets_[index].Store({DesignSection(settings_[index], rate),
                           static_cast<std::uint32_t>(std::max(steps, 1.0)), numJumps_});
    writes_.store(writes_.load(kRelaxed) + 1, std::memory_order_release);
}

void MultiEqualizer::Perform(float* const* outputs,
                             const float* const* inputs,
                             unsigned frames) noexcept TAV_NONBLOCKING {
    Run(outputs, inputs, frames, false);
}

void MultiEqualizer::Run(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames,
                         bool connectedOnly) noexcept TAV_NONBLOCKING {
    UpdateActivity();
    TakeTargets();
    started_ = started_ || frames > 0;
    for (unsigned offset = 0; offset < frames; offset += kPiece) {
        const unsigned count = std::min(frames - offset, kPiece);
        for (Group& group : groups_) {
            RunGroup(group, {outputs, inputs, offset, count, connectedOnly});
        }
        gridPosition_ = (gridPosition_ + count) % kGrid;
    }
}

MultiEqualizer::Lane MultiEqualizer::LaneOf(unsigned channel) noexcept TAV_NONBLOCKING {
    return {groups_[channel / kLanes], channel, channel % kLanes};
}

void MultiEqualizer::UpdateActivity() noexcept TAV_NONBLOCKING {
    const std::uint32_t changes = ActivityChanges();
    if (changes == seenActivity_) return;
    seenActivity_ = changes;
    for (unsigned channel = 0; channel < NumInputs(); ++channel) {
        const char active = InputConnectedAndActive(channel) ? 1 : 0;
        if (active == active_[channel]) continue;
        active_[channel] = active;
        const Lane lane = LaneOf(channel);
        if (active == 1) {
            ++lane.group.numActive;
        } else {
            --lane.group.numActive;
            Forget(lane);
        }
    }
}

void MultiEqualizer::TakeTargets() noexcept TAV_NONBLOCKING {
    const std::uint32_t writes = writes_.load(std::memory_order_acquire);
    if (writes != seenWrites_) {
        seenWrites_ = writes;  // the end of a write in progress changes it again
        for (unsigned channel = 0; channel < NumInputs(); ++channel) {
            const Lane lane = LaneOf(channel);
            for (unsigned band = 0; band < numBands_; ++band) {
                Glide& glide = GlidesOf(channel)[band];
                const std::uint32_t jumps = glide.target.jumps;
                if (!targets_[std::size_t{channel} * numBands_ + band].Take(glide.target)) continue;
                const bool jump = !started_ || active_[channel] == 0;
                StartGlide(lane, band, jump || glide.target.jumps != jumps);
            }
        }
    }
    if (!forget_.load(kRelaxed)) return;
    forget_.store(false, kRelaxed);
    for (unsigned channel = 0; channel < NumInputs(); ++channel) Forget(LaneOf(channel));
}

/// Starts the glide of a band to its target.
void MultiEqualizer::StartGlide(const Lane& lane,
                                unsigned band,
                                bool jump) noexcept TAV_NONBLOCKING {
    Glide& glide = GlidesOf(lane.channel)[band];
    if (!glide.moves) ++lane.group.numMoving;
    glide.moves = true;
    if (jump) return EndGlide(lane, band);
    const double part = 1.0 / static_cast<double>(glide.target.steps);
    glide.gRatio = std::pow(glide.target.design.g / glide.g, part);
    glide.kRatio = std::pow(glide.target.design.k / glide.k, part);
    glide.stepsLeft = glide.target.steps;
}

/// Ends a glide at its target.
void MultiEqualizer::EndGlide(const Lane& lane, unsigned band) noexcept TAV_NONBLOCKING {
    Glide& glide = GlidesOf(lane.channel)[band];
    if (!glide.moves) return;
    --lane.group.numMoving;
    const SectionDesign& design = glide.target.design;
    glide.g = design.g;
    glide.k = design.k;
    glide.stepsLeft = 0;
    glide.moves = false;
    SectionBank& bank = lane.group.banks[band];
    const SectionLoop loop = SectionLoop::Of(glide.g, glide.k);
    bank.a1[lane.lane] = loop.a1;
    bank.a2[lane.lane] = loop.a2;
    bank.a3[lane.lane] = loop.a3;
    bank.m0[lane.lane] = design.m0;
    bank.m1[lane.lane] = design.m1;
    bank.m2[lane.lane] = design.m2;
    bank.step0[lane.lane] = bank.step1[lane.lane] = bank.step2[lane.lane] = 0.0;
}

/// Takes the next step of a glide: g and k are set to the step's values, and the mix moves linearly
/// towards the values of the step after it.
void MultiEqualizer::Step(const Lane& lane, unsigned band) noexcept TAV_NONBLOCKING {
    Glide& glide = GlidesOf(lane.channel)[band];
    if (!glide.moves) return;
    if (glide.stepsLeft == 0) return EndGlide(lane, band);
    const SectionDesign& design = glide.target.design;
    SectionBank& bank = lane.group.banks[band];
    const double part = 1.0 / (static_cast<double>(kGrid) * glide.stepsLeft);
    bank.step0[lane.lane] = (design.m0 - bank.m0[lane.lane]) * part;
    bank.step1[lane.lane] = (design.m1 - bank.m1[lane.lane]) * part;
    bank.step2[lane.lane] = (design.m2 - bank.m2[lane.lane]) * part;
    --glide.stepsLeft;
    glide.g *= glide.gRatio;
    glide.k *= glide.kRatio;
    const SectionLoop loop = SectionLoop::Of(glide.g, glide.k);
    bank.a1[lane.lane] = loop.a1;
    bank.a2[lane.lane] = loop.a2;
    bank.a3[lane.lane] = loop.a3;
}

void MultiEqualizer::StepAll(Group& group) noexcept TAV_NONBLOCKING {
    for (unsigned lane = 0; lane < group.numLanes; ++lane) {
        for (unsigned band = 0; band < numBands_; ++band) {
            Step({group, group.firstChannel + lane, lane}, band);
        }
    }
}

/// Clears the states of all bands of a channel and ends their glides.
void MultiEqualizer::Forget(const Lane& lane) noexcept TAV_NONBLOCKING {
    for (unsigned band = 0; band < numBands_; ++band) {
        EndGlide(lane, band);
        lane.group.banks[band].s1[lane.lane] = lane.group.banks[band].s2[lane.lane] = 0.0;
    }
}

void MultiEqualizer::RunGroup(Group& group, const Piece& piece) noexcept TAV_NONBLOCKING {
    float* outputs[kLanes];
    float* ends[kLanes];
    const float* inputs[kLanes];
    for (unsigned lane = 0; lane < group.numLanes; ++lane) {
        const unsigned channel = group.firstChannel + lane;
        const bool heard = !piece.connectedOnly || OutputConnected(channel);
        outputs[lane] = heard ? piece.outputs[channel] + piece.offset : unheard_.data();
        inputs[lane] =
            active_[channel] == 1 ? piece.inputs[channel] + piece.offset : silence_.data();
        if (group.numActive == 0) std::fill_n(outputs[lane], piece.frames, 0.f);
        ends[lane] = outputs[lane];
    }
    if (group.numActive == 0) return;
    unsigned position = gridPosition_;
    for (unsigned done = 0; done < piece.frames;) {
        if (position == 0 && group.numMoving > 0) StepAll(group);
        const bool moves = group.numMoving > 0;
        const unsigned left = piece.frames - done;
        const unsigned count = moves ? std::min(left, kGrid - position) : left;
        (moves ? kernels_.runMoving : kernels_.run)({group.banks, static_cast<int>(numBands_),
                                                     static_cast<int>(group.numLanes), ends, inputs,
                                                     static_cast<int>(count)});
        for (unsigned lane = 0; lane < group.numLanes; ++lane) {
            ends[lane] += count;
            inputs[lane] += count;
        }
        position = (position + count) % kGrid;
        done += count;
    }
    GuardStates(group, outputs, piece.frames);
}

/// Clears diverged states and zeroes the outputs of their channels for the piece.
void MultiEqualizer::GuardStates(Group& group,
                                 float* const* outputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    double sums[kLanes] = {};
    for (unsigned band = 0; band < numBands_; ++band) {
        const SectionBank& bank = group.banks[band];
        for (unsigned lane = 0; lane < kLanes; ++lane) {
            sums[lane] += std::abs(bank.s1[lane]) + std::abs(bank.s2[lane]);
        }
    }
    for (unsigned lane = 0; lane < group.numLanes; ++lane) {
        if (sums[lane] <= kLargestStates) continue;  // false for NaN
        Forget({group, group.firstChannel + lane, lane});
        std::fill_n(outputs[lane], frames, 0.f);
    }
}

}  // namespace tav
