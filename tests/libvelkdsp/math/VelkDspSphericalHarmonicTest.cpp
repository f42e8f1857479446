// SPDX-License-Identifier: MIT
#include "math/VelkDspSphericalHarmonic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace tav {
namespace {

using Normalization = SphericalHarmonic::Normalization;
using Sorting = SphericalHarmonic::Sorting;

std::string Letters(unsigned dimension, Sorting sorting, unsigned count) {
    std::string letters;
    for (unsigned index = 0; index < count; ++index) {
        const auto degree = SphericalHarmonic::FromChannelIndex(index, dimension, sorting);
        letters += SphericalHarmonic::FuMaLetter(degree.n, degree.m);
    }
    return letters;
}

TEST(SphericalHarmonic, SortsTheNamedChannels) {
    EXPECT_EQ(Letters(3, Sorting::ACN, 16), "WYZXVTRSUQOMKLNP");
    EXPECT_EQ(Letters(3, Sorting::SID, 16), "WXYZUVSTRPQNOLMK");
    EXPECT_EQ(Letters(3, Sorting::FMH, 16), "WXYZRSTUVKLMNOPQ");
    EXPECT_EQ(Letters(2, Sorting::ACN, 7), "WYXVUQP");
    EXPECT_EQ(Letters(2, Sorting::SID, 7), "WXYUVPQ");
    EXPECT_EQ(Letters(2, Sorting::FMH, 7), "WXYUVPQ");
    EXPECT_EQ(SphericalHarmonic::ChannelLabel(1, -1, true), "Y(1,-1) (Y)");
    EXPECT_EQ(SphericalHarmonic::ChannelLabel(1, 0, false), "Y(1,0)");
    EXPECT_EQ(SphericalHarmonic::ChannelLabel(4, -4, true), "Y(4,-4)");
}

TEST(SphericalHarmonic, GivesEveryHarmonicOneChannelInEverySorting) {
    for (const Sorting sorting : {Sorting::ACN, Sorting::SID, Sorting::FMH}) {
        for (const unsigned dimension : {2u, 3u}) {
            unsigned index = 0;
            for (unsigned n = 0; n <= 14; ++n) {
                std::set<int> degrees;
                for (; index < SphericalHarmonic::NumChannels(n, dimension); ++index) {
                    const auto d = SphericalHarmonic::FromChannelIndex(index, dimension, sorting);
                    EXPECT_EQ(d.n, n);
                    EXPECT_LE(std::abs(d.m), static_cast<int>(n));
                    EXPECT_TRUE(dimension == 3 || std::abs(d.m) == static_cast<int>(n));
                    degrees.insert(d.m);
                }
                EXPECT_EQ(degrees.size(), dimension == 3 ? 2 * n + 1 : (n == 0 ? 1u : 2u));
            }
        }
    }
}

TEST(SphericalHarmonic, KnowsTheCountsThatAreWholeOrders) {
    for (const unsigned dimension : {1u, 2u, 3u}) {
        std::vector<int> orders(251, -1);
        orders[1] = 0;
        for (unsigned n = 0; n < 125; ++n) {
            const unsigned count = SphericalHarmonic::NumChannels(n, dimension);
            if (count > 0 && count <= 250) orders[count] = static_cast<int>(n);
        }
        for (unsigned count = 0; count <= 250; ++count) {
            EXPECT_EQ(SphericalHarmonic::OrderFromChannelCount(count, dimension), orders[count]);
            EXPECT_EQ(SphericalHarmonic::IsValidChannelCount(count, dimension), orders[count] >= 0);
        }
    }
}

TEST(SphericalHarmonic, OneWayBackIsInfinite) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const auto factor = SphericalHarmonic::ConversionFactor;
    EXPECT_EQ(factor(2, 1, Normalization::N2D, Normalization::SN2D), kInfinity);
    EXPECT_EQ(factor(2, 1, Normalization::SN2D, Normalization::N2D), 0.f);
    EXPECT_EQ(factor(2, 1, Normalization::SN2D, Normalization::N3D), 0.f);
    EXPECT_EQ(factor(4, 1, Normalization::FuMa, Normalization::SN3D), 0.f);
    EXPECT_EQ(factor(4, 1, static_cast<Normalization>(9), Normalization::N3D), 0.f);
}

TEST(SphericalHarmonic, AgreesWithTheStandardLibrarysLegendre) {
    for (float x = -1.f; x <= 1.f; x += 0.03125f) {
        const auto cosine = static_cast<double>(x);
        for (unsigned n = 0; n <= 20; ++n) {
            EXPECT_NEAR(static_cast<double>(SphericalHarmonic::Legendre(n, x)),
                        std::legendre(n, cosine), 2e-6);
        }
    }
}

}  // namespace
}  // namespace tav
