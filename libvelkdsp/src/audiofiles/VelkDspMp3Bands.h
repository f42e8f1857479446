// SPDX-License-Identifier: MIT
// The scale factor bands of Layer III: how the 576 lines of a granule are grouped and ordered.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tav {

/// Lines that share a scale factor.
struct Mp3Band {
    std::uint16_t start;
    std::uint16_t width;
    std::int16_t window;  // 0 to 2 of a short block, -1 of a long one
};

enum class Mp3Blocks : std::uint8_t { Long, Short, Mixed };

/// The bands in the order of the stream, where the windows of a short band follow each other.
struct Mp3BandList {
    std::array<Mp3Band, 39> bands{};
    std::size_t numBands = 0;
    std::size_t numLong = 0;  // the first of them
    /// Where a line of the stream belongs in a spectrum that has the lines k of all 32 subbands
    /// side by side, at 32 k + subband. The three windows of a short block take turns in a subband.
    std::array<std::uint16_t, 576> places{};

    std::span<const Mp3Band> All() const noexcept { return std::span(bands).first(numBands); }
};

/// @param rateIndex  as in Mp3Header
const Mp3BandList& Mp3Bands(unsigned rateIndex, Mp3Blocks blocks) noexcept;

/// The first lines of the 22 long bands, then 576.
std::span<const std::uint16_t> Mp3LongBands(unsigned rateIndex) noexcept;
/// The end of the first region of a granule whose windows switch.
/// @param isShort  of block type 2
unsigned Mp3SwitchedRegion(unsigned rateIndex, bool isShort) noexcept;

}  // namespace tav
