// SPDX-License-Identifier: MIT
#include "math/VelkDspAmbix.h"

#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspKeywords.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tav {
namespace {

using Normalization = SphericalHarmonic::Normalization;

struct Field {
    unsigned order, dimension;
    Normalization normalization;
};

void PrintTo(const Field& field, std::ostream* out) {
    *out << field.order << " in " << field.dimension << " "
         << NormalizationKeywords().Print(field.normalization);
}

class AmbixOf : public testing::TestWithParam<Field> {};

// Turned with the frame, a source gives the gains of the standard convention: x front, y left.
TEST_P(AmbixOf, IsTheEncodingOfTheTurnedSource) {
    const auto [order, dimension, normalization] = GetParam();
    const auto channels = AmbixFromHoa(order, dimension, normalization);
    ASSERT_EQ(channels.size(), (order + 1) * (order + 1));
    HoaEncodingVector encoding(order, dimension, normalization);
    HoaEncodingVector standard(order, 3, Normalization::SN3D);
    std::mt19937 random(5);
    for (int k = 0; k < 50; ++k) {
        const CartesianVector source = Tests::RandomPoint(random);
        Vector<double> gains, expected;
        encoding.Compute(source, gains);
        standard.Compute({source.y, -source.x, source.z}, expected);
        for (unsigned i = 0; i < channels.size(); ++i) {
            const auto [n, m] =
                SphericalHarmonic::FromChannelIndex(i, 3, SphericalHarmonic::Sorting::ACN);
            const bool exists = dimension == 3 || n == static_cast<unsigned>(std::abs(m));
            const double converted =
                channels[i].source ? channels[i].gain * gains[*channels[i].source] : 0.0;
            EXPECT_NEAR(converted, exists ? expected[i] : 0.0, 1e-6) << n << " " << m;
        }
    }
}

// clang-format off
constexpr Field kFields[] = {
    {0, 3, Normalization::SN3D}, {1, 3, Normalization::FuMa}, {3, 3, Normalization::FuMa},
    {3, 3, Normalization::MaxN}, {3, 2, Normalization::MaxN}, {7, 3, Normalization::N3D},
    {7, 3, Normalization::Unnormalized}, {6, 3, Normalization::RONB}, {9, 2, Normalization::SN2D},
    {9, 2, Normalization::N2D}, {9, 2, Normalization::RONB}, {14, 3, Normalization::SN3D},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Fields, AmbixOf, testing::ValuesIn(kFields));

TEST(Ambix, RefusesWhatTheNormalizationHasNot) {
    for (const unsigned dimension : {2u, 3u}) {
        EXPECT_TRUE(AmbixFromHoa(4, dimension, Normalization::FuMa).empty());
        EXPECT_TRUE(AmbixFromHoa(4, dimension, Normalization::MaxN).empty());
    }
}

}  // namespace
}  // namespace tav
