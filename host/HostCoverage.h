// SPDX-License-Identifier: MIT
// Summarises, from measured gains, how well a panner renders each direction with a given layout.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Quilo::Host {

/// A cell of a grid over the sphere, with the direction of its middle. Degrees, navigational.
struct DirectionCell {
    double azimuthDeg, elevationDeg;
    double widthDeg;           // of azimuth, half of it on each side of the middle
    double bottomDeg, topDeg;  // of elevation
    double share, upperShare;  // of the sphere, of its upper half
    std::size_t mirror;        // index of the cell mirrored at the plane x = 0
};

/// Rings of cells of the height `stepDeg` and about the same width; one ring is centred on the
/// horizon, and one cell on each pole. Each ring has cells in front, on both sides and behind, so
/// the grid is symmetric about x = 0. The shares sum to 1.
/// @param stepDeg  divides 90
std::vector<DirectionCell> DirectionGrid(double stepDeg);

tav::CartesianVector UnitVector(const DirectionCell& cell);

/// How a source in the middle of a cell is rendered.
struct HeardDirection {
    double power = 0;     // sum of the squared gains
    double errorDeg = 0;  // angle between the source and the gain-weighted sum of the loudspeakers'
                          // directions; 180 where the sum is 0
    bool IsSilent() const;  // no gain reaches 1e-4
};

struct Coverage {
    /// An extreme value and the cell in which it occurs.
    struct Extreme {
        double value = 0;
        std::size_t cell = 0;
        std::size_t outlet = 0;  // of leftRight
    };

    std::vector<HeardDirection> heard;  // one for each cell
    double silentShare = 0;             // of the sphere, 0 to 1
    double silentUpperShare = 0;        // of its upper half
    Extreme quietest;  // least power; if there are silent cells, the one farthest from the others
    double meanErrorDeg = 0;         // over the cells that are not silent
    Extreme worstErrorDeg;           // of equal ones the first, from the nadir up and clockwise
    double meanHorizonErrorDeg = 0;  // over the ring round the horizon
    Extreme worstHorizonErrorDeg;
    bool isFlat = false;  // all loudspeakers are at ear height
    /// Largest difference between the gain of a loudspeaker and that of its mirror image for a
    /// mirrored source; nothing where the layout is not its own mirror image.
    std::optional<Extreme> leftRight;
};

/// @param gains     cells x loudspeakers, a row per cell
/// @param speakers  metres, finite; one at the listener has no direction and counts as none
Coverage SummariseCoverage(std::span<const DirectionCell> grid,
                           std::span<const float> gains,
                           std::span<const tav::CartesianVector> speakers);

}  // namespace Quilo::Host
