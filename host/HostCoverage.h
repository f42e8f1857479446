// SPDX-License-Identifier: MIT
// How well a panner serves every direction with the loudspeakers that there are: numbers made of
// measured gains. Where the gains come from does not matter here.
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
    double widthDeg;           // of azimuth, the middle in the middle
    double bottomDeg, topDeg;  // of elevation
    double share, upperShare;  // of the sphere, of its upper half
    std::size_t mirror;        // the cell on the other side of the plane x = 0, or itself
};

/// Rings of cells, one round the horizon and one above each pole, as high as `stepDeg` and about as
/// wide. Each ring has cells in front, on both sides and behind, so the grid is its own mirror
/// image; the shares sum to 1.
/// @param stepDeg  divides 90
std::vector<DirectionCell> DirectionGrid(double stepDeg);

tav::CartesianVector UnitVector(const DirectionCell& cell);

/// How a source is heard from the middle of a cell.
struct HeardDirection {
    double power = 0;       // sum of the squared gains
    double errorDeg = 0;    // from where it should be to where the sum of the loudspeakers'
                            // directions, weighted with their gains, points; 180 where it points
                            // nowhere
    bool IsSilent() const;  // no gain reaches 1e-4
};

struct Coverage {
    /// A number and the cell in which it was found.
    struct Extreme {
        double value = 0;
        std::size_t cell = 0;
        std::size_t outlet = 0;  // of leftRight
    };

    std::vector<HeardDirection> heard;  // a cell each
    double silentShare = 0;             // of the sphere, 0 to 1
    double silentUpperShare = 0;        // of its upper half
    Extreme quietest;                   // power; the middle of the silence where there is some
    double meanErrorDeg = 0;            // over all that sounds
    Extreme worstErrorDeg;              // the first of the worst, from below and clockwise
    double meanHorizonErrorDeg = 0;     // over the ring round the horizon
    Extreme worstHorizonErrorDeg;
    bool isFlat = false;  // all loudspeakers stand at the height of the ears
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
