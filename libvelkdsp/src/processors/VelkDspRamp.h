// SPDX-License-Identifier: MIT
// A value that glides in a straight line.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <cstdint>
#include <span>

namespace tav {

/// A linear glide from the present value to a target, a value per sample. Output k = 0 .. n - 1 of
/// a glide over n samples is start + (k + 1)(target - start) / n; the last one, and every one after
/// it, is the target bit for bit.
/// Thread: one at a time; nothing allocates.
class Ramp {
public:
    explicit Ramp(float value = 0.f) noexcept : start_(value), target_(value) {}

    /// Samples of a glide over `ms` milliseconds, truncated; 0 for anything that is no time.
    static std::uint32_t GlideLength(float ms, float sampleRateHz) noexcept TAV_NONBLOCKING;

    /// A glide under way keeps the seconds that are left of it. Not finite or not above 0: ignored.
    void SetSampleRate(float hz) noexcept TAV_NONBLOCKING;
    /// Heads for the target from the present value, also in mid-glide; less than one sample: at
    /// once. A target that is not finite is ignored.
    void Set(float target, float ms) noexcept TAV_NONBLOCKING;
    void SetOverSamples(float target, std::uint32_t samples) noexcept TAV_NONBLOCKING;

    /// Every value to come is Target().
    bool IsConstant() const noexcept TAV_NONBLOCKING { return count_ == length_; }
    float Target() const noexcept TAV_NONBLOCKING { return target_; }
    /// Samples until Target(), that one included.
    std::uint32_t SamplesLeft() const noexcept TAV_NONBLOCKING { return length_ - count_; }
    /// The value put out last.
    float Value() const noexcept TAV_NONBLOCKING;

    /// Overwrites `values` with the next ones.
    void Fill(std::span<float> values) noexcept TAV_NONBLOCKING;
    /// As Fill, without looking at the values.
    void Skip(std::uint32_t samples) noexcept TAV_NONBLOCKING;

private:
    float After(std::uint32_t samples) const noexcept TAV_NONBLOCKING;
    /// From one value to the next, in double: two large ends have a finite distance, and a multiple
    /// of it is as good as (k + 1)(target - start) / n.
    double Step() const noexcept TAV_NONBLOCKING;

    float start_;
    float target_;
    std::uint32_t count_ = 0;   // samples of the glide already put out
    std::uint32_t length_ = 0;  // samples of the whole glide
    float sampleRate_ = 44100.f;
};

}  // namespace tav
