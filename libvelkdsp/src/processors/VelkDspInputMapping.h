// SPDX-License-Identifier: MIT
// What happens to samples where the host's doubles become our floats and back.
#pragma once

#include "kernels/VelkDspDenormalGuard.h"
#include "text/VelkDspNonblocking.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace tav {

inline constexpr double kLargestInput = 1e6;     // +120 dB: no gain of ours overflows a float
inline constexpr double kSmallestInput = 1e-30;  // below, a sample would soon be denormal

/// A sample of the host as the blocks may see it: not finite -> 0; beyond 1e6 -> 1e6 with its sign;
/// nearer to 0 than 1e-30 -> 0.
inline float MapInput(double sample) noexcept TAV_NONBLOCKING {
    const double magnitude = std::abs(sample);
    // The one branch that ordinary signals take comes first.
    if (magnitude >= kSmallestInput && magnitude <= kLargestInput) {
        return static_cast<float>(sample);
    }
    const bool large = std::isfinite(sample) && magnitude > kLargestInput;
    return large ? static_cast<float>(std::copysign(kLargestInput, sample)) : 0.f;
}

/// A sample of ours as the host may see it: not finite -> 0.
inline double MapOutput(float sample) noexcept TAV_NONBLOCKING {
    // By masks: so the loop vectorises, with a selection it does not.
    constexpr std::uint32_t kExponent = 0x7F800000;  // all of it set: infinite or no number
    const auto bits = std::bit_cast<std::uint32_t>(sample);
    const auto finite = static_cast<std::uint32_t>((bits & kExponent) != kExponent);
    return static_cast<double>(std::bit_cast<float>(bits & (0 - finite)));
}

}  // namespace tav
