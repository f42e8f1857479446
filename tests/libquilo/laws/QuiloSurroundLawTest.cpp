// SPDX-License-Identifier: MIT
#include "laws/QuiloSurroundLaw.h"

#include "libquilo/RingsAndGains.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Quilo {
namespace {

constexpr double kTolerance = 2e-3;  // square roots of powers whose roundings are near 1e-7

using Tests::At;

std::vector<double> Gains(const SurroundLaw& law, std::size_t count, tav::CartesianVector source) {
    std::vector<float> gains(count);
    law.Gains(source, gains);
    return {gains.begin(), gains.end()};
}

struct Placement {
    const char* name;
    float azimuthDeg, elevationDeg, distance;
    std::vector<double> threePowers, fourPowers;
};

class SurroundDefaults : public testing::TestWithParam<Placement> {};

// Powers that follow from the symmetry of the layout: on a loudspeaker, between two, overhead.
TEST_P(SurroundDefaults, GiveThePowersOfTheSymmetry) {
    const Placement& p = GetParam();
    const auto source = tav::FromNavigational(p.azimuthDeg, p.elevationDeg, p.distance);
    for (const auto& powers : {p.threePowers, p.fourPowers}) {
        const std::vector<double> gains = Gains(SurroundLaw(), powers.size(), source);
        for (std::size_t o = 0; o < powers.size(); ++o) {
            EXPECT_NEAR(gains[o] * gains[o], powers[o], 1e-6) << powers.size() << ": " << o;
        }
    }
}

// clang-format off
const Placement kPlacements[] = {
    {"Left", -30, 0, 1, {1, 0, 0}, {1, 0, 0, 0}}, {"Right", 30, 0, 3, {0, 1, 0}, {0, 0, 1, 0}},
    {"Front", 0, 0, 1, {.5, .5, 0}, {0, 1, 0, 0}}, {"Behind", 180, 0, 9, {0, 0, 1}, {0, 0, 0, 1}},
    {"HalfWayToTheRear", 105, 0, 1, {0, .5, .5}, {0, 0, .5, .5}},
    {"OverTheZenith", -150, 60, .5f, {.1875, .5625, .25}, {0, .375, .375, .25}},
    {"Zenith", 20, 90, 1, {.25, .25, .5}, {0, .5, 0, .5}},
    {"Centre", 0, 0, 0, {.25, .25, .5}, {0, .5, 0, .5}},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Placements,
                         SurroundDefaults,
                         testing::ValuesIn(kPlacements),
                         Tests::kByName);

TEST(SurroundLaw, KeepsEnergyWhateverTheLayout) {
    for (const auto& layout : {At({-30, 30, 180}), At({10, 10, 10}), At({170, -170, 0}),
                               At({0, 180, 90}), At({-160, -170, 5}), At({180, 180, 180})}) {
        for (const std::size_t count : {3u, 4u}) {
            SurroundLaw law;
            law.SetSpeakers(layout, count);
            for (float azimuth = -180.f; azimuth <= 180.f; azimuth += 2.5f) {
                for (const float distance : {0.f, 0.4f, 1.f, 1e30f}) {
                    const auto source = tav::FromNavigational(azimuth, 15.f, distance);
                    ASSERT_NEAR(Tests::Energy(Gains(law, count, source)), 1.0, 1e-6)
                        << azimuth << " at " << distance;
                }
            }
        }
    }
}

TEST(SurroundLaw, TakesTheThirdLoudspeakerAsTheRightOneOfFour) {
    const auto layout = At({-60, 10, 45, 180});
    SurroundLaw three, four;
    three.SetSpeakers(layout, 3);
    four.SetSpeakers(layout, 4);
    EXPECT_NEAR(Gains(three, 3, layout[1])[1], 1.0, kTolerance);
    EXPECT_NEAR(Gains(four, 4, layout[2])[2], 1.0, kTolerance);
    EXPECT_NEAR(Gains(four, 4, layout[0])[0], 1.0, kTolerance);
    // Loudspeakers that are not given leave the others where they are.
    SurroundLaw leftOnly;
    leftOnly.SetSpeakers(At({-80}), 4);
    EXPECT_NEAR(Gains(leftOnly, 4, tav::FromNavigational(30.f, 0.f, 1.f))[2], 1.0, kTolerance);
    EXPECT_NEAR(Gains(leftOnly, 4, tav::FromNavigational(-80.f, 0.f, 1.f))[0], 1.0, kTolerance);
}

}  // namespace
}  // namespace Quilo
