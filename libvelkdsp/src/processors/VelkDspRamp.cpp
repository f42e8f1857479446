// SPDX-License-Identifier: MIT
#include "processors/VelkDspRamp.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tav {

namespace {

constexpr float kLongestGlide = 1073741824.f;  // samples

std::uint32_t WholeSamples(float samples) noexcept TAV_NONBLOCKING {
    return samples >= 1.f ? static_cast<std::uint32_t>(std::min(samples, kLongestGlide)) : 0;
}

}  // namespace

std::uint32_t Ramp::GlideLength(float ms, float sampleRateHz) noexcept TAV_NONBLOCKING {
    // In float, where whole milliseconds up to 200 give the exact length at all usual rates; in
    // double some are one sample short (145 ms at 48 kHz).
    return WholeSamples(ms * 0.001f * sampleRateHz);
}

void Ramp::SetSampleRate(float hz) noexcept TAV_NONBLOCKING {
    if (!std::isfinite(hz) || hz <= 0.f || hz == sampleRate_) return;
    const float left = static_cast<float>(length_ - count_) * (hz / sampleRate_);
    sampleRate_ = hz;
    SetOverSamples(target_, WholeSamples(left));
}

void Ramp::Set(float target, float ms) noexcept TAV_NONBLOCKING {
    SetOverSamples(target, GlideLength(ms, sampleRate_));
}

void Ramp::SetOverSamples(float target, std::uint32_t samples) noexcept TAV_NONBLOCKING {
    if (!std::isfinite(target)) return;
    start_ = Value();
    target_ = target;
    count_ = 0;
    length_ = start_ == target ? 0 : samples;
    if (length_ == 0) return;
    const double way = static_cast<double>(target) - static_cast<double>(start_);
    step_ = way / static_cast<double>(length_);
}

float Ramp::Value() const noexcept TAV_NONBLOCKING { return After(count_); }

float Ramp::After(std::uint32_t samples) const noexcept TAV_NONBLOCKING {
    if (samples >= length_) return target_;
    return static_cast<float>(static_cast<double>(start_) + samples * step_);
}

void Ramp::Fill(std::span<float> values) noexcept TAV_NONBLOCKING {
    const auto gliding = std::min<std::size_t>(values.size(), length_ - count_);
    if (gliding > 0) {
        const double start = static_cast<double>(start_);
        // Sums of whole numbers are exact in double, and the loop vectorises.
        const auto first = static_cast<double>(count_ + 1);
        for (int k = 0; k < static_cast<int>(gliding); ++k) {
            values[static_cast<std::size_t>(k)] =
                static_cast<float>(start + (first + static_cast<double>(k)) * step_);
        }
        count_ += static_cast<std::uint32_t>(gliding);
        if (IsConstant()) values[gliding - 1] = target_;
    }
    std::ranges::fill(values.subspan(gliding), target_);
}

void Ramp::Skip(std::uint32_t samples) noexcept TAV_NONBLOCKING {
    count_ += std::min(samples, length_ - count_);
}

}  // namespace tav
