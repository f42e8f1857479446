// SPDX-License-Identifier: MIT
// From the spectrum of a granule to samples: alias reduction, inverse MDCT with its windows, and
// the polyphase synthesis that Layer II needs, too.
#pragma once

#include "containers/VelkDspAlignedVector.h"
#include "kernels/VelkDspSubbandKernels.h"

#include <array>
#include <cstddef>

namespace tav {

inline constexpr std::size_t kMp3Subbands = 32;
inline constexpr std::size_t kMp3Slots = 18;  // of a granule: samples of each subband

/// Rows of 32 subbands: lines of a spectrum or slots of samples, 18 of them.
using Mp3SubbandRows = std::array<float, kMp3Slots * kMp3Subbands>;

/// Butterflies between neighbouring subbands (ISO 11172-3, 2.4.3.4.10.1).
/// @param lines  row k has line k of every subband
/// @param numBoundaries  from the lowest on: 31 for long blocks, 1 for mixed, 0 for short ones
void ReduceMp3Aliases(Mp3SubbandRows& lines, std::size_t numBoundaries) noexcept;

/// The inverse MDCT of all subbands of a channel. A block of any type is one linear map from 18
/// lines to 36 samples, windows included: a matrix for each type, applied to all subbands at once.
class Mp3Hybrid {
public:
    /// @param lines  as above  @param numSubbands  that are not 0 throughout
    /// @param blockType  0 to 3  @param isMixed  the lowest two subbands have type 0
    /// @param slots  row t has sample t of every subband
    void Process(const Mp3SubbandRows& lines,
                 std::size_t numSubbands,
                 unsigned blockType,
                 bool isMixed,
                 Mp3SubbandRows& slots) noexcept;

private:
    Mp3SubbandRows overlap_{};
    const SubbandKernels& kernels_ = BestKernels<SubbandKernels>();
};

/// The polyphase synthesis of a channel (ISO 11172-3, Annex A, Figure A.2).
class Mp3Synthesis {
public:
    /// @param slots  18 rows of 32 subbands  @param samples  576
    void Process(const Mp3SubbandRows& slots, float* samples) noexcept;

private:
    static constexpr std::size_t kPast = 15;  // slots before the present one that are heard
    static constexpr std::size_t kWaves = 64;

    std::array<float, (kPast + kMp3Slots) * kWaves> waves_{};
    const SubbandKernels& kernels_ = BestKernels<SubbandKernels>();
};

}  // namespace tav
