// SPDX-License-Identifier: MIT
#include "pan/QuiloSubwoofersPanning.h"

#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "pan/QuiloPanDefaults.h"

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

void UseDefaultLayout(Pan& pan) {
    pan.SetSpeakersPositions(DefaultSpeakersFor(Pan::Type::Subwoofers, pan.NumOutputs()));
}

TEST(SubwoofersPanning, LeavesTheBassAndGlidesToAnotherCutoff) {
    SubwoofersPanning pan(1, 1);
    UseDefaultLayout(pan);
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

TEST(SubwoofersPanning, PansAsARingOfLoudspeakersDoes) {
    SubwoofersPanning pan(3, 4);
    Vbap2DPanning ring(3, 4);
    for (Pan* p : {static_cast<Pan*>(&pan), static_cast<Pan*>(&ring)}) {
        UseDefaultLayout(*p);
        p->SetSourcePosition(1, tav::FromNavigational(70.f, 0.f, 2.f), true, true);
        p->SetSourceMute(2, true);
    }
    PanPlayer player(pan), expected(ring);
    for (const unsigned source : {1u, 2u}) {
        const auto gains = player.SteadyGains(source), wanted = expected.SteadyGains(source);
        for (unsigned o = 0; o < 4; ++o) EXPECT_NEAR(gains[o], wanted[o], 1e-5) << source;
    }
    pan.SetInterpolationTime(500.f);
    EXPECT_EQ(pan.GetInterpolationTime(), 200.f);
}

}  // namespace
}  // namespace Quilo
