// SPDX-License-Identifier: MIT
#include "processors/VelkDspSignalMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tav {
namespace {

constexpr float kLongestRamp = 1073741824.f;  // samples; fits a ramp position with room to add

/// Float throughout: whole milliseconds give the exact length at all usual rates.
std::int32_t RampLength(float milliseconds, float sampleRateHz) noexcept {
    return static_cast<std::int32_t>(std::min(milliseconds * 0.001f * sampleRateHz, kLongestRamp));
}

}  // namespace

GainMatrixProcessor::GainMatrixProcessor(unsigned numInputs,
                                         unsigned numOutputs,
                                         const Kernels& kernels)
    : AudioProcessorWithAutoMute(numInputs, numOutputs),
      target_(numInputs, numOutputs),
      mixer_(numInputs, numOutputs, kernels),
      seenRows_(numInputs),
      to_(numInputs, numOutputs),
      newRow_(numOutputs) {}

void GainMatrixProcessor::Process(float* const* outputs,
                                  const float* const* inputs,
                                  unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
    Perform(outputs, inputs, frames);
}

void GainMatrixProcessor::CopyRow(unsigned row, std::span<float> gains) const noexcept {
    if (row < NumInputs() && gains.size() == NumOutputs()) target_.CopyOut(row, gains);
}

bool GainMatrixProcessor::Accepts(unsigned row, std::span<const float> gains) const noexcept {
    return row < NumInputs() && gains.size() == NumOutputs() &&
           std::ranges::all_of(gains, [](float gain) { return std::isfinite(gain); });
}

bool GainMatrixProcessor::UpdateActivity() noexcept TAV_NONBLOCKING {
    for (unsigned input = 0; input < NumInputs(); ++input) {
        mixer_.SetActive(input, InputConnectedAndActive(input));
    }
    bool changed = false;
    for (unsigned output = 0; output < NumOutputs(); ++output) {
        changed = mixer_.SetConnected(output, OutputConnected(output)) || changed;
    }
    return changed;
}

SignalMatrix::SignalMatrix(unsigned numInputs, unsigned numOutputs, const Kernels& kernels)
    : GainMatrixProcessor(numInputs, numOutputs, kernels),
      controlRow_(numOutputs),
      jumps_(numInputs, numOutputs),
      from_(numInputs, numOutputs),
      moving_(numInputs),
      stale_(numInputs) {}

std::string SignalMatrix::Name() const { return "signal matrix"; }

void SignalMatrix::SetSampleRate(float hz) {
    AudioProcessorWithAutoMute::SetSampleRate(hz);
    RestartRamp();
}

void SignalMatrix::SetInterpolationTime(float ms) noexcept {
    if (!std::isfinite(ms)) return;
    interpolationTimeMs_ = std::max(ms, 0.f);
    RestartRamp();
}

void SignalMatrix::RestartRamp() noexcept {
    controlRampLength_ = RampLength(interpolationTimeMs_, SampleRate());
    GainJump& jump = jumps_.Open();
    jump.SetRampLength(controlRampLength_);
    if (controlRampLength_ < 1) {
        for (unsigned row = 0; row < NumInputs(); ++row) {
            target_.CopyOut(row, controlRow_);
            jump.AdvanceRow(row, controlRow_);
        }
    }
    jumps_.Post();
}

void SignalMatrix::SetRow(unsigned row, std::span<const float> gains, bool immediate) noexcept {
    if (!Accepts(row, gains)) return;
    target_.Write(row, gains);
    if (!immediate && controlRampLength_ > 0) return;
    jumps_.Open().SetRow(row, gains);
    jumps_.Post();
}

void SignalMatrix::Perform(float* const* outputs,
                           const float* const* inputs,
                           unsigned frames) noexcept TAV_NONBLOCKING {
    TakeJump();
    if (UpdateActivity()) SetAllStale();
    int offset = 0;
    int left = static_cast<int>(frames);
    while (left > 0) {
        SetMixerRows();
        if (AtRest()) {
            // Segments that change nothing need no boundaries between them.
            mixer_.Mix(outputs, inputs, offset, {0, left});
            const std::int64_t played = std::int64_t{rampPosition_} + left;
            rampPosition_ = rampLength_ > 0 ? static_cast<std::int32_t>(played % rampLength_) : 0;
            return;
        }
        const int piece = std::min(left, rampLength_ - rampPosition_);
        mixer_.Mix(outputs, inputs, offset, {rampPosition_, piece});
        rampPosition_ += piece;
        offset += piece;
        left -= piece;
        if (rampPosition_ >= rampLength_) NextSegment();
    }
}

/// Nothing moves, and no boundary will make anything move.
bool SignalMatrix::AtRest() const noexcept TAV_NONBLOCKING {
    if (rampLength_ < 1) return true;
    return numMoving_ == 0 && !rowWaits_ && target_.Writes() == seenWrites_;
}

void SignalMatrix::TakeJump() noexcept TAV_NONBLOCKING {
    const GainJump* jump = jumps_.Take();
    if (jump == nullptr) return;
    for (std::size_t row = 0; row < jump->NumRows(); ++row) {
        if (jump->KindOf(row) != GainJump::Row::Keep) JumpRow(row, *jump);
    }
    if (jump->HasRampLength()) {
        rampLength_ = jump->RampLength();
        inverseRampLength_ = rampLength_ < 1 ? 1.f : 1.f / static_cast<float>(rampLength_);
        rampPosition_ = 0;
        SetAllStale();
    }
    jumps_.Release();
}

void SignalMatrix::JumpRow(std::size_t row, const GainJump& jump) noexcept TAV_NONBLOCKING {
    const bool fromTo = jump.KindOf(row) == GainJump::Row::FromTo;
    std::ranges::copy(fromTo ? to_.Row(row) : jump.From(row), from_.Row(row).begin());
    std::ranges::copy(jump.To(row), to_.Row(row).begin());
    SetMoving(row, !std::ranges::equal(from_.Row(row), to_.Row(row)));
    // The target may be newer than the jump, and may have been seen already.
    seenRows_[row] = GainRows::kNeverSeen;
    rowWaits_ = true;
}

/// from <- to, to <- target, for every row.
void SignalMatrix::NextSegment() noexcept TAV_NONBLOCKING {
    rampPosition_ = 0;
    const std::uint32_t writes = target_.Writes();
    const bool look = rowWaits_ || writes != seenWrites_;
    seenWrites_ = writes;
    rowWaits_ = false;
    for (std::size_t row = 0; row < moving_.size(); ++row) {
        if (moving_[row] != 0) {
            std::ranges::copy(to_.Row(row), from_.Row(row).begin());
            SetMoving(row, false);
        }
        if (look) TakeTarget(row);
    }
}

void SignalMatrix::TakeTarget(std::size_t row) noexcept TAV_NONBLOCKING {
    const GainRows::Look look = target_.Read(row, seenRows_[row], newRow_);
    if (look == GainRows::Look::Torn) rowWaits_ = true;  // keeps its gains for one more segment
    if (look != GainRows::Look::Taken) return;
    if (std::ranges::equal(newRow_, to_.Row(row))) return;
    std::ranges::copy(newRow_, to_.Row(row).begin());
    SetMoving(row, true);
}

/// The row has new gains in from or to.
void SignalMatrix::SetMoving(std::size_t row, bool moving) noexcept TAV_NONBLOCKING {
    if (moving_[row] != 0) --numMoving_;
    if (moving) ++numMoving_;
    moving_[row] = moving ? 1 : 0;
    stale_[row] = 1;
    anyStale_ = true;
}

void SignalMatrix::SetAllStale() noexcept TAV_NONBLOCKING {
    std::ranges::fill(stale_, std::uint8_t{1});
    anyStale_ = true;
}

void SignalMatrix::SetMixerRows() noexcept TAV_NONBLOCKING {
    if (!anyStale_) return;
    anyStale_ = false;
    for (unsigned row = 0; row < stale_.size(); ++row) {
        if (stale_[row] == 0) continue;
        stale_[row] = 0;
        if (rampLength_ < 1 || moving_[row] == 0) {
            mixer_.SetRow(row, to_.Row(row));
        } else {
            mixer_.SetRow(row, from_.Row(row), to_.Row(row), inverseRampLength_);
        }
    }
}

StaticSignalMatrix::StaticSignalMatrix(unsigned numInputs,
                                       unsigned numOutputs,
                                       const Kernels& kernels)
    : GainMatrixProcessor(numInputs, numOutputs, kernels) {}

std::string StaticSignalMatrix::Name() const { return "static signal matrix"; }

void StaticSignalMatrix::SetRow(unsigned row, std::span<const float> gains) noexcept {
    if (Accepts(row, gains)) target_.Write(row, gains);
}

void StaticSignalMatrix::Perform(float* const* outputs,
                                 const float* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    const bool setAll = UpdateActivity();
    const std::uint32_t writes = target_.Writes();
    if (setAll || rowWaits_ || writes != seenWrites_) {
        seenWrites_ = writes;
        rowWaits_ = false;
        for (unsigned row = 0; row < NumInputs(); ++row) TakeRow(row, setAll);
    }
    mixer_.Mix(outputs, inputs, 0, {0, static_cast<int>(frames)});
}

void StaticSignalMatrix::TakeRow(unsigned row, bool setAlways) noexcept TAV_NONBLOCKING {
    const GainRows::Look look = target_.Read(row, seenRows_[row], newRow_);
    if (look == GainRows::Look::Torn) rowWaits_ = true;
    if (look == GainRows::Look::Taken) std::ranges::copy(newRow_, to_.Row(row).begin());
    if (look == GainRows::Look::Taken || setAlways) mixer_.SetRow(row, to_.Row(row), 0.f);
}

}  // namespace tav
