// SPDX-License-Identifier: MIT
#include "laws/QuiloLateralRingLaw.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

void LateralRingGains(const SpeakerRing& ring,
                      const tav::CartesianVector& direction,
                      std::span<float> gains) {
    constexpr double kOnAxis = 1e-6;
    const auto x = static_cast<double>(direction.x), y = static_cast<double>(direction.y);
    const double distance = std::hypot(x, y, static_cast<double>(direction.z));
    const double side = x / distance;
    const double across = std::sqrt(std::max(1.0 - side * side, 0.0));  // of the cone's radius
    const double ahead =
        across < kOnAxis ? 0.5 : std::clamp(0.5 * (1.0 + y / distance / across), 0.0, 1.0);
    std::ranges::fill(gains, 0.f);
    // Not by their norm: the filters are aligned in time, so amplitudes add up.
    const auto addPair = [&](double azimuthDeg, double forward, double weight) {
        const SpeakerRing::Pair& pair = ring.PairAround(azimuthDeg);
        const PairGains share = VbapPairGains(pair.positions, {side, forward});
        const double part = weight / (share.first + share.second);
        gains[pair.firstOutput] += static_cast<float>(part * share.first);
        gains[pair.secondOutput] += static_cast<float>(part * share.second);
    };
    const double azimuthDeg = PlaneAzimuthDeg({side, across});
    addPair(azimuthDeg, across, ahead);
    addPair(azimuthDeg > 0.0 ? 180.0 - azimuthDeg : -180.0 - azimuthDeg, -across, 1.0 - ahead);
}

}  // namespace Quilo
