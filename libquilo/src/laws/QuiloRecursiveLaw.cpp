// SPDX-License-Identifier: MIT
#include "laws/QuiloRecursiveLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quilo {

namespace {

/// Which loudspeakers stand at the four corners.
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
// Of twelve loudspeakers, two stand beside each corner.
constexpr std::array<std::array<std::uint8_t, 2>, 4> kCornerPairs{{{0, 11}, {2, 3}, {5, 6}, {8, 9}}};
// clang-format on

float AzimuthRad(const tav::CartesianVector& v) { return std::atan2(v.y, v.x); }

float NavigationalDeg(float azimuthRad) {
    return tav::Wrap360(270.f - azimuthRad * tav::kDegreesPerRadian) - 180.f;
}

/// Energies of the loudspeakers of a layout, or of the four corners, which come first. Each of the
/// functions below turns those of the corners into those of a layout.
using Shares = std::array<float, 12>;

Shares SharesOf5(const Shares& c) {
    const SplitShares front(c[0], c[1]);
    return {front.left, front.middle, front.right, c[2], c[3]};
}

Shares SharesOf6(const Shares& c) {
    const SplitShares left(c[0], c[3]);
    const SplitShares right(c[1], c[2]);
    return {left.left, right.left, right.middle, right.right, left.right, left.middle};
}

Shares SharesOf7(const Shares& c) {
    const SplitShares front(c[0], c[1]);
    const SplitShares left(front.left, c[3]);
    const SplitShares right(front.right, c[2]);
    return {left.left,   front.middle, right.left, right.middle,
            right.right, left.right,   left.middle};
}

Shares SharesOf8(const Shares& c) {
    const Shares t = SharesOf6(c);
    const SplitShares front(t[0], t[1]);
    const SplitShares back(t[3], t[4]);
    return {front.left, front.middle, front.right, t[2], back.left, back.middle, back.right, t[5]};
}

Shares SharesOf12(const Shares& c) {
    const Shares u = SharesOf8(c);
    const SplitShares front(u[0], u[1]);
    const SplitShares right(front.right, u[2]);
    const SplitShares back(u[4], u[5]);
    const SplitShares left(back.right, u[6]);
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
    const SquareDirection direction = WarpDirection(source, corners);
    const PlaceInSquare place = PlaceAt(static_cast<float>(direction.azimuthDeg), direction.radius);
    Shares cornerShares{};
    std::ranges::copy(CornerShares(place), cornerShares.begin());
    const Shares shares = SharesOf(numSpeakers, cornerShares);
    for (std::size_t i = 0; i < numSpeakers; ++i) gains[i] = std::sqrt(shares[i]);
}

}  // namespace Quilo
