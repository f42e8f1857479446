// SPDX-License-Identifier: MIT
// The map of coverage: silent directions, and the error of direction elsewhere.
#pragma once

#include "picture/HostScene.h"
#include "picture/HostSvg.h"

namespace Quilo::Host {

/// Draws the upper and the lower half of the sphere in an equal-area projection, both seen from
/// above, so that front and right are as in the plan. The key and the numbers are at the right.
/// @param keyLeft  pixels
/// @return  the height used, in pixels; 0 if the scene has no map
double DrawCoverage(Svg& svg, const Scene& scene, Spot corner, double keyLeft);

}  // namespace Quilo::Host
