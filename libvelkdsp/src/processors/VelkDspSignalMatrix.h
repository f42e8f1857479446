// SPDX-License-Identifier: MIT
// Mixes N inputs into M outputs: the signal path of every panner that works with gains.
//
// Gains change while audio runs. SignalMatrix glides to new ones along straight segments, so that
// moving sources do not click; StaticSignalMatrix takes them as they come. Control and audio share
// no lock: rows pass through GainRows, what must not wait for a segment to end through GainJump.
#pragma once

#include "kernels/VelkDspGainKernels.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"
#include "processors/VelkDspGainJump.h"
#include "processors/VelkDspGainMixer.h"
#include "processors/VelkDspGainRows.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tav {

/// Audio that a gain matrix adds and where: only pairs of an active input and a connected output
/// whose gain is audible cost anything. All gains are 0 at first. Samples have to be finite.
/// Thread: the setters and getters belong to control, one at a time; audio may run.
class GainMatrixProcessor : public AudioProcessorWithAutoMute {
public:
    GainMatrixProcessor(unsigned numInputs, unsigned numOutputs, const GainKernels& kernels);

    using AudioProcessorBase::Process;
    /// Perform into zeroed outputs.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    /// Adds the weighted inputs into the connected outputs.
    virtual void Perform(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING = 0;

    /// The newest gains of an input, one per output.
    void CopyRow(unsigned row, std::span<float> gains) const noexcept;

protected:
    void ProcessZeroed(float* const* outputs,
                       const float* const* inputs,
                       unsigned frames) noexcept TAV_NONBLOCKING override {
        Perform(outputs, inputs, frames);
    }
    /// False for a row that is refused: no such input, another count than outputs, a gain that is
    /// not finite.
    bool Accepts(unsigned row, std::span<const float> gains) const noexcept;
    /// Hands the frame's flags to the mixer, once per block.
    /// @return true: other outputs are connected now, set all rows of the mixer again
    bool UpdateActivity() noexcept TAV_NONBLOCKING;
    /// The newest row of the target into `gains`, which is a row of the mixer's length.
    GainRows::Look ReadTarget(std::size_t row, float* gains) noexcept TAV_NONBLOCKING;
    /// Whether a target may have changed since all were looked at; from now on they count as seen.
    bool TargetsWait() noexcept TAV_NONBLOCKING;

    GainRows target_;
    // audio only
    GainMixer mixer_;
    std::vector<std::uint32_t> seenRows_;  // numbers of the rows taken from target_
    std::uint32_t seenWrites_ = 0;
    bool rowWaits_ = false;  // some row has to be looked at again

private:
    std::optional<std::uint32_t> seenActivity_;
};

/// Gains glide to their targets in straight segments. A segment lasts the interpolation time, and
/// segments follow each other without a gap. A row that is set during a segment becomes the target
/// of the next one, so a change begins within one interpolation time and is complete within two.
class SignalMatrix final : public GainMatrixProcessor {
public:
    /// No interpolation.
    SignalMatrix(unsigned numInputs,
                 unsigned numOutputs,
                 const GainKernels& kernels = BestKernels<GainKernels>());

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    void ProcessToHost(const HostDrain& host,
                       float* const* outputs,
                       const float* const* inputs,
                       unsigned frames) noexcept TAV_NONBLOCKING override;
    std::string Name() const override;
    /// Starts a segment of the length that the interpolation time has at this rate.
    void SetSampleRate(float hz) override;

    /// Milliseconds, negative ones count as 0, ones that are not finite are ignored. Starts a
    /// segment anew. Below one sample nothing glides: rows take effect at the next block.
    void SetInterpolationTime(float ms) noexcept;
    float InterpolationTime() const noexcept { return interpolationTimeMs_; }

    /// @param gains  one per output, finite; a row with other gains, or too many, is refused whole
    /// @param immediate  the next block starts with these gains, nothing glides
    void SetRow(unsigned row, std::span<const float> gains, bool immediate) noexcept;

private:
    /// Gains of an input at both ends of the segment, and a third row that receives the next
    /// target: at a boundary the three pointers change places and nothing is copied. Where a row
    /// rests, only `to` is read.
    struct Row {
        float* from;
        float* to;
        float* spare;
        bool moves;  // from and to may differ
        bool stale;  // the mixer has other gains
    };

    void MixBlock(const MixPorts& ports, unsigned frames) noexcept TAV_NONBLOCKING;
    void RestartRamp() noexcept;
    void TakeJump() noexcept TAV_NONBLOCKING;
    void JumpRow(std::size_t index, const GainJump& jump) noexcept TAV_NONBLOCKING;
    bool AtRest() const noexcept TAV_NONBLOCKING;
    void NextSegment() noexcept TAV_NONBLOCKING;
    void TakeTarget(std::size_t index) noexcept TAV_NONBLOCKING;
    void Advance(Row& row) noexcept TAV_NONBLOCKING;
    void SetMoves(Row& row, bool moves) noexcept TAV_NONBLOCKING;
    void SetAllStale() noexcept TAV_NONBLOCKING;
    void SetStaleMixerRows() noexcept TAV_NONBLOCKING;
    void SetMixerRow(std::size_t index) noexcept TAV_NONBLOCKING;

    // control only
    float interpolationTimeMs_ = 0.f;
    std::int32_t controlRampLength_ = 0;
    std::vector<float> controlRow_;  // scratch

    // shared: control writes, audio reads
    GainJumpMailbox jumps_;

    // audio only
    std::vector<float> gains_;
    std::vector<Row> rows_;
    std::size_t numMoving_ = 0;
    bool anyStale_ = false;
    std::int32_t rampLength_ = 0;
    std::int32_t rampPosition_ = 0;
    float inverseRampLength_ = 1.f;
};

/// No glide, no threshold, no reaction to the rate: the gains are used as they stand from the block
/// after the one in which they were set.
class StaticSignalMatrix final : public GainMatrixProcessor {
public:
    StaticSignalMatrix(unsigned numInputs,
                       unsigned numOutputs,
                       const GainKernels& kernels = BestKernels<GainKernels>());

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    std::string Name() const override;

    /// @param gains  as for SignalMatrix::SetRow
    void SetRow(unsigned row, std::span<const float> gains) noexcept;

private:
    void TakeRow(unsigned row, bool setAlways) noexcept TAV_NONBLOCKING;

    // audio only
    std::vector<float> gains_;   // row after row
    std::vector<float> newRow_;  // scratch
};

}  // namespace tav
