// SPDX-License-Identifier: MIT
#include "laws/QuiloRecursiveLaw.h"

#include "laws/QuiloDefaultLayouts.h"
#include "math/VelkDspSpherical.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace Quilo {
namespace {

using Gains = tav::Vector<float>;
using Shares = std::vector<double>;

constexpr std::size_t kCounts[] = {4, 5, 6, 7, 8, 12};

Gains GainsAt(const tav::CartesianArray& layout, const tav::CartesianVector& p) {
    Gains gains(layout.Size(), 9.f);
    RecursiveGains(p, RecursiveCorners(layout), layout.Size(), gains);
    return gains;
}

/// What is common to both goes to the middle, what one has more stays with it.
Shares Between(double a, double b) {
    const double common = std::min(a, b);
    return {a - common, 2.0 * common, b - common};
}

/// Energies of a layout from those of its corners, by the loudspeakers that stand between others.
Shares Spread(std::size_t count, const Shares& c) {
    if (count == 4) return c;
    if (count == 5 || count == 7) {
        const Shares f = Between(c[0], c[1]);
        if (count == 5) return {f[0], f[1], f[2], c[2], c[3]};
        const Shares l = Between(f[0], c[3]), r = Between(f[2], c[2]);
        return {l[0], f[1], r[0], r[1], r[2], l[2], l[1]};
    }
    const Shares l = Between(c[0], c[3]), r = Between(c[1], c[2]);
    if (count == 6) return {l[0], r[0], r[1], r[2], l[2], l[1]};
    const Shares f = Between(l[0], r[0]), b = Between(r[2], l[2]);
    if (count == 8) return {f[0], f[1], f[2], r[1], b[0], b[1], b[2], l[1]};
    const Shares f2 = Between(f[0], f[1]), r2 = Between(f2[2], f[2]);
    const Shares b2 = Between(b[0], b[1]), l2 = Between(b2[2], b[2]);
    return {f2[0], f2[1], r2[0], r2[1], r2[2], r[1], b2[0], b2[1], l2[0], l2[1], l2[2], l[1]};
}

/// The law in double precision: the source as a point of the square whose corners are warped.
Shares PlainEnergies(const tav::CartesianVector& p, const SquareCorners& corners, std::size_t n) {
    const double x = double{p.x}, y = double{p.y}, z = double{p.z};
    constexpr double kDeg = 180.0 / std::numbers::pi;
    const double r = std::hypot(x, y, z);
    const double lift = r > 0.0 ? std::asin(z / r) : 0.0;
    const double ahead = std::cos(lift + std::acos(std::min(r, 1.0)));
    const auto turn = [](double deg) { return deg - 360.0 * std::floor(deg / 360.0); };
    const double azimuth = 90.0 - std::atan2(y, x) * kDeg + (ahead < 0.0 ? 180.0 : 0.0);
    std::vector<double> c;
    for (const float corner : corners) {
        double angle = turn(double{corner});
        while (!c.empty() && angle < c.back()) angle += 360.0;
        c.push_back(angle);
    }
    c.push_back(c[0] + 360.0);
    const double t = c[0] + turn(azimuth - c[0]);
    std::size_t side = 0;
    while (side < 3 && t >= c[side + 1]) ++side;
    const double m = turn(90.0 * (double(side) + (t - c[side]) / (c[side + 1] - c[side])) - 45.0);
    const auto edge = [&](double deg) {
        return std::fabs(ahead) * std::clamp(std::fabs(turn(deg) - 180.0) / 45.0 - 2.0, -1.0, 1.0);
    };
    const double right = 0.5 + 0.5 * edge(m - 90.0), front = 0.5 + 0.5 * edge(m);
    return Spread(
        n, {front * (1 - right), front * right, (1 - front) * right, (1 - front) * (1 - right)});
}

TEST(RecursiveGains, EqualTheLawInDoublePrecisionOverRandomLayouts) {
    std::mt19937 generator(4);
    for (int n = 0; n < 6000; ++n) {
        auto layout = Tests::RandomLayout(generator, kCounts[generator() % 6], 2.f);
        // Clockwise from front left, unevenly; corners of random order too.
        if (n % 3 != 0) layout = DefaultSpeakers(LayoutKind::Horizontal, unsigned(layout.Size()));
        for (auto& s : layout) s.x += 0.1f * Tests::Uniform(generator);
        const auto p = n % 50 == 0 ? tav::CartesianVector{} : Tests::RandomPoint(generator, 1.2f);
        const Gains gains = GainsAt(layout, p);
        const Shares expected = PlainEnergies(p, RecursiveCorners(layout), layout.Size());
        double energy = 0.0;
        for (std::size_t k = 0; k < layout.Size(); ++k) {
            const double share = double{gains[k]} * double{gains[k]};
            energy += share;
            // Two corners 0.1 degrees apart stretch roundings of their azimuths by 900.
            ASSERT_NEAR(share, expected[k], n % 3 != 0 ? 1e-5 : 1e-3) << n << " " << k;
        }
        EXPECT_NEAR(energy, 1.0, 1e-6);
    }
}

TEST(RecursiveGains, StayFiniteWhereACornerIsRoundedAway) {
    // The last two corners are one turn behind the first, where the source arrives by rounding.
    const float corner = 300.f + 0x1p-15f;
    const SquareCorners corners{corner, 310.f, corner, corner};
    Gains gains(4);
    for (float deg = -60.001f; deg < -59.999f; deg = std::nextafter(deg, 0.f)) {
        RecursiveGains(tav::FromNavigational(deg, 0.f, 1.f), corners, 4, gains);
        const float energy =
            gains[0] * gains[0] + gains[1] * gains[1] + gains[2] * gains[2] + gains[3] * gains[3];
        EXPECT_NEAR(energy, 1.f, 1e-5f) << deg;
    }
}

// Corners and those half way between them, also from the other side of the zenith.
TEST(RecursiveGains, PlayALoudspeakerOfAnEvenRingAloneWhereItStands) {
    for (const unsigned count : {4u, 5u, 6u, 7u, 8u}) {
        const auto layout = DefaultSpeakers(LayoutKind::Horizontal, count);
        for (std::size_t k = 0; k < count; ++k) {
            EXPECT_NEAR(GainsAt(layout, layout[k])[k], 1.f, 1e-3f) << count << " " << k;
        }
        const Gains over = GainsAt(layout, tav::FromNavigational(180.f, 60.f, 0.5f));
        const Gains front = GainsAt(layout, tav::FromNavigational(0.f, 60.f, 1.f));
        for (std::size_t k = 0; k < count; ++k) EXPECT_NEAR(over[k], front[k], 1e-3f) << count;
    }
}

TEST(RecursiveCorners, AreHalfSumsOfTwelve) {
    auto layout = DefaultSpeakers(LayoutKind::Horizontal, 12);
    const SquareCorners even = RecursiveCorners(layout);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(tav::Wrap360(even[i] + 390.f - 90.f * float(i)), 0.f, 1e-4f) << i;
    }
    // On both sides of the jump at -x: the half sum points to the opposite side.
    layout[0] = tav::FromNavigational(-89.f, 0.f, 1.f);
    layout[11] = tav::FromNavigational(-91.f, 0.f, 1.f);
    EXPECT_NEAR(RecursiveCorners(layout)[0], 90.f, 1e-4f);
}

}  // namespace
}  // namespace Quilo
