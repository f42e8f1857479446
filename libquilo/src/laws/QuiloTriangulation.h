// SPDX-License-Identifier: MIT
// The triplets of loudspeakers between which a source in space is panned.
//
// Which triplets there are decides how every layout sounds, so the procedure, its thresholds, its
// 32-bit arithmetic and the order of its results are promises; how they are found is not.
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Quilo {

/// Three loudspeakers, in layout order, and the inverse of the matrix of their positions.
struct Triplet {
    /// Row-major; times a position it gives the weights g of p = g1 L1 + g2 L2 + g3 L3.
    std::array<float, 9> inverse{};
    std::array<std::uint16_t, 3> speakers{};

    friend bool operator==(const Triplet&, const Triplet&) = default;
};

/// The largest layout; the index above it marks what is not connected.
inline constexpr std::size_t kMostSpeakers = 65535;

/// Row-major inverse of the matrix with the columns a, b, c; all 0 when they span no volume.
std::array<float, 9> InverseOfColumns(const tav::CartesianVector& a,
                                      const tav::CartesianVector& b,
                                      const tav::CartesianVector& c) noexcept;

/// The triplets of a layout, in lexicographic order of their loudspeakers:
///   1. Triples whose quality, |unit normal of the first two . third| / sum of the three angles,
///      is above 0.01 are joined by arcs. While those are more than a million, 0.01 grows
///      fivefold: layouts above about 190 loudspeakers can so lose directions, deliberately.
///   2. From the shortest arc to the longest, each one still there removes those that cross it.
///   3. The triplets are the triples above the threshold whose three arcs are still there and that
///      have no other loudspeaker inside.
/// Positions are not scaled to one distance; loudspeakers may coincide or stand at the listener's
/// place. Fewer than three loudspeakers, or more than kMostSpeakers, have no triplets.
/// Thread: control, never audio.  Throws: std::bad_alloc.  Cost: O(n^3) small steps to rate the
/// triples, and what the arcs take: under a millisecond at 64, some 20 at 250, up to two
/// seconds where they all stand within a few degrees or in one row.
tav::Vector<Triplet> Triangulate(const tav::CartesianArray& speakers);

}  // namespace Quilo
