// SPDX-License-Identifier: MIT
// Writes frames of Layer III bit by bit, for what no encoder makes.
#pragma once

#include "audiofiles/VelkDspMp3SideInfo.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// The content of a granule of one channel: all pairs have one table.
struct CodedGranule {
    unsigned globalGain = 170;
    unsigned factorsCompress = 0;
    unsigned blockType = 0;
    bool isMixed = false;
    std::array<unsigned, 3> windowGains{};
    unsigned factorShift = 0;
    std::vector<std::pair<unsigned, unsigned>> factors;  // value and how many bits it has
    unsigned table = 15;
    std::vector<int> values;  // of the pairs
    unsigned quadTable = 0;
    std::vector<int> quads;    // -1, 0 or 1, four each
    unsigned numLostBits = 0;  // at the end
};

using CodedFrame = std::array<std::array<CodedGranule, 2>, 2>;  // by granule, then channel

/// How many bits factors and values take.
std::size_t MainBits(const CodedGranule& granule);

/// A whole frame. Its data have to fit behind its side information.
/// @param word  the header
std::string Mp3FrameOf(std::uint32_t word, const CodedFrame& frame);

}  // namespace Tests
