// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

namespace Quilo {

/// A source position as the closed-form laws see it.
/// All of them start from these four values, in single precision, so that they agree to the last
/// bit about where a source is.
struct SourceDirection {
    float azimuth = 0.f;  ///< radians, mathematical: 0 on the right (+x), counter-clockwise
    float elevation =
        0.f;               ///< radians, 0 in the horizontal plane and at the origin, up is positive
    float distance = 0.f;  ///< metres
    float width = 0.f;     ///< horizontal distance clamped to [0, 1]: 0 centres a stereo source
};

/// @param position  metres, any finite point
/// Thread: control.  Throws: nothing.
SourceDirection DirectionOf(const tav::CartesianVector& position);

}  // namespace Quilo
