// SPDX-License-Identifier: MIT
#include "pan/QuiloStereoABPanning.h"

#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace Quilo {
namespace {

using Tests::LargestStep;
using Tests::Ones;
using Tests::PanPlayer;
using Tests::Silence;

constexpr double kPi = std::numbers::pi;
constexpr float kRate = 48000.f;

TEST(StereoABPanning, DelaysAndWeighsASineByItsDirection) {
    for (const double azimuthDeg : {0.0, 90.0, -90.0, 30.0, 180.0}) {
        StereoABPanning pan(1, 2);
        PanPlayer player(pan, kRate);
        pan.SetSourcePosition(0, tav::FromNavigational(static_cast<float>(azimuthDeg), 0.f, 2.f),
                              false, true);
        const PanPlayer::Audio audio = player.Play(4800, Tests::Sine(500.0));
        const double a = azimuthDeg * kPi / 180.0;
        const double gains[] = {0.44936 * (1.0 + std::sin(kPi / 4.0 - a)),
                                0.44936 * (1.0 + std::sin(kPi / 4.0 + a))};
        const double delaysMs[] = {1.0 + 0.25 * std::sin(a), 1.0 - 0.25 * std::sin(a)};
        for (std::size_t side = 0; side < 2; ++side) {
            for (std::size_t k = 200; k < 4800; ++k) {
                const double t = static_cast<double>(k) / static_cast<double>(kRate);
                const double expected =
                    gains[side] * std::sin(2.0 * kPi * 500.0 * (t - delaysMs[side] * 0.001));
                ASSERT_NEAR(audio[side][k], expected, 2e-5) << azimuthDeg << ", frame " << k;
            }
        }
    }
}

// A 100 Hz tone of gain 0.9 moves by 0.012 a sample; a click would be far above. It begins at its
// peak, where a line that was empty would show.
TEST(StereoABPanning, GlidesWhenMovedAndMuted) {
    StereoABPanning pan(1, 2);
    PanPlayer player(pan, kRate);
    const auto tone = Tests::Cosine(100.0);
    pan.SetSourcePosition(0, {-1, 1, 0}, false, true);
    player.Play(4800, tone);
    pan.SetSourcePosition(0, {1, 1, 0}, true, false);
    for (const auto& side : player.Play(4800, tone)) EXPECT_LT(LargestStep(side), 0.015);
    pan.SetSourceMute(0, true);
    for (const auto& side : player.Play(4800, tone)) {
        EXPECT_LT(LargestStep(side), 0.015);
        EXPECT_EQ(side.back(), 0.0);
    }
    pan.SetSourcePosition(0, {0, 1, 0}, false, false);
    EXPECT_EQ(player.SteadyGains(0), (std::vector<double>{0.0, 0.0}));
    pan.SetSourceMute(0, false);
    for (const auto& side : player.Play(4800, tone)) EXPECT_LT(LargestStep(side), 0.015);
    const std::vector<double> gains = player.SteadyGains(0);
    EXPECT_NEAR(gains[0], gains[1], 1e-6);
    EXPECT_NEAR(gains[0], 0.44936 * (1.0 + std::sqrt(0.5)), 1e-6);
}

// Deliberate: the forced flag is the one that jumps.
TEST(StereoABPanning, JumpsWhenForced) {
    StereoABPanning pan(1, 2);
    PanPlayer player(pan, kRate);
    pan.SetSourcePosition(0, {0, 0, 0}, false, true);
    player.SteadyGains(0);
    pan.SetSourcePosition(0, {1, 1, 0}, true, false);
    EXPECT_LT(player.Play(64, Ones)[1].back(), 0.5);
    pan.SetSourcePosition(0, {1, 1, 0}, false, true);
    EXPECT_NEAR(player.Play(64, Ones)[1].back(), 2 * 0.44936, 1e-6);
}

}  // namespace
}  // namespace Quilo
