// SPDX-License-Identifier: MIT
// A fractional delay line whose delay may glide while audio runs.
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

/// One input, one output, later by a delay that need not be a whole number of samples. A change of
/// the delay glides linearly over the interpolation time: the pitch bends, nothing clicks.
///
/// Setters belong to the control thread, one at a time, and may be called while audio runs; they
/// ignore values that are not finite. The memory grows there too: the audio thread takes a longer
/// ring at the start of a block and copies its history into it.
class Delay : public AudioProcessorWithAutoMute {
public:
    /// No delay, room for none above it, glides of 30 ms, kind Lagrange.  Throws: std::bad_alloc.
    Delay();

    // 1
    using AudioProcessorBase::Process;
    /// An inactive input gives zeros and is forgotten.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // 8, 9, 11
    std::string Name() const override;
    /// Another rate clears the line; the delay stays the same in milliseconds, without a glide.
    /// Throws: std::bad_alloc.
    void SetSampleRate(float hz) override;
    void Reset() override;

    /// @param ms  0 to 10000, clamped. A smaller maximum than before gives no memory back.
    /// Throws: std::bad_alloc, then nothing changed.
    void SetMaximumDelay(float ms);
    float MaximumDelay() const noexcept { return maximumMs_; }
    /// Raises the maximum where it is too small.
    /// @param ms  0 to 10000, clamped      @param immediate  jump with the next block, do not glide
    /// Throws: as SetMaximumDelay.
    void SetDelay(float ms, bool immediate);
    float DelayTime() const noexcept { return delayMs_; }
    /// @param ms  of the next change of the delay; 0: it jumps, and clicks
    void SetInterpolationTime(float ms);
    float InterpolationTime() const noexcept { return interpolationMs_; }
    /// @param code  of DelayKind; any other reads the nearest sample
    void SetInterpolationKind(std::uint32_t code);
    void SetInterpolationKind(DelayKind kind);
    /// Silence in the line from the next block on.
    void Clear();

    /// One block without looking at the activity flags, for owners that know more.
    /// @param output, input  `frames` samples each, may be the same buffer
    /// Thread: audio.
    void Perform(float* output, const float* input, unsigned frames) noexcept TAV_NONBLOCKING;
    /// In place of Perform while there is nothing to hear: forgets the past, lets glides go on.
    /// Thread: audio.
    void Rest(unsigned frames) noexcept TAV_NONBLOCKING;

private:
    /// What the control side wants of the delay, in samples: the newest jump, then a glide. The
    /// counts tell the audio side which of the two it has not done yet.
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
