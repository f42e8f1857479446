// SPDX-License-Identifier: MIT
// Which default loudspeaker layout belongs to which panning type.
#pragma once

#include "math/VelkDspCartesian.h"
#include "pan/QuiloPan.h"

namespace Quilo {

/// The layout of a new object that was given none; see DefaultSpeakers.
/// Thread: control.  Throws: nothing but for lack of memory.
tav::CartesianArray DefaultSpeakersFor(Pan::Type type, unsigned numSpeakers);

}  // namespace Quilo
