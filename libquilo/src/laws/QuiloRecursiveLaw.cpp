// SPDX-License-Identifier: MIT
#include "laws/QuiloRecursiveLaw.h"

#include "laws/QuiloSourceDirection.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quilo {

namespace {

/// The loudspeakers at the four corners.
struct CornerRow {
    std::size_t numSpeakers;
    std::array<std::uint8_t, 4> speakers;
};
// clang-format off
constexpr CornerRow kCornerRows[] = {
    {4, {0, 1, 2, 3}},
    {5, {0, 2, 3, 4}},
    {6, {0, 1, 3, 4}},
    {7, {0, 2, 4, 5}},
    {8, {0, 2, 4, 6}},
};
// Twelve have a pair at each.
constexpr std::array<std::array<std::uint8_t, 2>, 4> kCornerPairs{{{0, 11}, {2, 3}, {5, 6}, {8, 9}}};
// clang-format on

float AzimuthRad(const tav::CartesianVector& v) { return std::atan2(v.y, v.x); }

float NavigationalDeg(float azimuthRad) {
    return tav::Wrap360(270.f - azimuthRad * tav::kDegreesPerRadian) - 180.f;
}

/// 90 degrees and more for each side of the square that is behind; corner 1 is at -45.
float WarpedAzimuth(float azimuthDeg, const SquareCorners& corners) {
    std::array<float, 5> c{};
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
    return static_cast<float>(tav::Wrap360(static_cast<double>(warped) - 45.0));
}

/// From 2 at 0 down to -2 at 180 and back; between -1 and 1 it runs along one side of the square.
float Triangle(float deg) {
    const float height = deg <= 180.f ? 2.f - deg / 45.f : (deg - 180.f) / 45.f - 2.f;
    return std::clamp(height, -1.f, 1.f);
}

struct PlaceInSquare {
    float x = 0.f;
    float y = 0.f;
};

PlaceInSquare PlaceOf(const tav::CartesianVector& source, const SquareCorners& corners) {
    const SourceDirection direction = DirectionOf(source);
    // 1. Distance is height: elevation grows to the zenith and over it.
    float elevation = direction.elevation * tav::kDegreesPerRadian +
                      std::acos(std::clamp(direction.distance, -1.f, 1.f)) * tav::kDegreesPerRadian;
    if (elevation > 180.f) elevation -= 360.f;
    if (elevation < -180.f) elevation += 360.f;
    const float ahead = std::cos(elevation * tav::kRadiansPerDegree);
    // 2. Over the zenith the azimuth turns round.
    float azimuth = NavigationalDeg(direction.azimuth);
    if (ahead < 0.f) azimuth += 180.f;
    // 3. Through the corners onto the square.
    const float radius = std::fabs(ahead);
    const float warped = WarpedAzimuth(azimuth, corners);
    return {Triangle(tav::Wrap360(warped - 90.f)) * radius, Triangle(warped) * radius};
}

using Shares = std::array<float, 12>;

/// A pair of shares over three loudspeakers; what both have goes to the middle.
struct Split {
    float left;
    float right;
    float middle;

    Split(float a, float b)
        : left(std::clamp(a - b, 0.f, 1.f)),
          right(std::clamp(b - a, 0.f, 1.f)),
          middle(a + b - (left + right)) {}
};

Shares SharesOf4(PlaceInSquare p) {
    const float front = (1.f + p.y) / 2.f;
    const float back = (1.f - p.y) / 2.f;
    const float left = (1.f - p.x) / 2.f;
    const float right = (1.f + p.x) / 2.f;
    return {front * left, front * right, back * right, back * left};
}

Shares SharesOf5(const Shares& c) {
    const Split front(c[0], c[1]);
    return {front.left, front.middle, front.right, c[2], c[3]};
}

Shares SharesOf6(const Shares& c) {
    const Split left(c[0], c[3]);
    const Split right(c[1], c[2]);
    return {left.left, right.left, right.middle, right.right, left.right, left.middle};
}

Shares SharesOf7(const Shares& c) {
    const Split front(c[0], c[1]);
    const Split left(front.left, c[3]);
    const Split right(front.right, c[2]);
    return {left.left,   front.middle, right.left, right.middle,
            right.right, left.right,   left.middle};
}

Shares SharesOf8(const Shares& c) {
    const Shares t = SharesOf6(c);
    const Split front(t[0], t[1]);
    const Split back(t[3], t[4]);
    return {front.left, front.middle, front.right, t[2], back.left, back.middle, back.right, t[5]};
}

Shares SharesOf12(const Shares& c) {
    const Shares u = SharesOf8(c);
    const Split front(u[0], u[1]);
    const Split right(front.right, u[2]);
    const Split back(u[4], u[5]);
    const Split left(back.right, u[6]);
    return {front.left, front.middle, right.left, right.middle, right.right, u[3],
            back.left,  back.middle,  left.left,  left.middle,  left.right,  u[7]};
}

Shares SharesOf(std::size_t numSpeakers, const Shares& corners) {
    switch (numSpeakers) {
        case 4: return corners;
        case 5: return SharesOf5(corners);
        case 6: return SharesOf6(corners);
        case 7: return SharesOf7(corners);
        case 8: return SharesOf8(corners);
        case 12: return SharesOf12(corners);
        default: return {};
    }
}

}  // namespace

bool IsRecursiveLayout(std::size_t numSpeakers) noexcept {
    return (numSpeakers >= 4 && numSpeakers <= 8) || numSpeakers == 12;
}

SquareCorners RecursiveCorners(std::span<const tav::CartesianVector> speakers) noexcept {
    SquareCorners corners{};
    for (const CornerRow& row : kCornerRows) {
        if (row.numSpeakers != speakers.size()) continue;
        for (std::size_t i = 0; i < 4; ++i) {
            corners[i] = tav::NavigationalAzimuthDeg(speakers[row.speakers[i]]);
        }
    }
    if (speakers.size() != 12) return corners;
    for (std::size_t i = 0; i < 4; ++i) {
        // Deliberate: half the sum of the angles as they are, though they may lie on both sides of
        // the jump at the back.                (RecursiveCorners, AreHalfSumsOfTwelve)
        const auto [a, b] = kCornerPairs[i];
        corners[i] = NavigationalDeg((AzimuthRad(speakers[a]) + AzimuthRad(speakers[b])) * 0.5f);
    }
    return corners;
}

void RecursiveGains(const tav::CartesianVector& source,
                    const SquareCorners& corners,
                    std::size_t numSpeakers,
                    std::span<float> gains) noexcept {
    std::ranges::fill(gains, 0.f);
    if (!IsRecursiveLayout(numSpeakers)) return;
    const Shares shares = SharesOf(numSpeakers, SharesOf4(PlaceOf(source, corners)));
    for (std::size_t i = 0; i < numSpeakers; ++i) gains[i] = std::sqrt(shares[i]);
}

}  // namespace Quilo
