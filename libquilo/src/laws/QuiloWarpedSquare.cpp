// SPDX-License-Identifier: MIT
#include "laws/QuiloWarpedSquare.h"

#include "laws/QuiloSourceDirection.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

/// A side of the square is 90 degrees; corner 1 is at -45.
double WarpAzimuth(float azimuthDeg, const SquareCorners& corners) noexcept {
    std::array<float, 5> c{};  // increasing, from corner 1 once round to corner 1
    for (std::size_t i = 0; i < 4; ++i) {
        c[i] = tav::Wrap360(corners[i]);
        while (i > 0 && c[i] < c[i - 1]) c[i] += 360.f;
    }
    c[4] = c[0] + 360.f;
    const float t = tav::Wrap360(azimuthDeg - c[0]) + c[0];
    std::size_t side = 0;
    while (side < 3 && !(t < c[side + 1])) ++side;
    const float from = c[side];
    const float to = c[side + 1];
    float warped = 90.f * static_cast<float>(side);
    if (to != from) warped += 90.f * (t - from) / (to - from);
    return tav::Wrap360(static_cast<double>(warped) - 45.0);
}

/// From 2 at 0 down to -2 at 180 and back, cut at -1 and 1: level along two sides of the square,
/// one corner to the next along the two others.
template <class Real>
float Triangle(Real deg) noexcept {
    const Real height =
        deg <= Real{180} ? Real{2} - deg / Real{45} : (deg - Real{180}) / Real{45} - Real{2};
    return std::clamp(static_cast<float>(height), -1.f, 1.f);
}

}  // namespace

SquareDirection WarpDirection(const tav::CartesianVector& source,
                              const SquareCorners& corners) noexcept {
    // 1. The nearer, the higher.
    const SourceDirection direction = DirectionOf(source);
    float elevationDeg =
        direction.elevation * tav::kDegreesPerRadian +
        std::acos(std::clamp(direction.distance, -1.f, 1.f)) * tav::kDegreesPerRadian;
    if (elevationDeg > 180.f) elevationDeg -= 360.f;
    if (elevationDeg < -180.f) elevationDeg += 360.f;
    // 2. Beyond the zenith the source is on the other side.
    const float ahead = std::cos(elevationDeg * tav::kRadiansPerDegree);
    float azimuthDeg = tav::NavigationalAzimuthDeg(source);
    if (ahead < 0.f) azimuthDeg += 180.f;
    return {WarpAzimuth(azimuthDeg, corners), std::fabs(ahead)};
}

template <class Real>
PlaceInSquare PlaceAt(Real azimuthDeg, float radius) noexcept {
    return {Triangle(tav::Wrap360(azimuthDeg - Real{90})) * radius, Triangle(azimuthDeg) * radius};
}
template PlaceInSquare PlaceAt(float, float) noexcept;
template PlaceInSquare PlaceAt(double, float) noexcept;

std::array<float, 4> CornerShares(PlaceInSquare place) noexcept {
    const float front = (1.f + place.y) / 2.f;
    const float back = (1.f - place.y) / 2.f;
    const float left = (1.f - place.x) / 2.f;
    const float right = (1.f + place.x) / 2.f;
    return {front * left, front * right, back * right, back * left};
}

SplitShares::SplitShares(float a, float b) noexcept
    : left(std::clamp(a - b, 0.f, 1.f)),
      right(std::clamp(b - a, 0.f, 1.f)),
      middle(a + b - (left + right)) {}

}  // namespace Quilo
