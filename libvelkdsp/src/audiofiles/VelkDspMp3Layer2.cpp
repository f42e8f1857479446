// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Layer2.h"

#include <algorithm>
#include <cmath>

namespace tav {
namespace {

/// Numbers of steps that an allocation may choose from; the first is "silent".
struct AllocationRow {
    unsigned numBits;  // of the allocation
    std::array<std::uint16_t, 16> steps;
};

// clang-format off
constexpr AllocationRow kAllocations[] = {
    {4, {0, 3, 7, 15, 31, 63, 127, 255, 511, 1023, 2047, 4095, 8191, 16383, 32767, 65535}},
    {4, {0, 3, 5, 7, 9, 15, 31, 63, 127, 255, 511, 1023, 2047, 4095, 8191, 65535}},
    {3, {0, 3, 5, 7, 9, 15, 31, 65535}},
    {2, {0, 3, 5, 65535}},
    {4, {0, 3, 5, 9, 15, 31, 63, 127, 255, 511, 1023, 2047, 4095, 8191, 16383, 32767}},
    {3, {0, 3, 5, 9, 15, 31, 63, 127}},
    {4, {0, 3, 5, 7, 9, 15, 31, 63, 127, 255, 511, 1023, 2047, 4095, 8191, 16383}},
    {2, {0, 3, 5, 9}},
};

/// Subbands up to `end` choose from a row.
struct AllocationPart {
    std::size_t end;
    std::size_t row;
};

// ISO 11172-3, Tables B.2a to B.2d; ISO 13818-3, Table B.1. The last end is the number of subbands.
constexpr AllocationPart kAllocationTables[5][4] = {
    {{3, 0}, {11, 1}, {23, 2}, {27, 3}},
    {{3, 0}, {11, 1}, {23, 2}, {30, 3}},
    {{2, 4}, {8, 5}, {8, 5}, {8, 5}},
    {{2, 4}, {12, 5}, {12, 5}, {12, 5}},
    {{4, 6}, {11, 5}, {30, 7}, {30, 7}},
};
// clang-format on

std::size_t TableOf(const Mp3Header& header) noexcept {
    if (!header.IsMpeg1()) return 4;
    const unsigned kbps = header.bitrateKbps / header.NumChannels();
    const bool isLow = header.bitrateKbps != 0 && kbps <= 48;
    if (isLow) return header.sampleRateHz == 32000 ? 3 : 2;
    const bool isWide = header.sampleRateHz != 48000 && (header.bitrateKbps == 0 || kbps >= 96);
    return isWide ? 1 : 0;
}

const AllocationRow& RowOf(std::size_t table, std::size_t subband) noexcept {
    const auto& parts = kAllocationTables[table];
    return kAllocations[std::ranges::find_if(parts, [&](const AllocationPart& part) {
                            return subband < part.end;
                        })->row];
}

/// Three samples of 3, 5 or 9 steps are one number.
Mp3Quantiser QuantiserOf(unsigned numSteps) noexcept {
    switch (numSteps) {
        case 0: return {};
        case 3: return {3, 5, true};
        case 5: return {5, 7, true};
        case 9: return {9, 10, true};
        default: break;
    }
    unsigned numBits = 0;
    while ((1u << numBits) < numSteps) ++numBits;
    return {numSteps, numBits, false};
}

std::array<unsigned, 3> TakeThree(Mp3BitReader& reader, const Mp3Quantiser& quantiser) noexcept {
    std::array<unsigned, 3> values{};
    if (quantiser.isGrouped) {
        unsigned number = reader.Take(quantiser.numBits);
        for (unsigned& value : values) {
            value = number % quantiser.numSteps;
            number /= quantiser.numSteps;
        }
    } else {
        for (unsigned& value : values) value = reader.Take(quantiser.numBits);
    }
    return values;
}

/// Factor 0 is 2, each further one is lower by a third of an octave. 63 is not defined.
float FactorOf(unsigned index) noexcept {
    static const auto factors = [] {
        std::array<float, 64> values{};
        for (std::size_t k = 0; k < values.size(); ++k) {
            values[k] = static_cast<float>(std::exp2(1 - static_cast<double>(k) / 3));
        }
        return values;
    }();
    return factors[index];
}

}  // namespace

Mp3Layer2Frame::Mp3Layer2Frame(const Mp3Header& header, Mp3BitReader& reader) noexcept
    : numChannels_(header.NumChannels()),
      table_(TableOf(header)) {
    numSubbands_ = kAllocationTables[table_][3].end;
    const bool isJoint = header.mode == Mp3Header::Mode::Joint;
    firstShared_ = isJoint ? std::min(std::size_t{4} * (header.modeExtension + 1), numSubbands_)
                           : numSubbands_;
    ReadAllocation(reader);
    ReadFactors(reader);
}

void Mp3Layer2Frame::ReadAllocation(Mp3BitReader& reader) noexcept {
    for (std::size_t subband = 0; subband < numSubbands_; ++subband) {
        const AllocationRow& row = RowOf(table_, subband);
        for (std::size_t channel = 0; channel < numChannels_; ++channel) {
            Subband& own = subbands_[channel][subband];
            const bool isShared = channel == 1 && subband >= firstShared_;
            own.quantiser = isShared ? subbands_[0][subband].quantiser
                                     : QuantiserOf(row.steps[reader.Take(row.numBits)]);
        }
    }
}

void Mp3Layer2Frame::ReadFactors(Mp3BitReader& reader) noexcept {
    std::array<std::array<unsigned, kMp3Subbands>, 2> selections{};
    const auto forEachAudible = [&](auto body) {
        for (std::size_t subband = 0; subband < numSubbands_; ++subband) {
            for (std::size_t channel = 0; channel < numChannels_; ++channel) {
                if (subbands_[channel][subband].quantiser.numSteps > 0) body(channel, subband);
            }
        }
    };
    forEachAudible([&](std::size_t channel, std::size_t subband) {
        selections[channel][subband] = reader.Take(2);
    });
    forEachAudible([&](std::size_t channel, std::size_t subband) {
        // Which of up to three factors each third of the frame has.
        constexpr std::uint8_t kFactorOfThird[4][3] = {{0, 1, 2}, {0, 0, 1}, {0, 0, 0}, {0, 1, 1}};
        const auto& order = kFactorOfThird[selections[channel][subband]];
        std::array<float, 3> read{};
        for (std::size_t k = 0; k <= order[2]; ++k) read[k] = FactorOf(reader.Take(6));
        Subband& own = subbands_[channel][subband];
        for (std::size_t third = 0; third < 3; ++third) {
            own.factors[third] = read[order[third]] / static_cast<float>(own.quantiser.numSteps);
        }
    });
}

bool Mp3Layer2Frame::ReadSlots(Mp3BitReader& reader,
                               std::size_t end,
                               Mp3SubbandRows& left,
                               Mp3SubbandRows& right) noexcept {
    const std::array<Mp3SubbandRows*, 2> rows{&left, &right};
    for (std::size_t channel = 0; channel < numChannels_; ++channel) rows[channel]->fill(0);
    for (std::size_t slot = 0; slot < kMp3Slots; slot += 3, ++group_) {
        for (std::size_t subband = 0; subband < numSubbands_; ++subband) {
            std::array<unsigned, 3> values{};
            for (std::size_t channel = 0; channel < numChannels_; ++channel) {
                const Subband& own = subbands_[channel][subband];
                const Mp3Quantiser& quantiser = own.quantiser;
                if (quantiser.numSteps == 0) continue;
                const bool isShared = channel == 1 && subband >= firstShared_;
                if (!isShared) values = TakeThree(reader, quantiser);
                if (reader.Position() > end) return false;
                for (std::size_t k = 0; k < 3; ++k) {
                    // The steps lie evenly round 0, at even multiples of 1 / numSteps.
                    const int steps =
                        2 * static_cast<int>(values[k]) + 1 - static_cast<int>(quantiser.numSteps);
                    (*rows[channel])[(slot + k) * kMp3Subbands + subband] =
                        static_cast<float>(steps) * own.factors[group_ / 4];
                }
            }
        }
    }
    return true;
}

}  // namespace tav
