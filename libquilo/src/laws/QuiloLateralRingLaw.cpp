// SPDX-License-Identifier: MIT
#include "laws/QuiloLateralRingLaw.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

std::array<RingPart, 2> LateralRingParts(const SpeakerRing& ring,
                                         const tav::CartesianVector& direction) {
    constexpr double kOnAxis = 1e-6;
    const auto x = static_cast<double>(direction.x), y = static_cast<double>(direction.y);
    const double distance = std::hypot(x, y, static_cast<double>(direction.z));
    const double side = x / distance;
    const double across = std::sqrt(std::max(1.0 - side * side, 0.0));  // of the cone's radius
    const double ahead =
        across < kOnAxis ? 0.5 : std::clamp(0.5 * (1.0 + y / distance / across), 0.0, 1.0);
    // Gains over their sum, not over their norm: the filters are aligned in time, so amplitudes
    // add.
    const auto partAt = [&](double azimuthDeg, double forward, double weight) {
        const SpeakerRing::Pair& pair = ring.PairAround(azimuthDeg);
        const PairGains share = VbapPairGains(pair.positions, {side, forward});
        return RingPart{pair.firstOutput, pair.secondOutput, static_cast<float>(weight),
                        static_cast<float>(share.second / (share.first + share.second))};
    };
    const double azimuthDeg = PlaneAzimuthDeg({side, across});
    const double behindDeg = azimuthDeg > 0.0 ? 180.0 - azimuthDeg : -180.0 - azimuthDeg;
    return {partAt(azimuthDeg, across, ahead), partAt(behindDeg, -across, 1.0 - ahead)};
}

}  // namespace Quilo
