// SPDX-License-Identifier: MIT
#include "laws/QuiloDefaultLayouts.h"

#include "math/VelkDspSpherical.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Quilo {
namespace {

double Length(const tav::CartesianVector& p) {
    return std::hypot(static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z));
}

double SmallestDistance(const tav::CartesianArray& layout) {
    double smallest = 4.0;
    for (std::size_t i = 0; i < layout.Size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            smallest =
                std::min(smallest, Length({layout[i].x - layout[k].x, layout[i].y - layout[k].y,
                                           layout[i].z - layout[k].z}));
        }
    }
    return smallest;
}

struct Expected {
    const char* name;
    LayoutKind kind;
    std::vector<float> azimuthsDeg;
};

class FlatDefaults : public testing::TestWithParam<Expected> {};

TEST_P(FlatDefaults, StandAtTheirAzimuths) {
    const std::vector<float>& azimuths = GetParam().azimuthsDeg;
    const auto layout = DefaultSpeakers(GetParam().kind, static_cast<unsigned>(azimuths.size()));
    ASSERT_EQ(layout.Size(), azimuths.size());
    for (std::size_t k = 0; k < azimuths.size(); ++k) {
        const tav::CartesianVector want = tav::FromNavigational(azimuths[k], 0.f, 1.f);
        EXPECT_NEAR(static_cast<double>(layout[k].x), static_cast<double>(want.x), 3e-7) << k;
        EXPECT_NEAR(static_cast<double>(layout[k].y), static_cast<double>(want.y), 3e-7) << k;
        EXPECT_EQ(layout[k].z, 0.f) << k;
    }
}

using Azimuths = std::vector<float>;
// clang-format off
const Expected kLayouts[] = {
    {"None", LayoutKind::Horizontal, {}}, {"Mono", LayoutKind::Periphonic, {0}},
    {"Stereo", LayoutKind::Horizontal, {-30, 30}},
    {"Three", LayoutKind::Horizontal, {-60, 60, 180}},
    {"Quad", LayoutKind::Horizontal, {-45, 45, 135, -135}},
    {"Five", LayoutKind::Horizontal, {-36, 36, 108, 180, -108}},
    {"SurroundThree", LayoutKind::Surround, {-30, 30, 180}},
    {"SurroundFour", LayoutKind::Surround, {-30, 0, 30, 180}},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Layouts, FlatDefaults, testing::ValuesIn(kLayouts), Tests::kByName);

// No two loudspeakers closer than the even packing allows, the sum of all near the listener.
TEST(PeriphonicDefaults, SpreadEvenlyOverTheSphere) {
    const std::vector<std::pair<unsigned, double>> closest{
        {4, std::sqrt(8.0 / 3.0)}, {6, std::sqrt(2.0)}, {8, 2.0 / std::sqrt(3.0)}};
    for (const auto& [count, distance] : closest) {
        const auto layout = DefaultSpeakers(LayoutKind::Periphonic, count);
        EXPECT_NEAR(SmallestDistance(layout), distance, 1e-6) << count;
    }
    for (const unsigned count : {5u, 7u, 12u, 24u, 64u, 250u}) {
        const auto layout = DefaultSpeakers(LayoutKind::Periphonic, count);
        EXPECT_GT(SmallestDistance(layout), 3.0 / std::sqrt(count)) << count;
        tav::CartesianVector sum;
        for (const auto& p : layout) {
            EXPECT_NEAR(Length(p), 1.0, 1e-6);
            sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
        }
        EXPECT_LT(Length(sum), 0.15 * count) << count;
    }
    const auto three = DefaultSpeakers(LayoutKind::Periphonic, 3);
    EXPECT_NEAR(static_cast<double>(tav::NavigationalAzimuthDeg(three[0])), -60.0, 1e-4);
    EXPECT_NEAR(static_cast<double>(tav::ElevationDeg(three[1])), -30.0, 1e-4);
    EXPECT_NEAR(static_cast<double>(tav::ElevationDeg(three[2])), 60.0, 1e-4);
}

TEST(DefaultSources, StandInFrontWithinSixtyDegrees) {
    EXPECT_EQ(DefaultSources(1)[0], (tav::CartesianVector{0.f, 1.f, 0.f}));
    EXPECT_TRUE(DefaultSources(0).Empty());
    const auto five = DefaultSources(5);
    for (unsigned i = 0; i < 5; ++i) {
        EXPECT_NEAR(static_cast<double>(tav::NavigationalAzimuthDeg(five[i])), -30.0 + 15.0 * i,
                    1e-4);
    }
}

}  // namespace
}  // namespace Quilo
