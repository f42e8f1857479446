// SPDX-License-Identifier: MIT
#include "laws/QuiloBformatLaw.h"

#include "libquilo/RingsAndGains.h"

#include <gtest/gtest.h>

#include <array>

namespace Quilo {
namespace {

constexpr double kTolerance = 1e-6;

// Over a grid of directions: the energy of W, X, Y is 1; X, Y, Z are a vector of length sqrt(2)
// that points at the source; the distance does not matter.
TEST(BformatGains, PointAtTheSourceWithConstantEnergy) {
    for (float azimuth = -180.f; azimuth < 180.f; azimuth += 7.5f) {
        for (float elevation = -90.f; elevation <= 90.f; elevation += 7.5f) {
            const tav::CartesianVector p = tav::FromNavigational(azimuth, elevation, 1.f);
            std::array<float, 3> three{};
            BformatGains({p.x * 3.f, p.y * 3.f, p.z * 3.f}, three);
            EXPECT_NEAR(Tests::Energy(three), 1.0, kTolerance);  // all of W at the zenith
            EXPECT_NEAR(static_cast<double>(three[1]) * 1.224744871391589, static_cast<double>(p.x),
                        kTolerance);
            std::array<float, 4> four{};  // so far away that the squares overflow
            BformatGains({p.x * 3e19f, p.y * 3e19f, p.z * 3e19f}, four);
            EXPECT_NEAR(static_cast<double>(four[0]), 0.5773502691896257, kTolerance);
            const std::array<float, 3> direction{p.x, p.y, p.z};
            for (std::size_t c = 0; c < 3; ++c) {
                EXPECT_NEAR(static_cast<double>(four[c + 1]) / 1.4142135623730951,
                            static_cast<double>(direction[c]), kTolerance);
            }
        }
    }
}

// x to the front, y to the left: W, Y, Z, X of a source are 1 and its direction.
TEST(BformatToAmbix, GivesTheDirectionInTheStandardFrame) {
    const tav::CartesianVector p = tav::FromNavigational(50.f, 20.f, 1.f);
    std::array<float, 4> gains{};
    BformatGains(p, gains);
    const std::array<float, 4> expected{1.f, -p.x, p.z, p.y};
    const auto channels = BformatToAmbix();
    for (std::size_t c = 0; c < 4; ++c) {
        const double gain =
            channels.at(c).gain * static_cast<double>(gains.at(*channels[c].source));
        EXPECT_NEAR(gain, static_cast<double>(expected[c]), kTolerance) << c;
    }
}

}  // namespace
}  // namespace Quilo
