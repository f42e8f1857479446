// SPDX-License-Identifier: MIT
// What a torso does to a sound on its way to an ear: it reflects it from below and shadows it.
#pragma once

#include "math/VelkDspCartesian.h"

namespace Quilo {

/// A sphere under the head. Head and torso touch where the neck has no height.
/// @see "The use of head-and-torso models for improved spatial sound synthesis", 113th AES
/// Convention, 2002, for the snowman, its measures and the two paths
struct Torso {
    static constexpr float kLargestRadius = 1.f;  // metres
    static constexpr float kLargestNeck = 1.f;    // metres

    float radius = 0.169f;      // metres; 0: there is none
    float neckHeight = 0.053f;  // metres
    float reflection = 0.3f;    // of a sound that comes straight from above, 0 .. 1
};

/// A listener who looks along +y; the origin is the centre of the head.
struct Snowman {
    float headRadius = 0.f;  // metres
    Torso torso;
};

enum class Ear : signed char { Left = -1, Right = 1 };

/// The paths to one ear, as they differ from the straight line between source and ear.
struct TorsoPaths {
    float directDelayMs = 0.f;     ///< around the torso, while that is in the way
    float shadow = 1.f;            ///< see EarPath: 1, 0.1 where the whole torso is in the way
    float reflectedDelayMs = 0.f;  ///< of the reflection after the straight line
    float reflectedGain = 0.f;     ///< 0 for a source in the shadow, from grazing incidence on
    float reflectedCosine = 0.f;   ///< as for HeadShadowAlpha: where the reflection comes from
};

/// The source where it is, or radially above the surface of the torso that it is in.
/// @param source  metres, finite
tav::CartesianVector OutsideTorso(const Snowman& listener, const tav::CartesianVector& source);

/// Geometry of rays: reflection where both angles are the same, diffraction along the tangents.
/// All values are continuous, also at the border of the shadow. Without a torso: the straight line.
/// @param source  metres, not inside the torso
/// Thread: any.  Throws: nothing.
TorsoPaths TorsoPathsTo(Ear ear, const Snowman& listener, const tav::CartesianVector& source);

}  // namespace Quilo
