// SPDX-License-Identifier: MIT
// A fractional delay line whose delay can glide while audio runs.
#pragma once

#include "math/VelkDspVector.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"
#include "processors/VelkDspDelayRing.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspRamp.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tav {

/// One input, one output, with a delay of any fractional number of samples. A change of the delay
/// glides linearly over the interpolation time, which shifts the pitch but does not click.
///
/// Setters belong to the control thread, one at a time, and may be called while audio runs; they
/// ignore values that are not finite. They also allocate longer rings, which the audio thread takes
/// at the start of a block; it copies the history into the new ring.
class Delay : public AudioProcessorWithAutoMute {
public:
    /// Delay and maximum delay 0, glides of 30 ms, kind Lagrange.  Throws: std::bad_alloc.
    Delay();

    // 1
    using AudioProcessorBase::Process;
    /// An inactive input gives zeros, and the line is cleared.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // 8, 9, 11
    std::string Name() const override;
    /// Another rate clears the line; the delay stays the same in milliseconds, without a glide.
    /// Throws: std::bad_alloc.
    void SetSampleRate(float hz) override;
    void Reset() override;

    /// @param ms  0 to 10000, clamped. A smaller maximum than before frees no memory.
    /// Throws: std::bad_alloc, then nothing changed.
    void SetMaximumDelay(float ms);
    float MaximumDelay() const noexcept { return maximumMs_; }
    /// Sets the delay, and raises the maximum if necessary.
    /// @param ms  0 to 10000, clamped      @param immediate  jump with the next block, do not glide
    /// Throws: as SetMaximumDelay.
    void SetDelay(float ms, bool immediate);
    float DelayTime() const noexcept { return delayMs_; }
    /// @param ms  for later changes of the delay; 0: they jump, which clicks
    void SetInterpolationTime(float ms);
    float InterpolationTime() const noexcept { return interpolationMs_; }
    /// @param code  of DelayKind; any other acts as Nearest
    void SetInterpolationKind(std::uint32_t code);
    void SetInterpolationKind(DelayKind kind);
    /// Clears the line at the next block.
    void Clear();

    /// Processes one block whatever the activity flags are, for owners that decide themselves.
    /// @param output, input  `frames` samples each, may be the same buffer
    /// Thread: audio.
    void Perform(float* output, const float* input, unsigned frames) noexcept TAV_NONBLOCKING;
    /// Call it in place of Perform while the line is silent: clears the line and advances glides.
    /// Thread: audio.
    void Rest(unsigned frames) noexcept TAV_NONBLOCKING;

private:
    /// The delay that the control side has requested, in samples: the newest jump, then a glide.
    /// The counts tell the audio side which of the two are new.
    struct Request {
        float jumpTo;
        std::uint32_t jumpCount;
        float glideTo;
        std::uint32_t glideSamples;
        std::uint32_t glideCount;
    };

    void GrowRing(float maximumMs);
    void RequestDelay(bool immediate) noexcept;
    void TakeChanges() noexcept TAV_NONBLOCKING;

    // control only
    float maximumMs_ = 0.f;
    float delayMs_ = 0.f;
    float interpolationMs_ = 30.f;
    std::size_t ringLength_ = 0;
    Request newest_{};

    // shared: control writes, audio reads
    SharedCell<Request> requests_;
    HandOver<DelayRing> rings_;
    std::atomic<std::uint32_t> kind_{static_cast<std::uint32_t>(DelayKind::Lagrange)};
    std::atomic<bool> clear_{false};

    // audio only
    Request request_{};
    bool resting_ = false;
    Ramp delay_;  // samples
    Vector<float> delays_ =
        Vector<float>(DelayRing::kLargestBlock);  // braces would make a list of one
};

}  // namespace tav
