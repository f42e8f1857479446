// SPDX-License-Identifier: MIT
#include "pan/QuiloSubwoofersPanning.h"

#include "libquilo/pan/PanPlayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Quilo {
namespace {

using Tests::PanPlayer;
using Tests::Sine;

double Peak(const std::vector<double>& signal, std::size_t from) {
    double peak = 0.0;
    for (std::size_t k = from; k < signal.size(); ++k) peak = std::max(peak, std::abs(signal[k]));
    return peak;
}

TEST(SubwoofersPanning, LeavesTheBassAndGlidesToAnotherCutoff) {
    SubwoofersPanning pan(1, 1);
    pan.SetSpeakersPositions({{0, 1, 0}});
    pan.SetSourcePosition(0, {0, 1, 0}, true, true);
    PanPlayer player(pan);
    const auto levelDb = [&](double hz) {
        return 20.0 * std::log10(Peak(player.Play(48000, Sine(hz))[0], 24000));
    };
    EXPECT_NEAR(levelDb(125.0), -3.098, 0.01);
    EXPECT_NEAR(levelDb(10.0), 0.0, 0.03);
    EXPECT_LT(levelDb(1250.0), -39.5);
    EXPECT_EQ(pan.Cutoff(), 125.f);
    pan.SetCutoff(60.f);
    EXPECT_NEAR(levelDb(60.0), -3.098, 0.01);
    pan.SetSampleRate(96000.f);  // 60 Hz of that are half as many of ours
    EXPECT_NEAR(levelDb(30.0), -3.098, 0.01);
    pan.SetCutoff(std::nanf(""));
    EXPECT_EQ(pan.Cutoff(), 60.f);
}

}  // namespace
}  // namespace Quilo
