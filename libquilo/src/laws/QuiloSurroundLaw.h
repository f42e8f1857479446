// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspVector.h"

#include <array>
#include <span>

namespace Quilo {

/// Panning over a frontal arc and one rear loudspeaker: left, right, rear or left, centre, right,
/// rear. The azimuth is warped so that the two front loudspeakers and the rear ones take a quarter
/// of a turn each; a source nearer than one metre climbs towards the zenith and spreads.
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
    /// Degrees in [0, 360): 45 on the right loudspeaker, 315 on the left one, 135 and 225 behind.
    double WarpedAzimuthDeg(float azimuthDeg) const;

    std::array<float, 4> azimuthsDeg_{-30.f, 30.f, 180.f, 180.f};  // navigational
};

}  // namespace Quilo
