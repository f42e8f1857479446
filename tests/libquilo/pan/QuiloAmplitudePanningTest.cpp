// SPDX-License-Identifier: MIT
#include "pan/QuiloAmplitudePanning.h"

#include "libquilo/pan/PanPlayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Quilo {
namespace {

using Tests::Ones;
using Tests::PanPlayer;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Output o plays coordinate o of the source; counts how often it is asked.
class CoordinatePanning : public AmplitudePanning {
public:
    explicit CoordinatePanning(unsigned numInputs = 2) : AmplitudePanning(numInputs, 3) {}
    int computed = 0;

protected:
    void ComputeGains(unsigned,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override {
        ++computed;
        gains[0] = source.x;
        gains[1] = source.y;
        gains[2] = source.z;
    }
};

using Gains = std::vector<double>;

TEST(AmplitudePanning, ComputesASourceOnlyWhenItMovesOrIsForced) {
    CoordinatePanning pan;
    pan.SetSourcePosition(0, {1, 2, 3}, false, false);
    pan.SetSourcePosition(0, {1, 2, 3}, true, false);
    EXPECT_EQ(pan.computed, 1);
    pan.SetSourcePosition(0, {1, 2, 3}, false, true);
    EXPECT_EQ(pan.computed, 2);
    pan.SetSourcesPositions({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, false);  // the third has no source
    EXPECT_EQ(pan.computed, 3);
    EXPECT_EQ(pan.SourcePosition(1), (tav::CartesianVector{4, 5, 6}));
    pan.SetSourcesPositions({{7, 8, 9}}, false);
    EXPECT_EQ(pan.SourcePosition(1), (tav::CartesianVector{4, 5, 6}));
}

TEST(AmplitudePanning, RefusesWhatItCannotUse) {
    CoordinatePanning pan;
    pan.SetSourcePosition(0, {1, 2, 3}, true, false);
    pan.SetSourceSpread(0, 40.f);
    const int computed = pan.computed;
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        pan.SetSourcePosition(0, {bad, 0, 0}, true, true);
        pan.SetSourcePosition(0, {0, 0, bad}, true, true);
        pan.SetSourceSpread(0, bad);
        pan.SetInterpolationTime(bad);
    }
    pan.SetSourcePosition(2, {1, 1, 1}, true, true);
    pan.SetSourceSpread(2, 10.f);
    pan.SetSourceMute(2, true);
    EXPECT_EQ(pan.computed, computed);
    EXPECT_EQ(pan.SourcePosition(0), (tav::CartesianVector{1, 2, 3}));
    EXPECT_EQ(pan.SourceSpread(0), 40.f);
    EXPECT_EQ(pan.GetInterpolationTime(), 30.f);
    EXPECT_EQ(pan.SourceSpread(9), 0.f);
    EXPECT_FALSE(pan.SourceMute(2));
}

TEST(AmplitudePanning, ClampsSpreadAndTimeAndSkipsEqualSpreads) {
    CoordinatePanning pan;
    pan.SetSourceSpread(0, 150.f);
    EXPECT_EQ(pan.SourceSpread(0), 100.f);
    EXPECT_EQ(pan.computed, 1);
    pan.SetSourceSpread(0, 150.f);
    EXPECT_EQ(pan.computed, 1);
    pan.SetSourceSpread(0, -1.f);
    EXPECT_EQ(pan.SourceSpread(0), 0.f);
    for (const auto& [asked, has] : {std::pair{-5.f, 0.f}, {0.f, 0.f}, {999.f, 200.f}}) {
        pan.SetInterpolationTime(asked);
        EXPECT_EQ(pan.GetInterpolationTime(), has);
    }
}

// A move glides in a straight line within two segments of 30 ms; an immediate one jumps.
TEST(AmplitudePanning, GlidesUnlessToldToJump) {
    CoordinatePanning pan;
    PanPlayer player(pan, 48000.f, 96);
    pan.SetSourcePosition(0, {1, 0, 0}, true, false);
    EXPECT_EQ(player.Play(96, Ones)[0], Gains(96, 1.0));
    pan.SetSourcePosition(0, {0, 1, 0}, false, false);
    const PanPlayer::Audio glide = player.Play(2 * 1440, Ones);
    for (std::size_t k = 1; k < glide[0].size(); ++k) {
        ASSERT_LE(std::fabs(glide[0][k] - glide[0][k - 1]), 1.0 / 1400.0) << k;
        ASSERT_NEAR(glide[0][k] + glide[1][k], 1.0, 1e-6) << k;
    }
    EXPECT_EQ(player.SteadyGains(0), (Gains{0, 1, 0}));
    pan.SetInterpolationTime(0.f);
    pan.SetSourcePosition(0, {0, 0, 1}, false, false);
    EXPECT_EQ(player.Play(96, Ones)[2], Gains(96, 1.0));
    EXPECT_EQ(player.Violations(), 0u);
}

TEST(AmplitudePanning, GlidesAMutedSourceToSilenceAndBack) {
    CoordinatePanning pan;
    PanPlayer player(pan, 48000.f, 96);
    pan.SetSourcesPositions({{1, 0, 0}, {0, 1, 0}}, true);
    player.Play(96, Ones);
    pan.SetSourceMute(0, true);
    EXPECT_TRUE(pan.SourceMute(0));
    PanPlayer::Audio audio = player.Play(2 * 1440, Ones);
    pan.SetSourcePosition(0, {0, 0, 1}, false, false);  // moves unheard
    const PanPlayer::Audio muted = player.Play(2 * 1440, Ones);
    pan.SetSourceMute(0, false);
    const PanPlayer::Audio back = player.Play(2 * 1440, Ones);
    for (std::size_t k = 1; k < back[0].size(); ++k) {
        ASSERT_LE(std::fabs(audio[0][k] - audio[0][k - 1]), 1.0 / 1400.0) << k;
        ASSERT_LE(std::fabs(back[2][k] - back[2][k - 1]), 1.0 / 1400.0) << k;
        ASSERT_EQ(muted[0][k] + muted[2][k], 0.0);
        ASSERT_EQ(audio[1][k], 1.0);  // the other source does not notice
    }
    EXPECT_EQ(player.SteadyGains(0), (Gains{0, 0, 1}));
    EXPECT_EQ(pan.SourcePosition(0), (tav::CartesianVector{0, 0, 1}));
}

}  // namespace
}  // namespace Quilo
