// SPDX-License-Identifier: MIT
#include "laws/QuiloVbap3DLaw.h"

#include "kernels/VelkDspTripletKernels.h"
#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloVbapLaw.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainTriangulation.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace Quilo {
namespace {

using tav::CartesianArray;
using tav::CartesianVector;
using Gains = tav::Vector<float>;
using Tests::RandomPoint;

CartesianArray Sphere(unsigned count) { return DefaultSpeakers(LayoutKind::Periphonic, count); }

TripletBank Bank(std::span<const Triplet> triplets) {
    return {triplets, tav::BestTripletKernels().findPeaks};
}

Gains RawGains(const TripletBank& bank, std::size_t count, const CartesianVector& source) {
    Gains gains(count, 9.f);
    Vbap3DGains(bank, source, gains);
    return gains;
}

double Energy(std::span<const float> gains) {
    double energy = 0.0;
    for (const float g : gains) energy += static_cast<double>(g) * static_cast<double>(g);
    return energy;
}

TEST(Vbap3DGains, EqualsThePlainChoice) {
    std::mt19937 generator(2);
    for (const std::size_t count : {4U, 5U, 9U, 20U, 40U}) {
        CartesianArray layout(count);
        // The upper half only: below it no triplet fits, and the running comparison decides.
        for (auto& v : layout) v = RandomPoint(generator);
        for (auto& v : layout) v.z = std::fabs(v.z) + 0.1f;
        const auto triplets = Triangulate(layout);
        const TripletBank bank = Bank(triplets);
        Gains plain(count);
        for (int n = 0; n < 2000; ++n) {
            const CartesianVector source = RandomPoint(generator);
            Plain::VbapGains(triplets, source, plain);
            ASSERT_EQ(RawGains(bank, count, source), plain) << count << " " << n;
        }
    }
}

TEST(Vbap3DGains, PointsAtTheSourceWithUnitEnergy) {
    // Inside a triplet p = sum of g L: scaled back to its length it is the source again. The
    // inverse of a well-shaped triplet is right to some 10 epsilons.
    const CartesianArray layout = Sphere(40);
    const TripletBank bank = Bank(Triangulate(layout));
    std::mt19937 generator(4);
    for (int n = 0; n < 1000; ++n) {
        const CartesianVector p = RandomPoint(generator);
        Gains gains = RawGains(bank, 40, p);
        NormaliseAmplitude3D(gains);
        EXPECT_NEAR(Energy(gains), 1.0, 1e-6);
        CartesianVector sum;
        for (std::size_t i = 0; i < 40; ++i) {
            sum.x += gains[i] * layout[i].x;
            sum.y += gains[i] * layout[i].y;
            sum.z += gains[i] * layout[i].z;
        }
        const float scale = tav::Distance(p) / tav::Distance(sum);
        EXPECT_NEAR(sum.x * scale, p.x, 1e-5f);
        EXPECT_NEAR(sum.y * scale, p.y, 1e-5f);
        EXPECT_NEAR(sum.z * scale, p.z, 1e-5f);
        NormaliseIntensity(gains);
        EXPECT_NEAR(Energy(gains), 1.0, 1e-6);
    }
}

TEST(Vbap3DGains, IsExactOnALoudspeakerAndHalfWay) {
    const CartesianArray layout{{2, 0, 0},  {-1, 0, 0}, {0, 1, 0},
                                {0, -1, 0}, {0, 0, 1},  {0, 0, -1}};
    const TripletBank bank = Bank(Triangulate(layout));
    for (auto* normalise : {+[](std::span<float> g) { NormaliseAmplitude3D(g); },
                            +[](std::span<float> g) { NormaliseIntensity(g); }}) {
        for (std::size_t k = 0; k < 6; ++k) {
            const CartesianVector& l = layout[k];
            Gains gains = RawGains(bank, 6, {3.f * l.x, 3.f * l.y, 3.f * l.z});
            normalise(gains);
            for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(gains[i], i == k ? 1.f : 0.f);
        }
        Gains gains = RawGains(bank, 6, {0.f, 0.5f, 0.5f});
        normalise(gains);
        EXPECT_FLOAT_EQ(gains[2], std::sqrt(0.5f));
        EXPECT_FLOAT_EQ(gains[4], std::sqrt(0.5f));
    }
}

TEST(Vbap3DGains, TurnsAndMirrorsWithItsLayout) {
    const auto turn = [](CartesianVector v) { return CartesianVector{v.y, -v.x, v.z}; };
    const auto mirror = [](CartesianVector v) { return CartesianVector{-v.x, v.y, v.z}; };
    std::mt19937 generator(6);
    CartesianArray layout(20);
    for (auto& v : layout) v = RandomPoint(generator);
    CartesianArray turned(layout);
    CartesianArray mirrored(layout);
    std::ranges::transform(layout, turned.begin(), turn);
    std::ranges::transform(layout, mirrored.begin(), mirror);
    const TripletBank bank = Bank(Triangulate(layout));
    const TripletBank turnedBank = Bank(Triangulate(turned));
    const TripletBank mirroredBank = Bank(Triangulate(mirrored));
    for (int n = 0; n < 500; ++n) {
        const CartesianVector p = RandomPoint(generator);
        const Gains gains = RawGains(bank, 20, p);
        const Gains turnedGains = RawGains(turnedBank, 20, turn(p));
        const Gains mirroredGains = RawGains(mirroredBank, 20, mirror(p));
        for (std::size_t i = 0; i < 20; ++i) {
            EXPECT_NEAR(gains[i], turnedGains[i], 1e-5f * (1.f + gains[i]));
            EXPECT_NEAR(gains[i], mirroredGains[i], 1e-5f * (1.f + gains[i]));
        }
    }
}

/// Its weights of the source (1, 0, 0) are a, b, c.
Triplet Weighing(float a, float b, float c, std::uint16_t first) {
    return {{a, 0, 0, b, 0, 0, c, 0, 0}, {first, first, first}};
}

TEST(TripletBank, ComparesWithTheOneTakenLast) {
    struct Case {
        const char* name;
        std::vector<Triplet> triplets;
        int chosen;  // first loudspeaker of it, -1: none
    };
    const Triplet twoSlightlyBelow = Weighing(-0.02f, -0.02f, 1.f, 0);
    const Triplet oneFarBelow = Weighing(-0.5f, 1.f, 1.f, 10);
    const Triplet threeBarelyBelow = Weighing(-0.015f, -0.015f, -0.015f, 20);
    const Triplet inside = Weighing(0.2f, 0.2f, 0.2f, 30);
    const Case cases[] = {
        {"MoreNegativesLoseAgainstAHigherMinimum", {oneFarBelow, twoSlightlyBelow}, 10},
        {"FewerNegativesLoseWithALowerMinimum", {twoSlightlyBelow, oneFarBelow}, 0},
        {"BothAtOnce", {twoSlightlyBelow, inside, threeBarelyBelow}, 30},
        {"AllNegativeCanBeTakenFirst", {threeBarelyBelow, twoSlightlyBelow}, 20},
        {"TheFirstOfEquals", {inside, Weighing(0.2f, 0.2f, 0.9f, 40)}, 30},
        {"NoneAboveTheLeastMinimum", {Weighing(-200000.f, 1.f, 1.f, 0)}, -1},
        {"NoTriplets", {}, -1},
    };
    for (const Case& c : cases) {
        const auto chosen = Bank(c.triplets).Choose({1.f, 0.f, 0.f});
        ASSERT_EQ(chosen.has_value(), c.chosen >= 0) << c.name;
        if (chosen) {
            EXPECT_EQ(chosen->speakers[0], c.chosen) << c.name;
        }
    }
}

TEST(TripletBank, FindsTheFirstOfEqualsAnywhere) {
    // 100 triplets, the best at one place and again later: whatever arranges them, the first wins.
    for (std::uint16_t best = 0; best < 100; ++best) {
        std::vector<Triplet> triplets;
        for (std::uint16_t t = 0; t < 100; ++t) {
            const float weight = t == best || t == (best + 40) % 100 ? 0.3f : 0.1f;
            triplets.push_back(Weighing(weight, weight, weight, t));
        }
        const auto chosen = Bank(triplets).Choose({1.f, 0.f, 0.f});
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->speakers[0], std::min<int>(best, (best + 40) % 100));
    }
}

TEST(Vbap3DGains, StaysFiniteFarAway) {
    const TripletBank bank = Bank(Triangulate(Sphere(12)));
    for (const float distance : {1e-38f, 1e-20f, 1e15f, 1e30f, 3e38f}) {
        for (auto* normalise : {+[](std::span<float> g) { NormaliseAmplitude3D(g); },
                                +[](std::span<float> g) { NormaliseIntensity(g); }}) {
            Gains gains = RawGains(bank, 12, {distance, distance, -distance});
            normalise(gains);
            for (const float g : gains) EXPECT_TRUE(g >= 0.f && g <= 1.0001f) << distance;
        }
    }
}

TEST(IsFlatLayout, CountsLayoutsBelowThePlaneAsFlat) {
    const auto at = [](float elevationDeg) {
        return CartesianArray{{0.f, 1.f, 0.f}, tav::FromNavigational(30.f, elevationDeg, 3.f)};
    };
    EXPECT_TRUE(IsFlatLayout(CartesianArray{}));
    EXPECT_TRUE(IsFlatLayout(CartesianArray{{0.f, 0.f, 0.f}}));
    EXPECT_TRUE(IsFlatLayout(at(-80.f)));
    EXPECT_TRUE(IsFlatLayout(at(0.99f)));
    EXPECT_FALSE(IsFlatLayout(at(1.01f)));
}

}  // namespace
}  // namespace Quilo
