// SPDX-License-Identifier: MIT
// The two views of a scene: from above and from the side.
#pragma once

#include "picture/HostScene.h"
#include "picture/HostSvg.h"

namespace Quilo::Host {

inline constexpr double kSourceRadius = 9;
inline constexpr double kListenerRadius = 11;

/// How a view projects positions.
struct View {
    std::string_view name;  // of the group in the document
    std::string_view title;
    std::string_view acrossTitle;
    std::string_view upTitle;
    float tav::CartesianVector::*across;
    float tav::CartesianVector::*up;
    bool noseUp;  // the listener faces up, otherwise to the right
};

inline constexpr View kFromAbove{"from-above",
                                 "From above",
                                 "x, to the right (m)",
                                 "y, to the front (m)",
                                 &tav::CartesianVector::x,
                                 &tav::CartesianVector::y,
                                 true};
inline constexpr View kFromTheSide{"from-the-side",
                                   "From the side",
                                   "y, to the front (m)",
                                   "z, up (m)",
                                   &tav::CartesianVector::y,
                                   &tav::CartesianVector::z,
                                   false};

/// Draws loudspeakers, listener and the paths of the sources in one view, with the same scale on
/// both axes. A position beyond the reach of the scene is drawn at the edge, with its distance.
/// @param timeStep  seconds between the dots on the paths
void DrawPlan(Svg& svg,
              const Scene& scene,
              const View& view,
              Spot corner,
              double width,
              double height,
              double timeStep);

/// @param size  1: as in the key
void DrawSpeaker(Svg& svg, Spot spot, double turnDeg, double size = 1);
void DrawListener(Svg& svg, Spot spot, bool noseUp);
/// Draws the numbered disc of a source at its last position.  @param source  from 0
void DrawSource(Svg& svg, Spot spot, std::size_t source);

}  // namespace Quilo::Host
