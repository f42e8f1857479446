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

// The blocks are longer than what is filtered at once, and everything glides meanwhile.
TEST(SubwoofersPanning, PlaysALongBlockAsEightShortOnes) {
    std::vector<PanPlayer::Audio> played;
    for (const unsigned blockSize : {4096u, 512u}) {
        SubwoofersPanning pan(1, 4);
        UseDefaultLayout(pan);
        PanPlayer player(pan, 48000.f, blockSize);
        pan.SetBufferSize(64);
        player.Play(4096, Sine(90.0));
        pan.SetSourcePosition(0, tav::FromNavigational(110.f, 0.f, 1.f), false, false);
        pan.SetCutoff(700.f);
        played.push_back(player.Play(4096, Sine(90.0)));
        EXPECT_EQ(played.back(), played.front()) << blockSize;
    }
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

TEST(SubwoofersPanning, StopsForSilentSourcesAndStartsAfreshWithThem) {
    SubwoofersPanning pan(2, 2), fresh(2, 2);
    for (auto* p : {&pan, &fresh}) UseDefaultLayout(*p);
    pan.SetAutoMuteTime(1.f);
    PanPlayer player(pan), expected(fresh);
    const auto tone = [sine = Sine(50.0)](unsigned input, std::size_t frame) {
        return input == 0 ? sine(input, frame) : 0.0;
    };
    player.Play(4800, tone);
    player.Play(2 * 48000, Tests::Silence);
    EXPECT_FALSE(pan.InputActive(0));
    expected.Play(4800 + 2 * 48000, Tests::Silence);
    EXPECT_EQ(player.Play(4800, tone), expected.Play(4800, tone));
}

}  // namespace
}  // namespace Quilo
