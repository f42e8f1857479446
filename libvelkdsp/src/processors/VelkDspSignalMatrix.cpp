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
                                         const GainKernels& kernels)
    : AudioProcessorWithAutoMute(numInputs, numOutputs),
      target_(numInputs, numOutputs),
      mixer_(numInputs, numOutputs, kernels),
      seenRows_(numInputs) {}

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
    const std::uint32_t changes = ActivityChanges();
    if (changes == seenActivity_) return false;
    seenActivity_ = changes;
    for (unsigned input = 0; input < NumInputs(); ++input) {
        mixer_.SetActive(input, InputConnectedAndActive(input));
    }
    bool reconnected = false;
    for (unsigned output = 0; output < NumOutputs(); ++output) {
        reconnected = mixer_.SetConnected(output, OutputConnected(output)) || reconnected;
    }
    return reconnected;
}

GainRows::Look GainMatrixProcessor::ReadTarget(std::size_t row,
                                               float* gains) noexcept TAV_NONBLOCKING {
    const GainRows::Look look = target_.Read(row, seenRows_[row], {gains, NumOutputs()});
    if (look == GainRows::Look::Torn) rowWaits_ = true;
    return look;
}

bool GainMatrixProcessor::TargetsWait() noexcept TAV_NONBLOCKING {
    const std::uint32_t writes = target_.Writes();
    const bool wait = rowWaits_ || writes != seenWrites_;
    seenWrites_ = writes;
    rowWaits_ = false;
    return wait;
}

SignalMatrix::SignalMatrix(unsigned numInputs, unsigned numOutputs, const GainKernels& kernels)
    : GainMatrixProcessor(numInputs, numOutputs, kernels),
      controlRow_(numOutputs),
      jumps_(numInputs, numOutputs),
      gains_(std::size_t{3} * numInputs * GainMixer::RowLength(numOutputs)) {
    const std::size_t length = GainMixer::RowLength(numOutputs);
    for (float* first = gains_.data(); rows_.size() < numInputs; first += 3 * length) {
        rows_.push_back({first, first + length, first + 2 * length, false, false});
    }
}

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
    MixBlock({outputs, inputs, nullptr}, frames);
}

void SignalMatrix::ProcessToHost(const HostDrain& host,
                                 float* const* outputs,
                                 const float* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    MixBlock({outputs, inputs, &host}, frames);
}

void SignalMatrix::MixBlock(const MixPorts& ports, unsigned frames) noexcept TAV_NONBLOCKING {
    TakeJump();
    if (UpdateActivity()) SetAllStale();
    int offset = 0;
    int left = static_cast<int>(frames);
    while (left > 0) {
        SetStaleMixerRows();
        if (AtRest()) {
            // Segments that change nothing need no boundaries between them.
            mixer_.Mix(ports, offset, {0, left});
            const std::int64_t played = std::int64_t{rampPosition_} + left;
            rampPosition_ = rampLength_ > 0 ? static_cast<std::int32_t>(played % rampLength_) : 0;
            return;
        }
        const int piece = std::min(left, rampLength_ - rampPosition_);
        mixer_.Mix(ports, offset, {rampPosition_, piece});
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

void SignalMatrix::JumpRow(std::size_t index, const GainJump& jump) noexcept TAV_NONBLOCKING {
    Row& row = rows_[index];
    if (jump.KindOf(index) == GainJump::Row::Replace) {
        std::ranges::copy(jump.From(index), row.to);
    }
    std::ranges::copy(jump.To(index), row.spare);
    Advance(row);
    // The target may be newer than the jump, and may have been seen already.
    seenRows_[index] = GainRows::kNeverSeen;
    rowWaits_ = true;
}

/// from <- to, to <- target, for every row.
void SignalMatrix::NextSegment() noexcept TAV_NONBLOCKING {
    rampPosition_ = 0;
    const bool look = TargetsWait();
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        if (rows_[index].moves) SetMoves(rows_[index], false);
        if (look) TakeTarget(index);
        if (rows_[index].stale) SetMixerRow(index);  // while its gains are at hand
    }
    anyStale_ = false;
}

/// A row that is being written keeps its gains for one more segment.
void SignalMatrix::TakeTarget(std::size_t index) noexcept TAV_NONBLOCKING {
    if (ReadTarget(index, rows_[index].spare) == GainRows::Look::Taken) Advance(rows_[index]);
}

/// from <- to, to <- spare.
void SignalMatrix::Advance(Row& row) noexcept TAV_NONBLOCKING {
    row = {row.to, row.spare, row.from, row.moves, row.stale};
    SetMoves(row, true);
}

/// After from or to of this row have changed.
void SignalMatrix::SetMoves(Row& row, bool moves) noexcept TAV_NONBLOCKING {
    if (row.moves) --numMoving_;
    if (moves) ++numMoving_;
    row.moves = moves;
    row.stale = true;
    anyStale_ = true;
}

void SignalMatrix::SetAllStale() noexcept TAV_NONBLOCKING {
    for (Row& row : rows_) row.stale = true;
    anyStale_ = true;
}

void SignalMatrix::SetStaleMixerRows() noexcept TAV_NONBLOCKING {
    if (!anyStale_) return;
    anyStale_ = false;
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        if (rows_[index].stale) SetMixerRow(index);
    }
}

void SignalMatrix::SetMixerRow(std::size_t index) noexcept TAV_NONBLOCKING {
    Row& row = rows_[index];
    row.stale = false;
    const bool glides = row.moves && rampLength_ > 0;
    mixer_.SetRow(static_cast<unsigned>(index), glides ? row.from : row.to, row.to,
                  inverseRampLength_);
}

StaticSignalMatrix::StaticSignalMatrix(unsigned numInputs,
                                       unsigned numOutputs,
                                       const GainKernels& kernels)
    : GainMatrixProcessor(numInputs, numOutputs, kernels),
      gains_(numInputs * GainMixer::RowLength(numOutputs)),
      newRow_(GainMixer::RowLength(numOutputs)) {}

std::string StaticSignalMatrix::Name() const { return "static signal matrix"; }

void StaticSignalMatrix::SetRow(unsigned row, std::span<const float> gains) noexcept {
    if (Accepts(row, gains)) target_.Write(row, gains);
}

void StaticSignalMatrix::Perform(float* const* outputs,
                                 const float* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    const bool setAll = UpdateActivity();
    if (TargetsWait() || setAll) {
        for (unsigned row = 0; row < NumInputs(); ++row) TakeRow(row, setAll);
    }
    mixer_.Mix({outputs, inputs, nullptr}, 0, {0, static_cast<int>(frames)});
}

void StaticSignalMatrix::TakeRow(unsigned row, bool setAlways) noexcept TAV_NONBLOCKING {
    float* const gains = gains_.data() + row * newRow_.size();
    const bool taken = ReadTarget(row, newRow_.data()) == GainRows::Look::Taken;
    if (taken) std::ranges::copy(newRow_, gains);
    if (taken || setAlways) mixer_.SetRow(row, gains, gains, 1.f, 0.f);
}

}  // namespace tav
