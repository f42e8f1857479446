// SPDX-License-Identifier: MIT
#pragma once

#include "laws/QuiloTriangulation.h"
#include "math/VelkDspCartesian.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Quilo {

/// Vector-base panning in space, in single precision.
/// The source's position is written as a sum of the vectors of the three loudspeakers round its
/// direction; the factors are the gains.  Thread: control.
/// @see "Virtual sound source positioning using vector base amplitude panning", JAES 45(6), 1997

/// Three loudspeakers and what each contributes, before normalisation.
struct TripletGains {
    std::array<std::uint16_t, 3> speakers{};
    std::array<float, 3> gains{};  ///< finite, not negative
};

/// The triplets of a layout, arranged so that a source is tried on many of them at a time.
class TripletBank {
public:
    /// A block holds this many inverse matrices as nine rows, element by element.
    static constexpr std::size_t kLanes = 16;

    /// A kernel that searches for the best triplet in each lane: the one whose smallest component
    /// of matrix . position is the largest of all blocks. `best` holds the values to be exceeded
    /// and receives those found, `bestBlock` the first block that has it. Products are added from
    /// left to right, without fused multiply-adds.
    using FindPeaks = void (*)(const float* elements,
                               std::int32_t numBlocks,
                               const float* position,
                               float* best,
                               std::int32_t* bestBlock) noexcept;

    TripletBank() = default;
    /// Keeps the order of the triplets, which decides between equals.  Throws: std::bad_alloc.
    TripletBank(std::span<const Triplet> triplets, FindPeaks findPeaks);

    /// The triplet to pan a source between. A triplet is taken when the smallest of its weights is
    /// above that of the one taken before it and no more of them are below -0.01: a running
    /// comparison in the order of the triplets, not a best of all.
    /// @param source  in the unit of the layout, any finite point
    /// Nothing where no triplet is taken.  Cost: O(triplets), no allocation.
    std::optional<TripletGains> Choose(const tav::CartesianVector& source) const noexcept;

    /// Of each triplet, in the order in which they were given.
    std::span<const std::array<std::uint16_t, 3>> Speakers() const noexcept { return speakers_; }

private:
    /// The inverse matrices of kLanes triplets. Unused lanes of the last block are 0.
    struct alignas(64) Block {  // a row is a cache line
        std::array<std::array<float, kLanes>, 9> elements{};
    };
    /// The largest of the smallest weights, and the first triplet that has it.
    struct Peak {
        float minimum;
        std::size_t triplet;
    };
    /// The same per lane.
    struct Peaks {
        std::array<float, kLanes> minima{};
        std::array<std::int32_t, kLanes> blocks{};
    };
    using Weights = std::array<float, 3>;

    Peaks FindPeaksIn(std::size_t firstBlock,
                      std::size_t numBlocks,
                      const tav::CartesianVector& source,
                      float toBeat) const noexcept;
    Peak FindPeak(const tav::CartesianVector& source) const noexcept;
    std::optional<TripletGains> ChooseOneByOne(const tav::CartesianVector& source) const noexcept;
    Weights WeightsOf(std::size_t triplet, const tav::CartesianVector& source) const noexcept;
    TripletGains GainsOf(std::size_t triplet, const Weights& weights) const noexcept;

    std::vector<Block> blocks_;
    std::vector<std::array<std::uint16_t, 3>> speakers_;
    FindPeaks findPeaks_ = nullptr;
};

/// Gains of one source, before normalisation: at most three are above 0, and none where no triplet
/// fits.
/// @param gains  one per output, overwritten; loudspeakers without an output are left out
void Vbap3DGains(const TripletBank& bank,
                 const tav::CartesianVector& source,
                 std::span<float> gains) noexcept;

/// Scales gains so that their squares add up to 1. Zeros stay, and so do gains far below 1e-20.
void NormaliseAmplitude3D(std::span<float> gains) noexcept;

/// Whether no loudspeaker rises more than 1 degree above the horizontal plane.
/// Deliberate: a layout that lies below the plane counts as flat, and so does an empty one.
///                                                     (IsFlatLayout, CountsLayoutsBelow...)
bool IsFlatLayout(std::span<const tav::CartesianVector> speakers) noexcept;

}  // namespace Quilo
