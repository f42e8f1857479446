// SPDX-License-Identifier: MIT
#include "math/VelkDspSphericalHarmonic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

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
