// SPDX-License-Identifier: MIT
#include "laws/QuiloSourceDirection.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

float Length(const tav::CartesianVector& p) { return std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z); }

float ElevationOf(const tav::CartesianVector& p, float distance) {
    // The clamp only matters where the squares fall below the normal numbers.
    return distance > 0.f ? std::asin(std::clamp(p.z / distance, -1.f, 1.f)) : 0.f;
}

}  // namespace

SourceDirection DirectionOf(const tav::CartesianVector& position) {
    SourceDirection d;
    d.azimuth = std::atan2(position.y, position.x);
    d.distance = Length(position);
    d.elevation = ElevationOf(position, d.distance);
    if (!std::isfinite(d.distance)) {  // squares overflow beyond 1e19 m: same direction, nearer
        const tav::CartesianVector nearer{position.x * 1e-20f, position.y * 1e-20f,
                                          position.z * 1e-20f};
        d.elevation = ElevationOf(nearer, Length(nearer));
    }
    d.width = std::clamp(std::cos(d.elevation) * d.distance, 0.f, 1.f);
    return d;
}

}  // namespace Quilo
