// SPDX-License-Identifier: MIT
#pragma once

#include "laws/QuiloSpeakerRows.h"
#include "math/VelkDspConvexHull2D.h"

#include <array>
#include <span>

namespace Quilo {

/// Distance-based panning: every loudspeaker sounds, the nearer the louder, with unit energy.
/// The listener's place does not matter. Distances are in the unit of the layout, in single
/// precision.  Thread: control.  Throws: nothing but for lack of memory.
/// @see "DBAP - Distance-based amplitude panning", International Computer Music Conference, 2009

float SquaredDistance(const tav::CartesianVector& a, const tav::CartesianVector& b) noexcept;

/// A layout with its middle and its size.
struct SpeakerCloud {
    SpeakerCloud() = default;
    explicit SpeakerCloud(std::span<const tav::CartesianVector> speakers);

    SpeakerRows rows;
    tav::CartesianVector centroid;  ///< the mean position; the origin without loudspeakers
    float radius = 0.f;             ///< from the centroid to the farthest loudspeaker
};

/// How far a source is from a loudspeaker for its gain: the square is
/// weights.x * dx^2 + weights.y * dy^2 + weights.z * dz^2 + offset.
struct DbapMetric {
    tav::CartesianVector weights{1, 1, 1};
    float offset = 0.f;
};
/// The squared distance to a loudspeaker, mixed with the squared distance to the centroid of all of
/// them: with a spread of 0 the first alone counts, with 1 the second, which is the same for every
/// loudspeaker.
/// @param spread  0 .. 1      @param isPlanar  heights do not count
DbapMetric OmniMetric(float spread,
                      const tav::CartesianVector& source,
                      const tav::CartesianVector& centroid,
                      bool isPlanar) noexcept;
/// Distances along an axis are multiplied by 1 - its spread; heights count in any case.
/// @param spreads  x, y, z, 0 .. 1
DbapMetric DirectionalMetric(const std::array<float, 3>& spreads) noexcept;

/// A kernel that computes the gains of one source: 1 / sqrt(D) where D is the squared distance by
/// the metric plus 1e-10, then scaled to a sum of squares of 1.
/// @param rows, stride, count  positions of the loudspeakers, as in SpeakerRows; count from 1
/// @param metric  seven numbers: the source's x, y, z, the weights of the axes, the offset
/// @param gains   count numbers, overwritten
using DbapKernel = void (*)(const float* rows,
                            std::ptrdiff_t stride,
                            int count,
                            const float* metric,
                            float* gains) noexcept;

/// @param source  any finite point      @param gains  overwritten; 0 beyond the loudspeakers
void DbapGains(const SpeakerRows& speakers,
               const tav::CartesianVector& source,
               const DbapMetric& metric,
               DbapKernel kernel,
               std::span<float> gains) noexcept;

/// The factor on the gains of a source by its place as seen from above: 1 inside the hull of the
/// loudspeakers, and the smaller, the farther outside. All distances are measured in space.
/// @param centroid  of the loudspeakers
float HullAttenuation(const tav::ConvexHull2D& hull,
                      const tav::CartesianVector& centroid,
                      const tav::CartesianVector& source) noexcept;

/// The weights with which "vdbap" adds the gains of its two laws.
/// @param distance  from the source to the centroid      @param radius  of the layout
struct VdbapWeights {
    float vectorBase = 0.f;
    float distanceBased = 0.f;
};
VdbapWeights VdbapWeightsAt(float distance, float radius) noexcept;

}  // namespace Quilo
