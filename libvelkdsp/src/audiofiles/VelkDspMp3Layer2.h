// SPDX-License-Identifier: MIT
// The content of a frame of Layer II: subband samples in 12 groups of three slots.
#pragma once

#include "audiofiles/VelkDspMp3BitReader.h"
#include "audiofiles/VelkDspMp3FilterBank.h"
#include "audiofiles/VelkDspMp3Header.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tav {

/// How the samples of a subband are quantised.
struct Mp3Quantiser {
    unsigned numSteps = 0;  // odd; 0: the subband is silent
    unsigned numBits = 0;   // of a sample, or of three together
    bool isGrouped = false;
};

class Mp3Layer2Frame {
public:
    /// Reads allocation and scale factors.
    Mp3Layer2Frame(const Mp3Header& header, Mp3BitReader& reader) noexcept;

    /// Reads half of the samples.
    /// @param end  of the frame, in bits  @param right  not touched where there is one channel
    /// @return false where the frame is too short
    bool ReadSlots(Mp3BitReader& reader,
                   std::size_t end,
                   Mp3SubbandRows& left,
                   Mp3SubbandRows& right) noexcept;

private:
    struct Subband {
        Mp3Quantiser quantiser;
        std::array<float, 3> factors{};  // of a third of the frame each
    };

    void ReadAllocation(Mp3BitReader& reader) noexcept;
    void ReadFactors(Mp3BitReader& reader) noexcept;

    std::size_t numChannels_;
    std::size_t numSubbands_;
    std::size_t firstShared_;  // from here on both channels have the same samples
    std::size_t table_;
    std::size_t group_ = 0;
    std::array<std::array<Subband, kMp3Subbands>, 2> subbands_{};
};

}  // namespace tav
