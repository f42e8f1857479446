// SPDX-License-Identifier: MIT
#include "laws/QuiloSnowmanModel.h"

#include "laws/QuiloLateralGains.h"
#include "math/VelkDspSpherical.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {
namespace {

constexpr Snowman kListener{.headRadius = 0.0875f, .torso = {}};

tav::CartesianVector Towards(float azimuthDeg, float elevationDeg, float distance = 2.f) {
    return tav::FromNavigational(azimuthDeg, elevationDeg, distance);
}

struct Place {
    float azimuthDeg, elevationDeg;
    double reflectedDelayMs;  // at the right ear, later than the straight line
};

// What a numerical search for the shortest reflected path gives for a source at 2 m.
TEST(SnowmanModel, DelaysReflectionsByTheirDetour) {
    for (const Place& place :
         {Place{0, 90, 0.862}, {0, 45, 0.707}, {0, 0, 0.338}, {0, -30, 0.102}, {-90, 0, 0.204}}) {
        const TorsoPaths paths =
            TorsoPathsTo(Ear::Right, kListener, Towards(place.azimuthDeg, place.elevationDeg));
        EXPECT_NEAR(static_cast<double>(paths.reflectedDelayMs), place.reflectedDelayMs, 0.005)
            << place.azimuthDeg << " " << place.elevationDeg;
        EXPECT_EQ(paths.directDelayMs, 0.f);
        EXPECT_EQ(paths.shadow, 1.f);
    }
    const TorsoPaths above = TorsoPathsTo(Ear::Right, kListener, Towards(0, 90));
    EXPECT_GT(above.reflectedGain, 0.28f);
    EXPECT_LE(above.reflectedGain, 0.3f);
}

// From the horizon over the border of the shadow to straight below, at both ears.
TEST(SnowmanModel, HasNoStepsOnTheWayDown) {
    for (const float azimuth : {0.f, 90.f, 180.f, 37.f}) {
        for (const Ear ear : {Ear::Left, Ear::Right}) {
            TorsoPaths before = TorsoPathsTo(ear, kListener, Towards(azimuth, 0));
            for (float elevation = -1.f; elevation >= -90.f; elevation -= 1.f) {
                const TorsoPaths now = TorsoPathsTo(ear, kListener, Towards(azimuth, elevation));
                EXPECT_NEAR(now.reflectedGain, before.reflectedGain, 0.005f) << elevation;
                EXPECT_NEAR(now.directDelayMs, before.directDelayMs, 0.012f) << elevation;
                EXPECT_NEAR(now.reflectedDelayMs, before.reflectedDelayMs, 0.012f) << elevation;
                EXPECT_NEAR(now.shadow, before.shadow, 0.06f) << elevation;
                EXPECT_GE(now.reflectedDelayMs, now.directDelayMs) << elevation;
                before = now;
            }
            EXPECT_LT(before.shadow, 0.45f);
            EXPECT_GT(before.directDelayMs, 0.02f);
        }
    }
}

TEST(SnowmanModel, StaysFiniteWhereverASourceIs) {
    const Snowman listeners[] = {kListener,
                                 {0.f, {.radius = 0.f}},
                                 {0.f, {.radius = 1.f, .neckHeight = 0.f}},
                                 {1.f, {.radius = 1.f, .neckHeight = 1.f, .reflection = 1.f}}};
    for (const Snowman& listener : listeners) {
        for (const tav::CartesianVector& place : {tav::CartesianVector{0, 0, 0},
                                                  {0, 0, -0.3095f},
                                                  {0, 0, -0.4f},
                                                  {0.0875f, 0, 0},
                                                  {0, 0, -1e30f},
                                                  {3e38f, 3e38f, -3e38f},
                                                  {1e-20f, 0, -1},
                                                  {0, 0, 1e-30f}}) {
            const tav::CartesianVector source = OutsideTorso(listener, place);
            for (const Ear ear : {Ear::Left, Ear::Right}) {
                const TorsoPaths paths = TorsoPathsTo(ear, listener, source);
                EXPECT_GE(paths.directDelayMs, 0.f);
                EXPECT_GE(paths.reflectedDelayMs, -1e-6f);
                EXPECT_LE(paths.reflectedDelayMs, 20.f);
                EXPECT_GE(paths.reflectedGain, 0.f);
                EXPECT_LE(paths.reflectedGain, listener.torso.reflection);
                EXPECT_GE(paths.shadow, 0.0999f);
                EXPECT_LE(paths.shadow, 1.f);
                EXPECT_LE(std::abs(paths.reflectedCosine), 1.0001f);
            }
        }
    }
    // One inside comes out, on its own ray.
    const auto out = OutsideTorso(kListener, {0.05f, 0, -0.3095f});
    EXPECT_NEAR(out.x, 0.17f, 1e-6f);
    EXPECT_NEAR(out.z, -0.3095f, 1e-6f);
}

TEST(LateralGains, KeepTheirPower) {
    for (float cosine = -1.f; cosine <= 1.f; cosine += 0.01f) {
        const EarGains gains = LateralGains(cosine);
        const auto l = static_cast<double>(gains.left), r = static_cast<double>(gains.right);
        EXPECT_NEAR(l * l + r * r, 2.0, 1e-6);
        EXPECT_NEAR(20.0 * std::log10(r / l), 6.0 * static_cast<double>(cosine), 1e-4);
    }
}

}  // namespace
}  // namespace Quilo
