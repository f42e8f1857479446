// SPDX-License-Identifier: MIT
#include "support/Mp3Stream.h"

#include "audiofiles/VelkDspMp3HuffmanTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace Tests {

namespace {

/// Bits as text of 0 and 1.
std::string Bits(std::uint64_t value, unsigned count) {
    std::string bits(count, '0');
    for (unsigned k = 0; k < count; ++k) bits[count - 1 - k] = (value >> k & 1) != 0 ? '1' : '0';
    return bits;
}

std::string CodeAt(std::string_view codes, std::size_t place) {
    std::istringstream words{std::string(codes)};
    std::string code;
    for (std::size_t k = 0; k <= place; ++k) words >> code;
    return code;
}

std::string SignOf(int value) { return value == 0 ? "" : value < 0 ? "1" : "0"; }

std::string PairBits(unsigned select, int x, int y) {
    const tav::Mp3PairTable& table = tav::Mp3PairTableOf(select);
    const auto size = static_cast<int>(table.size);
    const auto code = [&](int value) { return std::min(std::abs(value), size - 1); };
    std::string bits = CodeAt(table.codes, static_cast<std::size_t>(code(x) * size + code(y)));
    for (const int value : {x, y}) {
        if (code(value) == 15) {
            bits += Bits(static_cast<std::uint64_t>(std::abs(value) - 15), table.numExtraBits);
        }
        bits += SignOf(value);
    }
    return bits;
}

std::string MainBitsOf(const CodedGranule& granule) {
    std::string bits;
    for (const auto& [value, count] : granule.factors) bits += Bits(value, count);
    for (std::size_t k = 0; k + 2 <= granule.values.size(); k += 2) {
        bits += PairBits(granule.table, granule.values[k], granule.values[k + 1]);
    }
    for (std::size_t k = 0; k + 4 <= granule.quads.size(); k += 4) {
        const int* quad = granule.quads.data() + k;
        std::size_t place = 0;
        for (int v = 0; v < 4; ++v) place = 2 * place + (quad[v] != 0 ? 1 : 0);
        bits += CodeAt(tav::Mp3QuadCodes(granule.quadTable), place);
        for (int v = 0; v < 4; ++v) bits += SignOf(quad[v]);
    }
    bits.resize(bits.size() - granule.numLostBits);
    return bits;
}

std::string SideBitsOf(const CodedGranule& granule, bool isMpeg1) {
    std::string bits = Bits(MainBits(granule), 12) + Bits(granule.values.size() / 2, 9) +
                       Bits(granule.globalGain, 8) + Bits(granule.factorsCompress, isMpeg1 ? 4 : 9);
    if (granule.blockType != 0) {
        bits += "1" + Bits(granule.blockType, 2) + (granule.isMixed ? "1" : "0") +
                Bits(granule.table, 5) + Bits(granule.table, 5);
        for (const unsigned gain : granule.windowGains) bits += Bits(gain, 3);
    } else {
        bits += "0";
        for (int region = 0; region < 3; ++region) bits += Bits(granule.table, 5);
        bits += Bits(7, 4) + Bits(7, 3);
    }
    if (isMpeg1) bits += "0";  // no preemphasis
    return bits + Bits(granule.factorShift, 1) + Bits(granule.quadTable, 1);
}

}  // namespace

std::size_t MainBits(const CodedGranule& granule) { return MainBitsOf(granule).size(); }

std::string Mp3FrameOf(std::uint32_t word, const CodedFrame& frame) {
    const tav::Mp3Header header = tav::ParseMp3Header(word).value();
    const std::size_t numChannels = header.NumChannels();
    const bool isMpeg1 = header.IsMpeg1();
    std::string bits = Bits(word, 32);
    // The main data begin here; private bits and shared factors are 0.
    bits += std::string(isMpeg1 ? (numChannels == 1 ? 18 : 20) : 8 + numChannels, '0');
    std::string main;
    for (std::size_t granule = 0; granule < header.NumGranules(); ++granule) {
        for (std::size_t channel = 0; channel < numChannels; ++channel) {
            bits += SideBitsOf(frame[granule][channel], isMpeg1);
            main += MainBitsOf(frame[granule][channel]);
        }
    }
    EXPECT_EQ(bits.size(), 8 * (tav::Mp3Header::kNumBytes + header.NumSideBytes()));
    bits += main;
    EXPECT_LE(bits.size(), 8 * header.NumBytes());
    bits.resize(8 * header.NumBytes(), '0');
    std::string bytes;
    for (std::size_t at = 0; at < bits.size(); at += 8) {
        bytes += static_cast<char>(std::stoi(bits.substr(at, 8), nullptr, 2));
    }
    return bytes;
}

}  // namespace Tests
