// SPDX-License-Identifier: MIT
// What happens to samples where the host's doubles become our floats and back.
#pragma once

#include "kernels/VelkDspDenormalGuard.h"
#include "text/VelkDspNonblocking.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tav {

inline constexpr double kLargestInput = 1e6;     // +120 dB: no gain of ours overflows a float
inline constexpr double kSmallestInput = 1e-30;  // below, a sample would soon be denormal

/// A sample of the host as the blocks may see it: not finite -> 0; beyond 1e6 -> 1e6 with its sign;
/// nearer to 0 than 1e-30 -> 0.
inline float MapInput(double sample) noexcept TAV_NONBLOCKING {
    const double magnitude = std::abs(sample);
    const bool audible =
        magnitude >= kSmallestInput && magnitude <= std::numeric_limits<double>::max();
    return audible ? static_cast<float>(std::clamp(sample, -kLargestInput, kLargestInput)) : 0.f;
}

/// A sample of ours as the host may see it: not finite -> 0.
inline double MapOutput(float sample) noexcept TAV_NONBLOCKING {
    return std::abs(sample) <= std::numeric_limits<float>::max() ? static_cast<double>(sample)
                                                                 : 0.0;
}

}  // namespace tav
