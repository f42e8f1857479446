// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Bands.h"

namespace tav {
namespace {

constexpr std::size_t kNumRates = 9;

// ISO 11172-3, Table B.8; ISO 13818-3, Table B.2; for MPEG-2.5 the tables in common use.
// clang-format off
constexpr std::uint16_t kLongBands[kNumRates][23] = {
    {0, 4, 8, 12, 16, 20, 24, 30, 36, 44, 52, 62, 74, 90, 110, 134, 162, 196, 238, 288, 342, 418, 576},      // 44100
    {0, 4, 8, 12, 16, 20, 24, 30, 36, 42, 50, 60, 72, 88, 106, 128, 156, 190, 230, 276, 330, 384, 576},      // 48000
    {0, 4, 8, 12, 16, 20, 24, 30, 36, 44, 54, 66, 82, 102, 126, 156, 194, 240, 296, 364, 448, 550, 576},     // 32000
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},   // 22050
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 114, 136, 162, 194, 232, 278, 332, 394, 464, 540, 576},   // 24000
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},   // 16000
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},   // 11025
    {0, 6, 12, 18, 24, 30, 36, 44, 54, 66, 80, 96, 116, 140, 168, 200, 238, 284, 336, 396, 464, 522, 576},   // 12000
    {0, 12, 24, 36, 48, 60, 72, 88, 108, 132, 160, 192, 232, 280, 336, 400, 476, 566, 568, 570, 572, 574, 576},  // 8000
};
// Of one window.
constexpr std::uint16_t kShortBands[kNumRates][14] = {
    {0, 4, 8, 12, 16, 22, 30, 40, 52, 66, 84, 106, 136, 192},    // 44100
    {0, 4, 8, 12, 16, 22, 28, 38, 50, 64, 80, 100, 126, 192},    // 48000
    {0, 4, 8, 12, 16, 22, 30, 42, 58, 78, 104, 138, 180, 192},   // 32000
    {0, 4, 8, 12, 18, 24, 32, 42, 56, 74, 100, 132, 174, 192},   // 22050
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 136, 180, 192},   // 24000
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 134, 174, 192},   // 16000
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 134, 174, 192},   // 11025
    {0, 4, 8, 12, 18, 26, 36, 48, 62, 80, 104, 134, 174, 192},   // 12000
    {0, 8, 16, 24, 36, 52, 72, 96, 124, 160, 162, 164, 166, 192},  // 8000
};
// clang-format on

constexpr std::size_t kFirstShortOfMixed = 3;  // the long bands before it end where it begins

constexpr std::uint16_t Place(std::size_t line) {
    return static_cast<std::uint16_t>(line % 18 * 32 + line / 18);
}

constexpr void AddLong(Mp3BandList& list, std::size_t rate, std::size_t end) {
    for (std::size_t band = 0; kLongBands[rate][band] < end; ++band) {
        const std::uint16_t start = kLongBands[rate][band];
        const auto width = static_cast<std::uint16_t>(kLongBands[rate][band + 1] - start);
        list.bands[list.numBands++] = {start, width, -1};
        for (std::size_t k = 0; k < width; ++k) list.places[start + k] = Place(start + k);
    }
    list.numLong = list.numBands;
}

constexpr void AddShort(Mp3BandList& list, std::size_t rate, std::size_t first) {
    for (std::size_t band = first; band < 13; ++band) {
        const std::size_t begin = std::size_t{3} * kShortBands[rate][band];
        const std::size_t width =
            kShortBands[rate][band + 1] - std::size_t{kShortBands[rate][band]};
        for (std::size_t window = 0; window < 3; ++window) {
            const std::size_t start = begin + window * width;
            list.bands[list.numBands++] = {static_cast<std::uint16_t>(start),
                                           static_cast<std::uint16_t>(width),
                                           static_cast<std::int16_t>(window)};
            for (std::size_t k = 0; k < width; ++k) {
                list.places[start + k] = Place(begin + 3 * k + window);
            }
        }
    }
}

using BandLists = std::array<std::array<Mp3BandList, 3>, kNumRates>;

constexpr BandLists kBandLists = [] {
    BandLists lists{};
    for (std::size_t rate = 0; rate < kNumRates; ++rate) {
        AddLong(lists[rate][0], rate, 576);
        AddShort(lists[rate][1], rate, 0);
        AddLong(lists[rate][2], rate, std::size_t{3} * kShortBands[rate][kFirstShortOfMixed]);
        AddShort(lists[rate][2], rate, kFirstShortOfMixed);
    }
    return lists;
}();

}  // namespace

const Mp3BandList& Mp3Bands(unsigned rateIndex, Mp3Blocks blocks) noexcept {
    return kBandLists[rateIndex][static_cast<std::size_t>(blocks)];
}

std::span<const std::uint16_t> Mp3LongBands(unsigned rateIndex) noexcept {
    return kLongBands[rateIndex];
}

unsigned Mp3SwitchedRegion(unsigned rateIndex, bool isShort) noexcept {
    return isShort ? 3u * kShortBands[rateIndex][kFirstShortOfMixed] : kLongBands[rateIndex][8];
}

}  // namespace tav
