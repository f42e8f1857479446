// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

namespace Quilo {

/// The positions with which a new object begins, so that it sounds before any have been set.
/// All lie at distance 1.  Thread: control.  Throws: nothing but for lack of memory.

/// What kind of loudspeaker layout a panning law is made for.
enum class LayoutKind {
    Surround,    ///< three or four: a frontal arc and one rear loudspeaker
    Horizontal,  ///< a regular ring, clockwise from front left
    Periphonic,  ///< evenly spread over the sphere
};

/// One source in front; several from 30 degrees left to 30 degrees right.
tav::CartesianArray DefaultSources(unsigned numSources);

/// One loudspeaker stands in front, two at 30 degrees left and right, whatever the kind.
tav::CartesianArray DefaultSpeakers(LayoutKind kind, unsigned numSpeakers);

}  // namespace Quilo
