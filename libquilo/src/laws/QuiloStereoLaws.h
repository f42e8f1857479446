// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

#include <span>

namespace Quilo {

/// The laws of the three classic stereo microphone pairs.
/// Each is a closed form of the direction and of the horizontal distance: within one metre the
/// image narrows until a source at the listener is centred.  Thread: control.  Throws: nothing.

/// Two cardioids at right angles in one point.
/// @param gains  2 values, overwritten: left, right
void XyGains(const tav::CartesianVector& source, std::span<float> gains);

/// A forward cardioid and a sideways figure of eight whose positive lobe points to the left.
/// @param gains  2 values, overwritten: mid, side
void MsGains(const tav::CartesianVector& source, std::span<float> gains);

/// What one source needs of a spaced pair.
struct SpacedPair {
    float leftGain = 0.f;
    float rightGain = 0.f;
    float leftDelayMs = 1.f;   ///< 0.75 .. 1.25
    float rightDelayMs = 1.f;  ///< 0.75 .. 1.25
};

/// Two cardioids at a distance of 17 cm: the signals differ in level, and by up to 0.5 ms in time.
SpacedPair AbPair(const tav::CartesianVector& source);

}  // namespace Quilo
