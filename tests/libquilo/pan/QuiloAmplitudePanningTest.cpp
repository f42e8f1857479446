// SPDX-License-Identifier: MIT
#include "pan/QuiloAmplitudePanning.h"

#include "libquilo/pan/PanPlayer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quilo {
namespace {

using Tests::Ones;
using Tests::PanPlayer;

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
}

}  // namespace
}  // namespace Quilo
