// SPDX-License-Identifier: MIT
// Which directions the loudspeakers leave silent, and where a source is not heard where it is.
#pragma once

#include "picture/HostScene.h"
#include "picture/HostSvg.h"

namespace Quilo::Host {

/// The upper and the lower half of the sphere, both seen from above, so that front and right are
/// where they are in the plan; areas are true. Numbers and the key stand at the right.
/// @param keyLeft  pixels
/// @return  the height used, from `corner` down; 0 where the scene has no map
double DrawCoverage(Svg& svg, const Scene& scene, Spot corner, double keyLeft);

}  // namespace Quilo::Host
