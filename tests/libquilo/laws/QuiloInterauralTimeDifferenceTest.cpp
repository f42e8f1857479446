// SPDX-License-Identifier: MIT
#include "laws/QuiloInterauralTimeDifference.h"

#include "math/VelkDspSpherical.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace Quilo {
namespace {

using Itd = InterauralTimeDifference;

constexpr double kPi = std::numbers::pi;
constexpr double kA = 0.0875;  // head radius

/// Straight distance from a source at the right to the left ear minus that to the right one.
double Straight(double azimuthDeg, double distance) {
    const double az = azimuthDeg * kPi / 180.0;
    const double x = distance * std::sin(az), y = distance * std::cos(az);
    return std::hypot(x + kA, y) - std::hypot(x - kA, y);
}

struct Row {
    const char* name;
    Itd::Type type;
    float azimuthDeg, elevationDeg, distance;
    double metres;  // by which the path to the left ear is longer
};

// clang-format off
const Row kRows[] = {
    // name                type                     az     el    dist   left path - right path
    {"BasicAhead",         Itd::Type::Basic,        0.f,   0.f,  2.f,   0.0},
    {"BasicAside",         Itd::Type::Basic,        90.f,  0.f,  2.f,   2.0 * kA},
    {"BasicNear",          Itd::Type::Basic,        40.f,  0.f,  0.2f,  Straight(40.0, 0.2)},
    {"BasicFar",           Itd::Type::Basic,        -70.f, 0.f,  1e3f,  Straight(-70.0, 1e3)},
    {"BasicInside",        Itd::Type::Basic,        40.f,  0.f,  0.01f, Straight(40.0, kA)},
    {"WoodworthAside",     Itd::Type::Woodworth,    90.f,  0.f,  1.f,   kA * (kPi / 2.0 + 1.0)},
    {"WoodworthFront",     Itd::Type::Woodworth,    30.f,  0.f,  1.f,   kA * (kPi / 6.0 + 0.5)},
    {"WoodworthBack",      Itd::Type::Woodworth,    150.f, 0.f,  1.f,   kA * (kPi / 6.0 + 0.5)},
    {"WoodworthBackLeft",  Itd::Type::Woodworth,    -150.f, 0.f, 1.f,   -kA * (kPi / 6.0 + 0.5)},
    {"LarcherJotFront",    Itd::Type::LarcherJot,   30.f,  0.f,  1.f,   kA * (kPi / 6.0 + 0.5)},
    {"LarcherJotUp",       Itd::Type::LarcherJot,   90.f,  60.f, 1.f,   kA * (kPi / 6.0 + 0.5)},
    {"SaviojaUp",          Itd::Type::Savioja,      90.f,  60.f, 1.f,   kA * (kPi / 2.0 + 1.0) * 0.5},
    {"SaviojaBack",        Itd::Type::Savioja,      -150.f, 0.f, 1.f,   -kA * (kPi / 6.0 + 0.5)},
    {"SaviojaAbove",       Itd::Type::Savioja,      35.f,  90.f, 1.f,   0.0},
    // Round the sphere: the tangent, then the arc. The nearer ear is seen.
    {"MillerAside",        Itd::Type::Miller,       90.f,  0.f,  0.5f,  std::sqrt(0.25 - kA * kA) + kA * (kPi - std::acos(kA / 0.5)) - (0.5 - kA)},
    {"MillerAhead",        Itd::Type::Miller,       0.f,   30.f, 0.5f,  0.0},
    {"MillerFar",          Itd::Type::Miller,       90.f,  60.f, 1e4f,  kA * (kPi / 6.0 + 0.5)},
    {"MillerOnSurface",    Itd::Type::Miller,       -90.f, 0.f,  0.f,   -kA * kPi},
    {"NoneAside",          Itd::Type::None,         90.f,  0.f,  1.f,   0.0},
};
// clang-format on

class ItdModel : public testing::TestWithParam<Row> {};

TEST_P(ItdModel, FollowsItsGeometryInBothLatencyModesAndMirrored) {
    const Row& row = GetParam();
    const double ms = row.metres * 1000.0 / 343.2;
    for (const float side : {1.f, -1.f}) {
        const auto position = tav::FromNavigational(side * row.azimuthDeg, row.elevationDeg,
                                                    std::max(row.distance, 1e-3f));
        const double later = static_cast<double>(side) * ms;
        for (const auto mode : {Itd::LatencyMode::FixedLatency, Itd::LatencyMode::NoLatency}) {
            const EarDelays delays =
                Itd{row.type, mode, static_cast<float>(kA)}.Delays(position, 99.f);
            const bool fixed = mode == Itd::LatencyMode::FixedLatency;
            const double common = fixed ? 1.0 : std::fabs(later) / 2.0;
            EXPECT_NEAR(static_cast<double>(delays.left), common + later / 2.0, 2e-6);
            EXPECT_NEAR(static_cast<double>(delays.right), common - later / 2.0, 2e-6);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ItdModel, testing::ValuesIn(kRows), [](const auto& test) {
    return test.param.name;
});

TEST(ItdModel, MeasurementTakesWhatWasMeasured) {
    const tav::CartesianVector ahead{0, 1, 0};
    Itd itd;
    EXPECT_EQ(itd.Delays(ahead, 0.5f), (EarDelays{1.25f, 0.75f}));
    EXPECT_EQ(itd.Delays(ahead, 3.f), (EarDelays{3.f, 0.f}));  // the earlier ear never leads more
    EXPECT_EQ(itd.Delays(ahead, std::nullopt), EarDelays{});
    itd.type = static_cast<Itd::Type>(77);
    EXPECT_EQ(itd.Delays(ahead, 0.5f), (EarDelays{1.25f, 0.75f}));
    itd.latencyMode = static_cast<Itd::LatencyMode>(2);
    EXPECT_EQ(itd.Delays(ahead, 0.5f), EarDelays{});
}

}  // namespace
}  // namespace Quilo
