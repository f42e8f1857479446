// SPDX-License-Identifier: MIT
// A number that changes along a straight line, sample by sample.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <cstdint>
#include <span>

namespace tav {

/// Gives one value per sample. A glide over n samples leads from the present value to a target:
/// its k-th value is start + (k + 1)(target - start) / n, k = 0 .. n - 1. The last value of a glide
/// and all values after it are equal to the target bit for bit.
/// Thread: one at a time; nothing allocates.
class Ramp {
public:
    explicit Ramp(float value = 0.f) noexcept : start_(value), target_(value) {}

    /// The length of a glide over `ms` milliseconds in samples, rounded down; 0 for a time that is
    /// not finite or not above 0.
    static std::uint32_t GlideLength(float ms, float sampleRateHz) noexcept TAV_NONBLOCKING;

    /// The rest of a running glide still lasts as many seconds. A rate that is not finite or not
    /// above 0 is ignored.
    void SetSampleRate(float hz) noexcept TAV_NONBLOCKING;
    /// Starts a glide from the present value to the target, also in the middle of another glide. If
    /// it would be shorter than one sample, the value jumps. A target that is not finite is
    /// ignored.
    void Set(float target, float ms) noexcept TAV_NONBLOCKING;
    void SetOverSamples(float target, std::uint32_t samples) noexcept TAV_NONBLOCKING;

    /// Whether all further values are Target().
    bool IsConstant() const noexcept TAV_NONBLOCKING { return count_ == length_; }
    float Target() const noexcept TAV_NONBLOCKING { return target_; }
    /// Samples until Target(), the first one with that value included.
    std::uint32_t SamplesLeft() const noexcept TAV_NONBLOCKING { return length_ - count_; }
    /// The value put out last.
    float Value() const noexcept TAV_NONBLOCKING;

    /// Overwrites `values` with the next ones.
    void Fill(std::span<float> values) noexcept TAV_NONBLOCKING;
    /// As Fill, without computing the values.
    void Skip(std::uint32_t samples) noexcept TAV_NONBLOCKING;

private:
    float After(std::uint32_t samples) const noexcept TAV_NONBLOCKING;

    float start_;
    float target_;
    // The change per sample of a glide. In double, since the difference of two large floats may
    // overflow a float, and since a multiple of it is then accurate enough.
    double step_ = 0.0;
    std::uint32_t count_ = 0;   // samples of the glide already put out
    std::uint32_t length_ = 0;  // samples of the whole glide
    float sampleRate_ = 44100.f;
};

}  // namespace tav
