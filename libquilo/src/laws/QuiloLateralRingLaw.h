// SPDX-License-Identifier: MIT
// Any direction as a mix of directions of a horizontal ring.
#pragma once

#include "laws/QuiloVbapLaw.h"
#include "math/VelkDspCartesian.h"

#include <span>

namespace Quilo {

/// A direction lies on a cone round the axis through the ears. Where that cone meets the ring,
/// ahead and behind, the interaural differences are the same: the direction is mixed of these two,
/// by how far ahead it is, and each of them of its neighbours on the ring. No path jumps, that over
/// the head neither; straight above is an even mix of ahead and behind.
/// @param ring  surrounds the listener at an even distance      @param direction  not the origin
/// @param gains  one per loudspeaker of the ring, overwritten; none is negative, their sum is 1
/// Thread: any.  Throws: nothing; allocates nothing.
void LateralRingGains(const SpeakerRing& ring,
                      const tav::CartesianVector& direction,
                      std::span<float> gains);

}  // namespace Quilo
