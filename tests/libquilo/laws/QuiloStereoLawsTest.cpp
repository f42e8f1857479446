// SPDX-License-Identifier: MIT
#include "laws/QuiloStereoLaws.h"

#include "math/VelkDspSpherical.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace Quilo {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTolerance = 1e-6;  // a few roundings of values up to 1

struct Placement {
    const char* name;
    double azimuthDeg, elevationDeg, distance;

    tav::CartesianVector Position() const {
        return tav::FromNavigational(static_cast<float>(azimuthDeg),
                                     static_cast<float>(elevationDeg),
                                     static_cast<float>(distance));
    }
    double Azimuth() const { return azimuthDeg * kPi / 180.0; }
    /// Distance in the horizontal plane, at most 1.
    double Width() const { return std::min(distance * std::cos(elevationDeg * kPi / 180.0), 1.0); }
};

class StereoLaws : public testing::TestWithParam<Placement> {};

// A cardioid that points to an angle hears (1 + cos(difference)) / 2, widened by the distance.
TEST_P(StereoLaws, ArePairsOfCardioidsWhoseFarSideIsLate) {
    const Placement& p = GetParam();
    const double toLeft = 1.0 + std::cos(p.Azimuth() + kPi / 4.0) * p.Width();
    const double toRight = 1.0 + std::cos(p.Azimuth() - kPi / 4.0) * p.Width();
    std::array<float, 2> gains{};
    XyGains(p.Position(), gains);
    EXPECT_NEAR(static_cast<double>(gains[0]), toLeft * 0.41421, kTolerance);
    EXPECT_NEAR(static_cast<double>(gains[1]), toRight * 0.41421, kTolerance);
    const SpacedPair ab = AbPair(p.Position());
    EXPECT_NEAR(static_cast<double>(ab.leftGain), toLeft * 0.44936, kTolerance);
    EXPECT_NEAR(static_cast<double>(ab.rightGain), toRight * 0.44936, kTolerance);
    const double difference = std::sin(p.Azimuth()) * p.Width() * 0.5;
    EXPECT_NEAR(static_cast<double>(ab.leftDelayMs - ab.rightDelayMs), difference, kTolerance);
    EXPECT_NEAR(static_cast<double>(ab.leftDelayMs + ab.rightDelayMs), 2.0, kTolerance);
}

TEST_P(StereoLaws, GiveMidAndSide) {
    const Placement& p = GetParam();
    std::array<float, 2> gains{};
    MsGains(p.Position(), gains);
    const double mid = (1.0 + std::cos(p.Azimuth()) * p.Width()) * 0.5;
    EXPECT_NEAR(static_cast<double>(gains[0]), mid, kTolerance);
    EXPECT_NEAR(static_cast<double>(gains[1]), std::sin(p.Azimuth()) * p.Width() * -0.5,
                kTolerance);
}

// clang-format off
constexpr Placement kPlacements[] = {
    {"Front", 0, 0, 2}, {"Left", -90, 0, 1}, {"HalfRight", 45, 0, 5}, {"Behind", 180, 0, 1},
    {"Near", 30, 0, 0.25}, {"HighUp", 60, 70, 1.5}, {"FarAndHigh", -120, 40, 1e20},
    {"Below", -20, -89, 1}, {"AtTheListener", 0, 0, 0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Placements, StereoLaws, testing::ValuesIn(kPlacements), Tests::kByName);

}  // namespace
}  // namespace Quilo
