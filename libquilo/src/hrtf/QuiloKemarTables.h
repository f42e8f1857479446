// SPDX-License-Identifier: MIT
// The tables of libquilo/data/kemar, compiled in; the build makes their source.
#pragma once

#include <cstddef>

namespace Quilo {

inline constexpr std::size_t kNumKemarPoints = 710;
inline constexpr std::size_t kNumKemarCells = 6;

/// x right, y front, z up on the unit sphere.
extern const double kKemarPositions[kNumKemarPoints][3];
/// Arrival at the left ear minus arrival at the right one, milliseconds.
extern const double kKemarDelays[kNumKemarPoints][1];
/// Of the left ear at 44100 Hz: b0 b1 b2 a1 a2 of each cell.
extern const double kKemarCoefficients[kNumKemarPoints][5 * kNumKemarCells];

}  // namespace Quilo
