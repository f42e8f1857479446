// SPDX-License-Identifier: MIT
#pragma once

#include "laws/QuiloWarpedSquare.h"
#include "math/VelkDspCartesian.h"

#include <span>

namespace Quilo {

/// Panning over a frontal arc and one rear loudspeaker: left, right, rear or left, centre, right,
/// rear. It pans in the square of QuiloWarpedSquare.h, whose two rear corners are one loudspeaker;
/// the centre stands between the two front ones.
class SurroundLaw {
public:
    /// Takes the azimuths of the front left and front right loudspeakers; the rear stays at 180.
    /// With four outputs the right one is the third loudspeaker. A missing one keeps its azimuth.
    /// Thread: control.  Throws: nothing.
    void SetSpeakers(const tav::CartesianArray& speakers, std::size_t numOutputs);

    /// @param gains  3 (left, right, rear) or 4 values (left, centre, right, rear), overwritten;
    ///               their squares sum to 1
    /// Thread: control.  Throws: nothing.
    void Gains(const tav::CartesianVector& source, std::span<float> gains) const;

private:
    SquareCorners corners_{-30.f, 30.f, 180.f, 180.f};
};

}  // namespace Quilo
