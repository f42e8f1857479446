// SPDX-License-Identifier: MIT
#include "laws/QuiloAngularLaw.h"

#include "libquilo/RingsAndGains.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace Quilo {
namespace {

constexpr double kPi = std::numbers::pi;

using Tests::At;

std::vector<float> Gains(const AngularLaw& law, std::size_t count, tav::CartesianVector source) {
    std::vector<float> gains(count, 9.f);
    law.Gains(source, gains);
    return gains;
}

// Between the neighbours; neither distance nor elevation enters.
TEST(AngularLaw, FollowsSineAndCosineBetweenTheNeighbours) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> azimuths(-180.f, 180.f);
    for (int n = 0; n < 3000; ++n) {
        std::vector<float> ring(2 + random() % 7);
        for (float& azimuth : ring) azimuth = azimuths(random);
        const float azimuth = n % 5 == 0 ? ring[0] : azimuths(random);
        std::size_t from = 0, to = 0;  // the nearest to the left and to the right
        double left = 360.0, right = 360.0;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const double turn = static_cast<double>(ring[i]) - static_cast<double>(azimuth);
            const double toRight = turn < 0.0 ? turn + 360.0 : turn, toLeft = 360.0 - toRight;
            if (toRight < right && toRight > 0.0) right = toRight, to = i;
            if (toLeft < left || turn == 0.0) left = turn == 0.0 ? 0.0 : toLeft, from = i;
        }
        AngularLaw law;
        law.SetSpeakers(At(ring), ring.size());
        const double quarter = left / (left + right) * kPi / 2.0;
        const auto gains = Gains(
            law, ring.size(),
            tav::FromNavigational(azimuth, azimuths(random) / 3.f, n % 3 == 0 ? 0.01f : 40.f));
        for (std::size_t o = 0; o < ring.size(); ++o) {
            const double expected = o == from ? std::cos(quarter)
                                    : o == to ? std::sin(quarter)
                                              : 0.0;
            // Roundings of azimuths, 5e-5 degrees, over the arc.
            ASSERT_NEAR(static_cast<double>(gains[o]), expected, 2e-6 + 2e-4 / (left + right)) << n;
        }
    }
}

TEST(AngularLaw, HandlesLayoutsWithoutAnArc) {
    AngularLaw law;
    const tav::CartesianVector source{1.f, 1.f, 0.f};
    EXPECT_EQ(Gains(law, 0, source), std::vector<float>{});
    EXPECT_EQ(Gains(law, 1, source), std::vector<float>{1.f});
    EXPECT_EQ(Gains(law, 3, source), (std::vector<float>{0.f, 0.f, 0.f}));
    // Surplus loudspeakers do not reach beyond the outputs.
    law.SetSpeakers(At({-30.f, 30.f, 0.f, 90.f}), 2);
    EXPECT_NEAR(static_cast<double>(Gains(law, 2, {0.f, 1.f, 0.f})[0]), std::sqrt(0.5), 1e-6);
    // One azimuth, several loudspeakers: the last of them plays, a whole turn from itself.
    law.SetSpeakers(At({20.f, 20.f, 20.f}), 3);
    const std::vector<float> opposite = Gains(law, 3, tav::FromNavigational(-160.f, 0.f, 1.f));
    EXPECT_EQ(opposite[0], 0.f);
    EXPECT_EQ(opposite[1], 0.f);
    EXPECT_NEAR(static_cast<double>(opposite[2]), std::sqrt(0.5), 1e-6);
}

}  // namespace
}  // namespace Quilo
