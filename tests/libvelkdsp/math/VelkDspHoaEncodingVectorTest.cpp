// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaEncodingVector.h"

#include "math/VelkDspSpherical.h"
#include "reference/PlainHarmonics.h"
#include "reference/RandomPoints.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace tav {
namespace {

using Normalization = SphericalHarmonic::Normalization;
using Mode = HoaEncodingVector::Mode;

SphericalHarmonic::Degree Channel(std::size_t index, unsigned dimension) {
    return SphericalHarmonic::FromChannelIndex(static_cast<unsigned>(index), dimension,
                                               SphericalHarmonic::Sorting::ACN);
}

/// Random ones, those on an axis, and some that are hard: almost vertical, far, tiny.
CartesianArray Directions() {
    // clang-format off
    CartesianArray directions{{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -2},
                              {0.01f, 0.02f, 1}, {-1, -1e-7f, 0}, {3e19f, -2e19f, 1e19f},
                              {1e-20f, 2e-20f, 3e-20f}};
    // clang-format on
    std::mt19937 generator(5);
    directions.Resize(60);
    for (std::size_t i = 10; i < 60; ++i) directions[i] = Tests::RandomPoint(generator, 2.f);
    return directions;
}

struct SmallOrder {
    const char* name;
    Normalization normalization;
    double w;
    std::array<double, 3> first;   // of y, z, x
    std::array<double, 5> second;  // of xy, yz, 3z^2 - 1, xz, x^2 - y^2
};

const double k3 = std::sqrt(3.0);
const double k5 = std::sqrt(5.0);
const double k15 = std::sqrt(15.0);
const double k4Pi = std::sqrt(4.0 * std::numbers::pi);
const double k8Pi = std::sqrt(8.0 * std::numbers::pi);

// The polynomials of the first two orders; unnormalised ones and RONB turn where m is odd.
// clang-format off
const SmallOrder kSmallOrders[] = {
    {"N3D",  Normalization::N3D,  1.0,              {k3, k3, k3},  {k15, k15, k5 / 2, k15, k15 / 2}},
    {"SN3D", Normalization::SN3D, 1.0,              {1, 1, 1},     {k3, k3, 0.5, k3, k3 / 2}},
    {"FuMa", Normalization::FuMa, std::sqrt(0.5),   {1, 1, 1},     {2, 2, 0.5, 2, 1}},
    {"MaxN", Normalization::MaxN, 1.0,              {1, 1, 1},     {2, 2, 0.5, 2, 1}},
    {"SN2D", Normalization::SN2D, 1.0,              {1, 0, 1},     {2, 0, 0, 0, 1}},
    {"N2D",  Normalization::N2D,  1.0,              {std::numbers::sqrt2, 0, std::numbers::sqrt2},
                                                    {2 * std::numbers::sqrt2, 0, 0, 0, std::numbers::sqrt2}},
    {"Unnormalized", Normalization::Unnormalized, 1 / k4Pi, {-k3 / k8Pi, k3 / k4Pi, -k3 / k8Pi},
                                                    {k15 / k8Pi, -k15 / k8Pi, k5 / 2 / k4Pi, -k15 / k8Pi, k15 / 2 / k8Pi}},
    {"RONB", Normalization::RONB, 1 / k4Pi,         {-k3 / k4Pi, k3 / k4Pi, -k3 / k4Pi},
                                                    {k15 / k4Pi, -k15 / k4Pi, k5 / 2 / k4Pi, -k15 / k4Pi, k15 / 2 / k4Pi}},
};
// clang-format on

class HoaEncodingVectorOfSmallOrder : public testing::TestWithParam<SmallOrder> {};

TEST_P(HoaEncodingVectorOfSmallOrder, IsThePolynomialOfItsNormalization) {
    const SmallOrder& row = GetParam();
    for (const unsigned dimension : {2u, 3u}) {
        HoaEncodingVector encoding(2, dimension, row.normalization);
        Vector<double> gains;
        for (const CartesianVector& p : Directions()) {
            encoding.Compute(p, gains);
            double x = static_cast<double>(p.x);
            double y = static_cast<double>(p.y);
            double z = static_cast<double>(p.z);
            const double r = std::sqrt(x * x + y * y + z * z);
            x /= r;
            y /= r;
            z /= r;
            const auto& a = row.first;
            const auto& b = row.second;
            std::vector<double> expected{row.w,
                                         a[0] * y,
                                         a[1] * z,
                                         a[2] * x,
                                         b[0] * x * y,
                                         b[1] * y * z,
                                         b[2] * (3 * z * z - 1),
                                         b[3] * x * z,
                                         b[4] * (x * x - y * y)};
            if (dimension == 2) {
                expected = {expected[0], expected[1], expected[3], expected[4], expected[8]};
            }
            ASSERT_EQ(gains.Size(), expected.size());
            for (std::size_t c = 0; c < expected.size(); ++c) {
                EXPECT_NEAR(gains[c], expected[c], 1e-14) << "channel " << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Normalizations,
                         HoaEncodingVectorOfSmallOrder,
                         testing::ValuesIn(kSmallOrders),
                         Tests::kByName);

// Their names say so; only the first component of FuMa is smaller.
TEST(HoaEncodingVector, PeaksAtOneInFuMaAndMaxN) {
    for (const Normalization normalization : {Normalization::FuMa, Normalization::MaxN}) {
        HoaEncodingVector encoding(3, 3, normalization);
        Vector<double> gains;
        std::vector<double> peaks(16);
        for (float elevation = -90.f; elevation <= 90.f; elevation += 1.f) {
            for (float azimuth = 0.f; azimuth < 360.f; azimuth += 3.f) {
                encoding.Compute(FromNavigational(azimuth, elevation, 1.f), gains);
                for (std::size_t c = 0; c < peaks.size(); ++c) {
                    peaks[c] = std::max(peaks[c], std::abs(gains[c]));
                }
            }
        }
        for (std::size_t c = 1; c < peaks.size(); ++c) EXPECT_NEAR(peaks[c], 1.0, 1e-3) << c;
    }
}

struct Encoding {
    const char* name;
    unsigned order, dimension;
    Normalization normalization;
};

void PrintTo(const Encoding& e, std::ostream* stream) { *stream << e.name; }

constexpr Encoding kEncodings[] = {
    {"Order0", 0, 3, Normalization::SN3D},   {"Order3", 3, 3, Normalization::FuMa},
    {"Order5", 5, 3, Normalization::FuMa},   {"Order6", 6, 3, Normalization::SN3D},
    {"Order14", 14, 3, Normalization::RONB}, {"Order35", 35, 3, Normalization::N3D},
    {"Flat0", 0, 2, Normalization::N2D},     {"Flat9", 9, 2, Normalization::MaxN},
    {"Flat124", 124, 2, Normalization::SN2D}};

class HoaEncodingVectorOf : public testing::TestWithParam<Encoding> {};

TEST_P(HoaEncodingVectorOf, AgreesWithTheLegendreFunctions) {
    const Encoding& e = GetParam();
    HoaEncodingVector encoding(e.order, e.dimension, e.normalization);
    Vector<double> gains;
    std::vector<float> rounded(encoding.NumChannels());
    for (const CartesianVector& p : Directions()) {
        encoding.Compute(p, gains);
        encoding.Compute(p, std::span<float>(rounded));
        ASSERT_EQ(gains.Size(), SphericalHarmonic::NumChannels(e.order, e.dimension));
        for (std::size_t c = 0; c < gains.Size(); ++c) {
            const auto [n, m] = Channel(c, e.dimension);
            const bool isCircular = e.normalization == Normalization::SN2D;
            const double expected = isCircular ? Plain::CircularHarmonic(m, p)
                                               : Plain::Harmonic(n, m, p) *
                                                     SphericalHarmonic::ExactConversionFactor(
                                                         n, m, Normalization::N3D, e.normalization);
            // Towards the poles the reference loses digits.
            ASSERT_NEAR(gains[c], expected, 4e-12) << n << " " << m;
            ASSERT_EQ(rounded[c], static_cast<float>(gains[c]));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Orders,
                         HoaEncodingVectorOf,
                         testing::ValuesIn(kEncodings),
                         Tests::kByName);

TEST(HoaEncodingVector, TakesTheOriginAsADirection) {
    HoaEncodingVector encoding(3, 3, Normalization::N3D);
    Vector<float> origin, right, before;
    encoding.Compute({0, 0, 0}, origin);
    encoding.Compute({5, 0, 0}, right);
    EXPECT_EQ(origin, right);
    before = origin;
    encoding.Compute({std::numeric_limits<float>::quiet_NaN(), 1, 0}, origin);
    EXPECT_EQ(origin, before);
    std::array<float, 4> tooFew{7, 7, 7, 7};
    encoding.Compute({5, 0, 0}, std::span<float>(tooFew));
    EXPECT_EQ(tooFew, (std::array<float, 4>{7, 7, 7, 7}));
}

class HoaEncodingVectorInFastMode : public testing::TestWithParam<unsigned> {};

TEST_P(HoaEncodingVectorInFastMode, IsThePreciseOneOnWholeDegreesAndTheNearestBetween) {
    const unsigned dimension = GetParam();
    const Normalization other = dimension == 2 ? Normalization::N2D : Normalization::N3D;
    HoaEncodingVector precise(3, dimension, Normalization::FuMa);
    HoaEncodingVector fast(3, dimension, Normalization::FuMa, Mode::Fast);
    for (const Normalization normalization : {Normalization::FuMa, other}) {
        precise.SetNormalization(normalization);
        fast.SetNormalization(normalization);
        Vector<float> expected, gains;
        for (int elevation = -90; elevation <= 90; elevation += 3) {
            for (int azimuth = 0; azimuth <= 360; ++azimuth) {
                const auto a = static_cast<float>(azimuth);
                const auto e = static_cast<float>(elevation);
                precise.Compute(FromNavigational(a, e, 1.f), expected);
                fast.Compute(FromNavigational(a, e, 1.f), gains);
                // The poles are reached by any azimuth; what is left of it there is rounding.
                const bool isPole = std::abs(elevation) == 90;
                for (std::size_t c = 0; c < gains.Size(); ++c) {
                    ASSERT_NEAR(gains[c], expected[c], isPole ? 1e-6f : 0.f) << azimuth << e;
                }
                fast.Compute(FromNavigational(a + 0.45f, std::clamp(e - 0.4f, -90.f, 90.f), 30.f),
                             gains);
                for (std::size_t c = 0; c < gains.Size() && !isPole; ++c) {
                    ASSERT_NEAR(gains[c], expected[c], azimuth == 360 ? 2e-6f : 0.f);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Dimensions, HoaEncodingVectorInFastMode, testing::Values(2u, 3u));

}  // namespace
}  // namespace tav
