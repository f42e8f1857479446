// SPDX-License-Identifier: MIT
// Any direction as a mix of directions of a horizontal ring.
#pragma once

#include "laws/QuiloVbapLaw.h"
#include "math/VelkDspCartesian.h"

#include <array>
#include <cstdint>
#include <span>

namespace Quilo {

/// Two neighbours of a ring as a part of a mixture.
struct RingPart {
    std::uint32_t first = 0, second = 0;
    float weight = 0.f;  ///< of both
    float share = 0.f;   ///< of the second in that
};

/// A direction lies on a cone round the axis through the ears. Where that cone meets the ring,
/// ahead and behind, the interaural differences are the same: the direction is mixed of these two,
/// by how far ahead it is, and each of them of its neighbours on the ring. No path jumps, that over
/// the head neither; straight above is an even mix of ahead and behind.
/// @param ring  surrounds the listener at an even distance      @param direction  not the origin
/// @return ahead, behind; no weight is negative, their sum is 1
/// Thread: any.  Throws: nothing; allocates nothing.
std::array<RingPart, 2> LateralRingParts(const SpeakerRing& ring,
                                         const tav::CartesianVector& direction);

/// @param gains  one per loudspeaker of the ring
inline void AddRingPart(const RingPart& part, std::span<float> gains) {
    gains[part.first] += part.weight * (1.f - part.share);
    gains[part.second] += part.weight * part.share;
}

}  // namespace Quilo
