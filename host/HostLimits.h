// SPDX-License-Identifier: MIT
// Limits that hold for the command line and for the directives of scripts.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace Quilo::Host {

inline constexpr std::int64_t kLargestVector = 4096;

/// A power of two, 1 to 4096.
constexpr bool IsVectorSize(std::int64_t frames) {
    return frames >= 1 && frames <= kLargestVector &&
           std::has_single_bit(static_cast<std::uint64_t>(frames));
}

/// A whole number of hertz, as WAV files need it, within the range that the engine accepts.
inline bool IsSamplingRate(double hz) {
    return hz >= 1000 && hz <= 768'000 && std::floor(hz) == hz;
}

}  // namespace Quilo::Host
