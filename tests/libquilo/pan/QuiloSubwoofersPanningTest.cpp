// SPDX-License-Identifier: MIT
#include "pan/QuiloSubwoofersPanning.h"

#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "pan/QuiloPanDefaults.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace Quilo {
namespace {

using Tests::PanPlayer;

double Sine(double hz, std::size_t frame) {
    return std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(frame) / 48000.0);
}

double Peak(const std::vector<double>& signal, std::size_t from) {
    double peak = 0.0;
    for (std::size_t k = from; k < signal.size(); ++k) peak = std::max(peak, std::abs(signal[k]));
    return peak;
}

void UseDefaultLayout(Pan& pan) {
    pan.SetSpeakersPositions(DefaultSpeakersFor(Pan::Type::Subwoofers, pan.NumOutputs()));
}

/// Plays one source straight into the float side, whatever was announced.
std::vector<float> PlayFloats(Pan& pan, unsigned blockSize) {
    std::vector<float> input(4096), output(4096 * pan.NumOutputs());
    for (std::size_t k = 0; k < 4096; ++k) input[k] = static_cast<float>(Sine(90.0, k));
    for (unsigned done = 0; done < 4096; done += blockSize) {
        const float* in = input.data() + done;
        std::vector<float*> out;
        for (unsigned o = 0; o < pan.NumOutputs(); ++o) out.push_back(&output[o * 4096 + done]);
        pan.Process(out.data(), &in, blockSize);
    }
    return output;
}

// The blocks are longer than what is filtered at once, and everything glides meanwhile.
TEST(SubwoofersPanning, PlaysALongBlockAsEightShortOnes) {
    std::vector<std::vector<float>> played;
    for (const unsigned blockSize : {4096u, 512u}) {
        SubwoofersPanning pan(1, 4);
        pan.SetSampleRate(48000.f);
        UseDefaultLayout(pan);
        PlayFloats(pan, blockSize);
        pan.SetSourcePosition(0, tav::FromNavigational(110.f, 0.f, 1.f), false, false);
        pan.SetCutoff(700.f);
        played.push_back(PlayFloats(pan, blockSize));
        EXPECT_EQ(played.back(), played.front()) << blockSize;
    }
}

TEST(SubwoofersPanning, LeavesTheBassAndGlidesToAnotherCutoff) {
    SubwoofersPanning pan(1, 1);
    UseDefaultLayout(pan);
    pan.SetSourcePosition(0, {0, 1, 0}, true, true);
    PanPlayer player(pan);
    const auto levelDb = [&](double hz) {
        const auto audio =
            player.Play(48000, [hz](unsigned, std::size_t k) { return Sine(hz, k); });
        return 20.0 * std::log10(Peak(audio[0], 24000));
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

TEST(SubwoofersPanning, ReportsALayoutThatLeavesTheListenerOutsideAndUsesIt) {
    SubwoofersPanning pan(1, 3);
    pan.SetSourcePosition(0, {0, 1, 0}, true, true);
    unsigned reports = 0;
    try {
        pan.SetSpeakersPositions({{-1, 1, 0}, {0, 1, 0}, {1, 1, 0}});
    } catch (const tav::Exception& e) {
        ++reports;
        EXPECT_EQ(e.Message(), "reference position must be inside the speakers setup!");
    }
    EXPECT_EQ(reports, 1u);
    PanPlayer player(pan);
    EXPECT_NEAR(player.SteadyGains(0)[1], 1.0, 1e-5);
    pan.SetSourcePosition(0, {-1, 1, 0}, false, false);  // no second report
    EXPECT_NEAR(player.SteadyGains(0)[0], 1.0, 1e-5);
}

TEST(SubwoofersPanning, StopsForSilentSourcesAndStartsAfreshWithThem) {
    SubwoofersPanning pan(2, 2), fresh(2, 2);
    for (auto* p : {&pan, &fresh}) UseDefaultLayout(*p);
    pan.SetAutoMuteTime(1.f);
    PanPlayer player(pan), expected(fresh);
    const auto tone = [](unsigned input, std::size_t k) {
        return input == 0 ? Sine(50.0, k) : 0.0;
    };
    player.Play(4800, tone);
    player.Play(2 * 48000, [](unsigned, std::size_t) { return 0.0; });
    EXPECT_FALSE(pan.InputActive(0));
    expected.Play(4800 + 2 * 48000, [](unsigned, std::size_t) { return 0.0; });
    EXPECT_EQ(player.Play(4800, tone), expected.Play(4800, tone));
}

TEST(SubwoofersPanning, Plays250SourcesSampleBySample) {
    SubwoofersPanning pan(250, 8);
    UseDefaultLayout(pan);
    PanPlayer player(pan, 8000.f, 1);
    for (unsigned i = 0; i < 250; ++i) {
        pan.SetSourcePosition(i, pan.SourcePosition(i), true, true);
    }
    const auto ones = [](unsigned, std::size_t) { return 1.0 / 250.0; };
    const auto before = player.Play(2000, ones);
    double sum = 0.0;
    for (const auto& output : before) sum += output.back() * output.back();
    EXPECT_NEAR(std::sqrt(sum), 1.0, 1e-3);
    EXPECT_EQ(player.Violations(), 0u);
}

}  // namespace
}  // namespace Quilo
