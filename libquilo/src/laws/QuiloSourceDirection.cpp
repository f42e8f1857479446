// SPDX-License-Identifier: MIT
#include "laws/QuiloSourceDirection.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

SourceDirection DirectionOf(const tav::CartesianVector& position) {
    const tav::Spherical s = tav::ToSpherical(position);
    SourceDirection d{s.azimuth, s.elevation, s.distance, 0.f};
    if (!std::isfinite(d.distance)) {  // squares overflow beyond 1e19 m: same direction, nearer
        constexpr float kNearer = 1e-20f;
        d.elevation =
            tav::ElevationRad({position.x * kNearer, position.y * kNearer, position.z * kNearer});
    }
    d.width = std::clamp(std::cos(d.elevation) * d.distance, 0.f, 1.f);
    return d;
}

}  // namespace Quilo
