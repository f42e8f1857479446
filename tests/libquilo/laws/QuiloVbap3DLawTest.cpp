// SPDX-License-Identifier: MIT
#include "laws/QuiloVbap3DLaw.h"

#include "kernels/VelkDspTripletKernels.h"
#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloVbapLaw.h"
#include "libquilo/RingsAndGains.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainTriangulation.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace Quilo {
namespace {

using tav::CartesianArray;
using tav::CartesianVector;
using Gains = tav::Vector<float>;
using Tests::Energy;
using Tests::RandomPoint;

CartesianArray Sphere(unsigned count) { return DefaultSpeakers(LayoutKind::Periphonic, count); }

TripletBank Bank(std::span<const Triplet> triplets) {
    return {triplets, tav::BestKernels<tav::TripletKernels>().findPeaks};
}

Gains RawGains(const TripletBank& bank, std::size_t count, const CartesianVector& source) {
    Gains gains(count, 9.f);
    Vbap3DGains(bank, source, gains);
    return gains;
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

// Weights of a coarse grid: ties, one to three below the tolerance, none above the least minimum.
TEST(TripletBank, ComparesWithTheOneTakenLast) {
    constexpr float kWeights[] = {-200000.f, -0.5f, -0.02f, -0.015f, 0.1f, 0.2f, 0.3f};
    std::mt19937 generator(3);
    for (int n = 0; n < 5000; ++n) {
        // Few triplets whose weights are mostly negative, or up to 100 of all weights.
        tav::Vector<Triplet> triplets(n % 2 == 0 ? generator() % 4 : generator() % 101);
        for (std::uint16_t t = 0; t < triplets.Size(); ++t) {
            const auto weight = [&] { return kWeights[generator() % (n % 4 == 0 ? 4 : 7)]; };
            const float a = weight(), b = weight(), c = weight();
            triplets[t] = {{a, 0, 0, b, 0, 0, c, 0, 0}, {t, t, t}};
        }
        Gains plain(100);
        Plain::VbapGains(triplets, {1, 0, 0}, plain);
        ASSERT_EQ(RawGains(Bank(triplets), 100, {1, 0, 0}), plain) << n;
        const bool isChosen = Bank(triplets).Choose({1, 0, 0}).has_value();
        ASSERT_TRUE(isChosen || Energy(plain) == 0.0) << n;
    }
}

}  // namespace
}  // namespace Quilo
