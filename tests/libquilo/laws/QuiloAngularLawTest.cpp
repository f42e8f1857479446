// SPDX-License-Identifier: MIT
#include "laws/QuiloAngularLaw.h"

#include "math/VelkDspSpherical.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace Quilo {
namespace {

constexpr double kPi = std::numbers::pi;

tav::CartesianArray At(std::initializer_list<float> azimuthsDeg, float distance = 1.f) {
    tav::CartesianArray layout;
    for (const float azimuth : azimuthsDeg) {
        layout.Resize(layout.Size() + 1);
        layout[layout.Size() - 1] = tav::FromNavigational(azimuth, 0.f, distance);
    }
    return layout;
}

std::vector<float> Gains(const AngularLaw& law, std::size_t count, tav::CartesianVector source) {
    std::vector<float> gains(count, 9.f);
    law.Gains(source, gains);
    return gains;
}

struct Placement {
    const char* name;
    float azimuthDeg;
    std::size_t from, to;  // outputs
    double share;          // of the way between them
};

class AngularOnIrregularRing : public testing::TestWithParam<Placement> {};

TEST_P(AngularOnIrregularRing, FollowsSineAndCosineBetweenTheNeighbours) {
    AngularLaw law;
    law.SetSpeakers(At({30.f, -30.f, 110.f, -110.f}), 4);
    const Placement& p = GetParam();
    // Neither distance nor elevation enters.
    for (const auto& [elevation, distance] : {std::pair{0.f, 1.f}, {0.f, 0.01f}, {60.f, 40.f}}) {
        const auto source = tav::FromNavigational(p.azimuthDeg, elevation, distance);
        const std::vector<float> gains = Gains(law, 4, source);
        for (std::size_t o = 0; o < 4; ++o) {
            const double expected = o == p.from ? std::cos(p.share * kPi / 2.0)
                                    : o == p.to ? std::sin(p.share * kPi / 2.0)
                                                : 0.0;
            EXPECT_NEAR(static_cast<double>(gains[o]), expected, 2e-6) << "output " << o;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Placements,
                         AngularOnIrregularRing,
                         testing::Values(Placement{"Front", 0, 1, 0, 0.5},
                                         Placement{"HalfLeft", -15, 1, 0, 0.25},
                                         Placement{"Right", 70, 0, 2, 0.5},
                                         Placement{"Left", -90, 1, 3, 0.75},
                                         Placement{"BehindAcrossTheWrap", 180, 2, 3, 0.5},
                                         Placement{"BehindLeft", -138, 3, 2, 0.2},
                                         Placement{"BehindRight", 138, 2, 3, 0.2}),
                         [](const auto& test) { return test.param.name; });

TEST(AngularLaw, KeepsEnergyAllTheWayRound) {
    AngularLaw law;
    law.SetSpeakers(At({-140.f, -20.f, 25.f, 100.f, 179.f}), 5);
    for (float azimuth = -180.f; azimuth < 180.f; azimuth += 0.1f) {
        double energy = 0.0;
        for (const float g : Gains(law, 5, tav::FromNavigational(azimuth, 0.f, 1.f))) {
            energy += static_cast<double>(g) * static_cast<double>(g);
        }
        ASSERT_NEAR(energy, 1.0, 1e-6) << azimuth;  // sine and cosine, each rounded to a float
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
