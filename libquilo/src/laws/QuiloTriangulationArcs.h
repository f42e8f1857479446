// SPDX-License-Identifier: MIT
// Arcs between loudspeakers on the sphere round the listener, and which of them cross.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Quilo {

/// A position and its length, so that angles need not measure it again.
struct Ray {
    tav::CartesianVector v;
    float length = 0;
};

float Dot(const tav::CartesianVector& a, const tav::CartesianVector& b) noexcept;
tav::CartesianVector Cross(const tav::CartesianVector& a, const tav::CartesianVector& b) noexcept;
Ray MakeRay(const tav::CartesianVector& v) noexcept;

/// a x b at length 1, or 0 where the two are parallel.
tav::CartesianVector UnitNormal(const tav::CartesianVector& a,
                                const tav::CartesianVector& b) noexcept;

/// In [0, pi], the double-precision arc cosine rounded: the same on every platform.
/// Deliberate: where one of the two is 0, it is |azimuth| of the other.
///                                             (Triangulation, MeasuresFromTheOriginByAzimuth)
float AngleBetween(const Ray& a, const Ray& b) noexcept;

/// The shorter great-circle arc between two loudspeakers.
struct Arc {
    std::uint16_t from = 0;  ///< below `to`
    std::uint16_t to = 0;
    float angle = 0;              ///< radians
    tav::CartesianVector normal;  ///< UnitNormal(from, to)
};

/// Whether two arcs that share no loudspeaker cross at more than 0.01 rad from all their ends;
/// the written formula, with its rounding.
bool ArcsCross(std::span<const Ray> speakers, const Arc& a, const Arc& b) noexcept;

/// From the first arc to the last, each one still there removes all that cross it and share no
/// loudspeaker with it; the answer is that of ArcsCross for every pair of arcs.
/// @param arcs  by increasing angle; afterwards those that are left, in any order
void RemoveCrossedArcs(std::span<const Ray> speakers, std::vector<Arc>& arcs);

}  // namespace Quilo
