// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3SideInfo.h"

#include <algorithm>

namespace tav {
namespace {

void ReadSwitchedWindows(Mp3BitReader& reader, unsigned rateIndex, Mp3Granule& granule) noexcept {
    granule.blockType = reader.Take(2);
    granule.isMixed = reader.Take(1) != 0;
    Mp3Regions& regions = granule.regions;
    regions.tables = {reader.Take(5), 0, 0};
    regions.tables[1] = reader.Take(5);
    for (unsigned& gain : granule.windowGains) gain = reader.Take(3);
    const unsigned end = Mp3SwitchedRegion(rateIndex, granule.blockType == 2);
    regions.ends = {end, kMp3Lines, kMp3Lines};
}

void ReadPlainWindows(Mp3BitReader& reader, unsigned rateIndex, Mp3Granule& granule) noexcept {
    Mp3Regions& regions = granule.regions;
    for (unsigned& table : regions.tables) table = reader.Take(5);
    const std::size_t first = reader.Take(4) + 1;
    const std::size_t second = first + reader.Take(3) + 1;
    const auto bands = Mp3LongBands(rateIndex);
    const auto start = [&](std::size_t band) { return bands[std::min(band, bands.size() - 1)]; };
    regions.ends = {start(first), start(second), kMp3Lines};
}

/// False where a value is impossible.
bool ReadGranule(Mp3BitReader& reader, const Mp3Header& header, Mp3Granule& granule) noexcept {
    granule.numBits = reader.Take(12);
    const unsigned numPairLines = 2 * reader.Take(9);
    granule.globalGain = reader.Take(8);
    granule.factorsCompress = reader.Take(header.IsMpeg1() ? 4 : 9);
    const bool isSwitched = reader.Take(1) != 0;
    if (isSwitched) {
        ReadSwitchedWindows(reader, header.rateIndex, granule);
    } else {
        ReadPlainWindows(reader, header.rateIndex, granule);
    }
    for (unsigned& end : granule.regions.ends) end = std::min(end, numPairLines);
    if (header.IsMpeg1()) granule.hasPreemphasis = reader.Take(1) != 0;
    granule.factorShift = reader.Take(1);
    granule.regions.quadTable = reader.Take(1);
    return numPairLines <= kMp3Lines && isSwitched == (granule.blockType != 0);
}

/// Bands of the list with factors of so many bits each.
struct FactorPart {
    std::size_t numBands;
    unsigned numBits;
};
using FactorParts = std::array<FactorPart, 4>;

void ReadParts(Mp3BitReader& reader,
               const FactorParts& parts,
               bool arePositions,
               Mp3ScaleFactors& factors) noexcept {
    std::size_t band = 0;
    for (const FactorPart& part : parts) {
        for (const std::size_t end = band + part.numBands; band < end; ++band) {
            factors.values[band] = static_cast<std::uint8_t>(reader.Take(part.numBits));
            // Where nothing is sent the position is 0, which is one.
            factors.noPosition[band] = arePositions && part.numBits > 0
                                           ? static_cast<std::uint8_t>((1u << part.numBits) - 1)
                                           : std::uint8_t{255};
        }
    }
    for (; band < factors.values.size(); ++band) factors.values[band] = 0;
}

/// ISO 11172-3, 2.4.2.7
void ReadFactorsOfMpeg1(Mp3BitReader& reader,
                        const Mp3Granule& granule,
                        const std::array<bool, 4>* shared,
                        Mp3ScaleFactors& factors) noexcept {
    constexpr std::uint8_t kFirstBits[] = {0, 0, 0, 0, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4};
    constexpr std::uint8_t kSecondBits[] = {0, 1, 2, 3, 0, 1, 2, 3, 1, 2, 3, 1, 2, 3, 2, 3};
    const unsigned first = kFirstBits[granule.factorsCompress];
    const unsigned second = kSecondBits[granule.factorsCompress];
    if (granule.Blocks() != Mp3Blocks::Long) {
        const std::size_t numFirst = granule.isMixed ? 17 : 18;
        ReadParts(reader, {{{numFirst, first}, {18, second}}}, false, factors);
    } else {
        constexpr std::size_t kGroupEnds[] = {6, 11, 16, 21};
        std::size_t band = 0;
        for (std::size_t group = 0; group < 4; ++group) {
            const bool isShared = shared != nullptr && (*shared)[group];
            for (; band < kGroupEnds[group]; ++band) {
                if (isShared) continue;
                const unsigned numBits = group < 2 ? first : second;
                factors.values[band] = static_cast<std::uint8_t>(reader.Take(numBits));
            }
        }
        factors.values[band] = 0;
    }
    factors.noPosition.fill(7);
}

/// How the factors of MPEG-2 are packed (ISO 13818-3, 2.4.3.2): one number says how many bits each
/// of four parts has, and which bands these are.
struct Packing {
    std::array<unsigned, 4> numBits;
    std::size_t row;  // of kPartBands
};

constexpr std::uint8_t kPartBands[6][3][4] = {
    // long         short            mixed
    {{6, 5, 5, 5}, {9, 9, 9, 9}, {6, 9, 9, 9}},
    {{6, 5, 7, 3}, {9, 9, 12, 6}, {6, 9, 12, 6}},
    {{11, 10, 0, 0}, {18, 18, 0, 0}, {15, 18, 0, 0}},
    {{7, 7, 7, 0}, {12, 12, 12, 0}, {6, 15, 12, 0}},
    {{6, 6, 6, 3}, {12, 9, 9, 6}, {6, 12, 9, 6}},
    {{8, 8, 5, 0}, {15, 12, 9, 0}, {6, 18, 9, 0}},
};

Packing PackingOf(unsigned compress, bool arePositions) noexcept {
    unsigned n = compress;
    if (!arePositions) {
        if (n < 400) return {{n / 16 / 5, n / 16 % 5, n % 16 / 4, n % 4}, 0};
        if (n < 500) return {{(n - 400) / 4 / 5, (n - 400) / 4 % 5, n % 4, 0}, 1};
        return {{(n - 500) / 3, (n - 500) % 3, 0, 0}, 2};
    }
    n /= 2;
    if (n < 180) return {{n / 36, n % 36 / 6, n % 6, 0}, 3};
    if (n < 244) return {{(n - 180) / 16, (n - 180) % 16 / 4, (n - 180) % 4, 0}, 4};
    return {{(n - 244) / 3, (n - 244) % 3, 0, 0}, 5};
}

void ReadFactorsOfMpeg2(Mp3BitReader& reader,
                        bool arePositions,
                        Mp3Granule& granule,
                        Mp3ScaleFactors& factors) noexcept {
    const Packing packing = PackingOf(granule.factorsCompress, arePositions);
    granule.hasPreemphasis = packing.row == 2;
    FactorParts parts{};
    for (std::size_t k = 0; k < parts.size(); ++k) {
        const auto column = static_cast<std::size_t>(granule.Blocks());
        parts[k] = {kPartBands[packing.row][column][k], packing.numBits[k]};
    }
    ReadParts(reader, parts, arePositions, factors);
}

}  // namespace

std::optional<Mp3SideInfo> ReadMp3SideInfo(Mp3BitReader& reader, const Mp3Header& header) noexcept {
    const std::size_t numChannels = header.NumChannels();
    Mp3SideInfo side;
    side.mainDataBegin = reader.Take(header.IsMpeg1() ? 9 : 8);
    if (header.IsMpeg1()) {
        reader.Skip(numChannels == 1 ? 5 : 3);  // private bits
        for (std::size_t channel = 0; channel < numChannels; ++channel) {
            for (bool& shares : side.sharesFactors[channel]) shares = reader.Take(1) != 0;
        }
    } else {
        reader.Skip(numChannels);
    }
    for (std::size_t granule = 0; granule < header.NumGranules(); ++granule) {
        for (std::size_t channel = 0; channel < numChannels; ++channel) {
            if (!ReadGranule(reader, header, side.granules[granule][channel])) return std::nullopt;
        }
    }
    return side;
}

void ReadMp3ScaleFactors(Mp3BitReader& reader,
                         const Mp3Header& header,
                         const Mp3SideInfo& side,
                         std::size_t granuleIndex,
                         std::size_t channel,
                         Mp3Granule& granule,
                         Mp3ScaleFactors& factors) noexcept {
    if (header.IsMpeg1()) {
        const auto* shared = granuleIndex == 0 ? nullptr : &side.sharesFactors[channel];
        return ReadFactorsOfMpeg1(reader, granule, shared, factors);
    }
    const bool arePositions = channel == 1 && (header.modeExtension & 1) != 0;
    ReadFactorsOfMpeg2(reader, arePositions, granule, factors);
}

}  // namespace tav
