// SPDX-License-Identifier: MIT
// From the bits of a granule of Layer III to its quantised spectrum.
#pragma once

#include "audiofiles/VelkDspMp3BitReader.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tav {

inline constexpr std::size_t kMp3Lines = 576;  // of a granule of one channel

/// Values of the lines, up to 8206 in magnitude.
using Mp3Quantised = std::array<std::int16_t, kMp3Lines>;

/// Where the pairs of a granule change their table, and which tables there are.
struct Mp3Regions {
    std::array<unsigned, 3> ends{};    // in lines, rising, even; at most 576
    std::array<unsigned, 3> tables{};  // 0 to 31
    unsigned quadTable = 0;            // 0 or 1, behind the last region
};

/// Reads pairs up to the last region's end, then fours while bits are left. A code that goes beyond
/// the end does not count, nor does what would follow.
/// @param end  position of the reader behind the granule's last bit
/// @param values  lines behind the last are not written
/// @return how many lines have been written, even
std::size_t DecodeMp3Lines(Mp3BitReader& reader,
                           std::size_t end,
                           const Mp3Regions& regions,
                           Mp3Quantised& values) noexcept;

}  // namespace tav
