// SPDX-License-Identifier: MIT
#include "math/VelkDspCoordinates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace tav {
namespace {

using Format = Coordinates::Format;
using Values = std::vector<float>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The model turns vectors in double precision: an elevation beyond the pole and a negative distance
// need no rule of their own there.
struct Point {
    double x = 0, y = 0, z = 0;
    double Horizontal() const { return std::hypot(x, y); }
    double Distance() const { return std::hypot(x, y, z); }
    double Azimuth() const { return std::atan2(x, y) / kDegree; }
    double Elevation() const { return std::atan2(z, Horizontal()) / kDegree; }

    static constexpr double kDegree = std::numbers::pi / 180.0;
};

Point At(double azimuth, double elevation, double distance) {
    const double a = azimuth * Point::kDegree;
    const double e = elevation * Point::kDegree;
    return {distance * std::sin(a) * std::cos(e), distance * std::cos(a) * std::cos(e),
            distance * std::sin(e)};
}

Point Turned(const Point& p, double azimuth) {
    const Point flat = At(azimuth, 0, p.Horizontal());
    return {flat.x, flat.y, p.z};
}

Point Scaled(const Point& p, double distance) {
    const double factor = std::max(distance, 1e-5) / p.Distance();
    return {p.x * factor, p.y * factor, p.z * factor};
}

using Model = Point (*)(const Point& p, const double* v);

struct FormatCase {
    const char* keyword;
    const char* values;  // one letter each: a an angle, l a length
    Model model;
};

Point Moved(const Point& p, double x, double y, double z) { return {p.x + x, p.y + y, p.z + z}; }

// clang-format off
// Entry k is the format of value k.
const FormatCase kFormats[] = {
    {"xyz",    "lll", [](const Point&, const double* v) { return Point{v[0], v[1], v[2]}; }},
    {"xy",     "ll",  [](const Point&, const double* v) { return Point{v[0], v[1], 0}; }},
    {"x++",    "l",   [](const Point& p, const double* v) { return Moved(p, v[0], 0, 0); }},
    {"y++",    "l",   [](const Point& p, const double* v) { return Moved(p, 0, v[0], 0); }},
    {"z++",    "l",   [](const Point& p, const double* v) { return Moved(p, 0, 0, v[0]); }},
    {"ade",    "ala", [](const Point&, const double* v) { return At(v[0], v[2], v[1]); }},
    {"aed",    "aal", [](const Point&, const double* v) { return At(v[0], v[1], v[2]); }},
    {"ae",     "aa",  [](const Point&, const double* v) { return At(v[0], v[1], 1); }},
    {"ad",     "al",  [](const Point&, const double* v) { return At(v[0], 0, v[1]); }},
    {"az",     "a",   [](const Point&, const double* v) { return At(v[0], 0, 1); }},
    {"azim",   "a",   [](const Point& p, const double* v) { return Turned(p, v[0]); }},
    {"azim++", "a",   [](const Point& p, const double* v) { return Turned(p, p.Azimuth() + v[0]); }},
    {"elev",   "a",   [](const Point& p, const double* v) { return At(p.Azimuth(), v[0], p.Distance()); }},
    {"elev++", "a",   [](const Point& p, const double* v) { return At(p.Azimuth(), p.Elevation() + v[0], p.Distance()); }},
    {"dist",   "l",   [](const Point& p, const double* v) { return Scaled(p, std::abs(v[0])); }},
    {"dist++", "l",   [](const Point& p, const double* v) { return Scaled(p, p.Distance() + v[0]); }},
    {"dist*=", "l",   [](const Point& p, const double* v) { return Scaled(p, p.Distance() * v[0]); }},
    {"quilo3", "ala", [](const Point&, const double* v) { return At(-v[0], v[2], v[1]); }},
    {"wfs",    "al",  [](const Point&, const double* v) { return At(-v[0], 0, v[1]); }},
    {"x",      "l",   [](const Point& p, const double* v) { return Point{v[0], p.y, p.z}; }},
    {"y",      "l",   [](const Point& p, const double* v) { return Point{p.x, v[0], p.z}; }},
    {"z",      "l",   [](const Point& p, const double* v) { return Point{p.x, p.y, v[0]}; }},
};
// clang-format on

class CoordinatesFormat : public testing::TestWithParam<int> {
protected:
    const FormatCase& case_ = kFormats[GetParam()];
    Format format_ = static_cast<Format>(GetParam());
};

TEST_P(CoordinatesFormat, FollowsTheModel) {
    EXPECT_EQ(Coordinates::FormatText(format_), case_.keyword);
    EXPECT_EQ(Coordinates::ParseFormat(case_.keyword), format_);
    EXPECT_EQ(Coordinates::NumValues(format_), std::string(case_.values).size());
    std::mt19937 random(1);
    std::uniform_real_distribution<float> length(-10.f, 10.f);
    std::uniform_real_distribution<float> angle(-1000.f, 1000.f);
    for (int round = 0; round < 5000; ++round) {
        CartesianVector p{length(random), length(random), length(random)};
        const Point before{p.x, p.y, p.z};
        if (before.Horizontal() < 0.3 * before.Distance()) continue;  // asin is coarse up there
        Values values;
        for (const char kind : std::string(case_.values)) {
            values.push_back(kind == 'a' ? angle(random) : length(random));
        }
        const std::vector<double> exact(values.begin(), values.end());
        const Point expected = case_.model(before, exact.data());
        ASSERT_TRUE(Coordinates::Apply(p, format_, values));
        const double tolerance = 4e-6 * (before.Distance() + expected.Distance() + 1.0);
        ASSERT_NEAR(p.x, expected.x, tolerance);
        ASSERT_NEAR(p.y, expected.y, tolerance);
        ASSERT_NEAR(p.z, expected.z, tolerance);
    }
}

TEST_P(CoordinatesFormat, ChangesNothingOnMissingOrUnreadableValues) {
    const CartesianVector before{1.f, -2.f, 3.f};
    const std::size_t needed = std::string(case_.values).size();
    CartesianVector p = before;
    EXPECT_FALSE(Coordinates::Apply(p, format_, Values(needed - 1, 4.f)));
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        for (std::size_t at = 0; at < needed; ++at) {
            Values values(needed, 4.f);
            values[at] = bad;
            EXPECT_FALSE(Coordinates::Apply(p, format_, values)) << at;
        }
    }
    EXPECT_EQ(p, before);
    Values surplus(needed, 4.f);
    CartesianVector alone = before;
    ASSERT_TRUE(Coordinates::Apply(alone, format_, surplus));
    surplus.push_back(kNaN);
    ASSERT_TRUE(Coordinates::Apply(p, format_, surplus));
    EXPECT_EQ(p, alone);
}

INSTANTIATE_TEST_SUITE_P(All, CoordinatesFormat, testing::Range(0, 22));

struct Reading {
    Format first;
    Values firstValues;
    Format then;
    Values thenValues;
    float azimuth, elevation, distance;
};

TEST(Coordinates, AnglesAndDistancesReadBack) {
    const Reading readings[] = {
        {Format::Ade, {180, 1, 0}, Format::AddX, {0}, -180.f, 0.f, 1.f},
        {Format::Ade, {-180, 1, 0}, Format::AddX, {0}, -180.f, 0.f, 1.f},
        {Format::Aed, {0, 0, 1}, Format::Aed, {30, 120, 2}, -150.f, 60.f, 2.f},
        {Format::Ade, {0, 3, 0}, Format::Elev, {100}, -180.f, 80.f, 3.f},
        {Format::Ade, {0, 3, 0}, Format::Elev, {-100}, -180.f, -80.f, 3.f},
        {Format::Ade, {40, 3, 80}, Format::AddElev, {30}, -140.f, 70.f, 3.f},
        {Format::Ade, {170, 2, 10}, Format::AddAzim, {60}, -130.f, 10.f, 2.f},
        {Format::Ade, {30, 2, 20}, Format::Dist, {0}, 30.f, 20.f, 1e-5f},
        {Format::Ade, {30, 2, 20}, Format::MulDist, {-2}, 30.f, 20.f, 1e-5f},
        {Format::Ade, {30, 2, 20}, Format::AddDist, {-3}, 30.f, 20.f, 1e-5f},
        {Format::Xyz, {0, 0, 0}, Format::AddX, {0}, 90.f, 0.f, 0.f},
        {Format::Xyz, {0, 0, 2}, Format::AddX, {0}, 90.f, 90.f, 2.f},
    };
    for (const Reading& reading : readings) {
        CartesianVector p;
        ASSERT_TRUE(Coordinates::Apply(p, reading.first, reading.firstValues));
        ASSERT_TRUE(Coordinates::Apply(p, reading.then, reading.thenValues));
        const float turn = NavigationalAzimuthDeg(p) - reading.azimuth;
        EXPECT_NEAR(std::remainder(turn, 360.f), 0.f, 1e-4f) << reading.azimuth;
        EXPECT_NEAR(ElevationDeg(p), reading.elevation, 1e-4f) << reading.azimuth;
        EXPECT_NEAR(Distance(p), reading.distance, reading.distance * 1e-6f) << reading.azimuth;
        EXPECT_GE(NavigationalAzimuthDeg(p), -180.f);
        EXPECT_LT(NavigationalAzimuthDeg(p), 180.f);
    }
    EXPECT_EQ(NavigationalAzimuthDeg({0.f, -1.f, 0.f}), -180.f);
    CartesianVector origin;
    ASSERT_TRUE(Coordinates::Apply(origin, Format::AddElev, Values{90.f}));
    EXPECT_LE(Distance(origin), 1e-6f);
}

TEST(Coordinates, AResultThatIsNotFiniteIsRefused) {
    struct Step {
        CartesianVector from;
        Format format;
        float value;
    };
    for (const Step& step : {Step{{3e38f, 1.f, 0.f}, Format::AddX, 3e38f},
                             Step{{0.f, 1e15f, 0.f}, Format::MulDist, 1e30f},
                             Step{{1e30f, 0.f, 0.f}, Format::Azim, 45.f}}) {
        CartesianVector p = step.from;
        EXPECT_FALSE(Coordinates::Apply(p, step.format, Values{step.value}));
        EXPECT_EQ(p, step.from);
    }
}

TEST(Wrap360, StaysInRangeAndIsExactOnWholeDegrees) {
    for (int degrees = -1'000'400; degrees <= 1'000'400; degrees += 37) {
        const int expected = ((degrees % 360) + 360) % 360;
        ASSERT_EQ(Wrap360(static_cast<float>(degrees)), static_cast<float>(expected)) << degrees;
    }
    // Just below 0 is 360 after rounding, and so 0.
    EXPECT_EQ(Wrap360(-1e-9f), 0.f);
    EXPECT_EQ(Wrap360(-1e-20), 0.0);
    for (const float huge : {1e30f, -1e30f, std::numeric_limits<float>::lowest()}) {
        EXPECT_GE(Wrap360(huge), 0.f);
        EXPECT_LT(Wrap360(huge), 360.f);
    }
}

}  // namespace
}  // namespace tav
