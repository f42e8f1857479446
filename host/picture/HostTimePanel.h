// SPDX-License-Identifier: MIT
// What a scene does over time: the directions of the sources and the levels of the outlets.
#pragma once

#include "picture/HostScene.h"
#include "picture/HostSvg.h"

namespace Quilo::Host {

/// Azimuth of every source; elevation and distance only where they change or are not plain.
/// @return  the height used, in pixels, from `corner` down
double DrawTraces(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep);

/// One strip per outlet, from -60 to 0 dB; many outlets become bands that darken with level.
/// @return  as above, the axis of time included
double DrawLevels(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep);

}  // namespace Quilo::Host
