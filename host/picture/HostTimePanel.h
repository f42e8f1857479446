// SPDX-License-Identifier: MIT
// Diagrams over time: the directions of the sources and the levels of the outlets.
#pragma once

#include "picture/HostScene.h"
#include "picture/HostSvg.h"

namespace Quilo::Host {

/// Draws the azimuth of each source; the elevation unless all are 0, the distance only if it
/// changes.
/// @return  the height used, in pixels
double DrawTraces(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep);

/// Draws one strip per outlet, from -60 to 0 dB; many outlets are bands that darken with level.
/// @return  the height used, in pixels, with the time axis
double DrawLevels(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep);

}  // namespace Quilo::Host
