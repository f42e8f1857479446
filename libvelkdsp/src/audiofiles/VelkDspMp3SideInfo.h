// SPDX-License-Identifier: MIT
// What a frame of Layer III says about its granules, and their scale factors.
#pragma once

#include "audiofiles/VelkDspMp3Bands.h"
#include "audiofiles/VelkDspMp3BitReader.h"
#include "audiofiles/VelkDspMp3Header.h"
#include "audiofiles/VelkDspMp3Huffman.h"

#include <array>
#include <cstdint>
#include <optional>

namespace tav {

/// A granule of one channel.
struct Mp3Granule {
    unsigned numBits = 0;  // scale factors and lines together
    unsigned globalGain = 0;
    unsigned factorsCompress = 0;  // how many bits the scale factors have
    unsigned blockType = 0;        // 0 normal, 1 start, 2 short, 3 stop
    bool isMixed = false;          // the lowest two subbands have the windows of type 0
    bool hasPreemphasis = false;
    unsigned factorShift = 0;  // 1: scale factors count double
    std::array<unsigned, 3> windowGains{};
    Mp3Regions regions;

    Mp3Blocks Blocks() const noexcept {
        if (blockType != 2) return Mp3Blocks::Long;
        return isMixed ? Mp3Blocks::Mixed : Mp3Blocks::Short;
    }
};

struct Mp3SideInfo {
    unsigned mainDataBegin = 0;  // bytes before this frame where its main data begin
    /// Per channel: groups of bands whose factors the second granule takes from the first.
    std::array<std::array<bool, 4>, 2> sharesFactors{};
    std::array<std::array<Mp3Granule, 2>, 2> granules{};  // by granule, then channel
};

/// @return nothing where a value is impossible
std::optional<Mp3SideInfo> ReadMp3SideInfo(Mp3BitReader& reader, const Mp3Header& header) noexcept;

/// One factor a band of the list.
struct Mp3ScaleFactors {
    std::array<std::uint8_t, 39> values{};
    /// The value that is no position where the band is coded in intensity.
    std::array<std::uint8_t, 39> noPosition{};
};

/// @param channel  the second one may have factors that are positions
/// @param granule  hasPreemphasis is set by the factors' size in MPEG-2
/// @param factors  those of the granule before, for what is shared
void ReadMp3ScaleFactors(Mp3BitReader& reader,
                         const Mp3Header& header,
                         const Mp3SideInfo& side,
                         std::size_t granuleIndex,
                         std::size_t channel,
                         Mp3Granule& granule,
                         Mp3ScaleFactors& factors) noexcept;

}  // namespace tav
