// SPDX-License-Identifier: MIT
#include "libquilo/hrtf/HrtfFiles.h"
#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "reference/PlainBinauralVoice.h"
#include "support/HostProgram.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <deque>
#include <numbers>
#include <random>

namespace Quilo {
namespace {

using Itd = InterauralTimeDifference;
using Tests::PanPlayer;

constexpr double kPi = std::numbers::pi;

/// A panner with the built-in set.
std::unique_ptr<BinauralPanningDirect> OnKemar(unsigned numInputs) {
    auto pan = std::make_unique<BinauralPanningDirect>(numInputs, 2);
    EXPECT_TRUE(pan->LoadHrtf("kemar"));
    return pan;
}

tav::CartesianVector At(double azimuthDeg, double elevationDeg = 0.0) {
    return tav::FromNavigational(static_cast<float>(azimuthDeg), static_cast<float>(elevationDeg),
                                 1.5f);
}

double Noise(unsigned input, std::size_t frame) {
    std::minstd_rand random(static_cast<unsigned>(frame * 31 + input * 7919 + 1));
    random.discard(3);
    return static_cast<double>(random()) / 1073741824.0 - 1.0;
}

double Energy(const std::vector<double>& signal) {
    double sum = 0.0;
    for (const double x : signal) sum += x * x;
    return sum;
}

/// The first sample above a tenth of the peak.
std::ptrdiff_t Onset(const std::vector<double>& signal) {
    double peak = 0.0;
    for (const double x : signal) peak = std::max(peak, std::fabs(x));
    const auto loud = [peak](double x) { return std::fabs(x) > 0.1 * peak; };
    return std::ranges::find_if(signal, loud) - signal.begin();
}

// Groups, seats and pieces make no difference: every source is the one voice that it would be
// alone, at rest and in motion.
TEST(BinauralPanningDirect, SoundsLikeOneVoiceAfterTheOther) {
    constexpr unsigned kSources = 19, kFrames = 64;
    const auto pan = OnKemar(kSources);
    PanPlayer player(*pan, 44100.f, kFrames);
    const auto responses = HrtfResponses::Of(pan->GetHrtf(), {44100.f, HrtfRealisation::Auto, 0});
    ASSERT_TRUE(responses->AreCells());
    std::deque<Tests::PlainBinauralVoice> voices;
    const auto move = [&](unsigned i, const tav::CartesianVector& position, bool immediate) {
        pan->SetSourcePosition(i, position, immediate, immediate);
        const HrtfPoint& point = *pan->GetHrtf()->NearestPoint(position);
        const EarDelays delays = Itd().Delays(position, point.delay);
        const auto& cells = *responses->CellsOf(point.index);
        voices[i].Set(0, cells.ears[0], delays.left, immediate);
        voices[i].Set(1, cells.ears[1], delays.right, immediate);
    };
    for (unsigned i = 0; i < kSources; ++i) {
        voices.emplace_back(responses->MaxCells(), 44100.f, 30.f);
        move(i, At(i * 19.0, i * 4.0 - 36.0), true);
    }
    double worst = 0.0, loudest = 0.0;
    for (unsigned block = 0; block < 200; ++block) {
        // At most as many at a time as may begin a fade in one block.
        if (block >= 20 && block % 12 == 0) {
            for (unsigned i = block % 3; i < kSources; i += 3)
                move(i, At(i * 19.0 + block, 10.0), false);
        }
        const auto signal = [&](unsigned input, std::size_t k) {
            return 0.1 * Noise(input, block * kFrames + k);
        };
        const auto audio = player.Play(kFrames, signal);
        float expected[2][kFrames] = {};
        float* const outputs[] = {expected[0], expected[1]};
        for (unsigned i = 0; i < kSources; ++i) {
            float input[kFrames];
            for (unsigned k = 0; k < kFrames; ++k) input[k] = static_cast<float>(signal(i, k));
            voices[i].Perform(outputs, input, kFrames);
        }
        for (unsigned e = 0; e < 2; ++e) {
            for (unsigned k = 0; k < kFrames; ++k) {
                const double sample = static_cast<double>(expected[e][k]);
                loudest = std::max(loudest, std::fabs(sample));
                worst = std::max(worst, std::fabs(sample - audio[e][k]));
            }
        }
        ASSERT_LE(worst, block < 20 ? 1e-5 : 2e-3) << block;
    }
    EXPECT_GT(loudest, 0.3);
}

struct Model {
    const char* word;
    bool delays;
};
constexpr Model kModels[] = {{"basic", true},      {"woodworth", true}, {"measurement", true},
                             {"larcherjot", true}, {"savioja", true},   {"miller", true},
                             {"NoITD", false}};

TEST(BinauralPanningDirect, LeftIsLeftForAllAzimuthsAndModels) {
    for (const float rate : {44100.f, 48000.f}) {
        const auto pan = OnKemar(1);
        PanPlayer player(*pan, rate);
        for (const Model& model : kModels) {
            for (const char* latency : {"fixedlatency", "nolatency"}) {
                pan->SetItdModel(model.word);
                pan->SetItdLatencyMode(latency);
                for (double azimuth = -170.0; azimuth < 180.0; azimuth += 10.0) {
                    if (std::fabs(std::sin(azimuth * kPi / 180.0)) < 0.3) continue;
                    pan->SetSourcePosition(0, At(azimuth), true, true);
                    pan->Reset();
                    const auto audio = player.Play(512, Tests::Impulse);
                    const std::size_t near = azimuth > 0.0 ? 1 : 0;
                    EXPECT_GT(Energy(audio[near]), 1.5 * Energy(audio[1 - near])) << azimuth;
                    if (!model.delays) continue;
                    EXPECT_GT(Onset(audio[1 - near]), Onset(audio[near]) + 4)
                        << model.word << latency << azimuth;
                }
            }
        }
    }
}

TEST(BinauralPanningDirect, ChangesSetsWithoutAClickAndKeepsTheOldOneOnFailure) {
    const auto pan = OnKemar(2);
    PanPlayer player(*pan, 48000.f);
    pan->SetSourcePosition(0, At(40.0), true, true);
    pan->SetSourcePosition(1, At(-60.0), true, true);
    const auto set = pan->GetHrtf();
    EXPECT_THROW(pan->LoadHrtf("gone.sofa"), tav::Exception);
    EXPECT_EQ(pan->GetHrtf(), set);
    double steady = 0.0, changing = 0.0;
    std::size_t frame = 0;
    const auto play = [&](std::size_t frames, double& largest) {
        const auto sine = Tests::Sine(300.0);
        const auto audio = player.Play(
            frames, [&](unsigned input, std::size_t k) { return sine(input, frame + k); });
        frame += audio[0].size();
        for (const auto& ear : audio) largest = std::max(largest, Tests::LargestStep(ear));
    };
    play(4800, changing);  // its onset
    play(4800, steady);
    pan->SetRealisation(HrtfRealisation::Fir);
    pan->SetResponseLength(64);
    changing = 0.0;
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(pan->LoadHrtf("kemar"));
        pan->SetResponseLength(i % 2 == 0 ? 48 : 96);
        play(640 + 64 * static_cast<std::size_t>(i * i), changing);
    }
    play(9600, changing);
    EXPECT_LE(changing, 1.2 * steady);
}

// Loads that overlap end in any order, and settings change while they read.
TEST(BinauralPanningDirect, KeepsTheLoadThatWasBegunLast) {
    const Tests::TemporaryFolder folder;
    Tests::WriteText(folder / "ears.hrtf", SmallFirSet().Bytes());
    const auto pan = OnKemar(1);
    pan->SetSourcePosition(0, {0, 1, 0}, true, true);
    BinauralPanningDirect::HrtfLoad early(*pan), late(*pan), failing(*pan);
    EXPECT_TRUE(early.Read("kemar"));
    EXPECT_TRUE(late.Read((folder / "ears.hrtf").string()));
    EXPECT_THROW(failing.Read((folder / "gone.hrtf").string()), tav::Exception);
    PanPlayer player(*pan, 44100.f, 128);
    pan->SetRealisation(HrtfRealisation::Fir);
    EXPECT_TRUE(late.Install());
    EXPECT_FALSE(early.Install());
    EXPECT_EQ(pan->GetHrtf()->Data().points.size(), 2u);
    player.Play(4096, Tests::Silence);
    const auto ears = player.Play(4, Tests::Impulse);
    for (std::size_t tap = 0; tap < 3; ++tap) {
        EXPECT_NEAR(ears[0][tap], static_cast<double>(tap + 1), 1e-6);
        EXPECT_NEAR(ears[1][tap], static_cast<double>(tap + 4), 1e-6);
    }
}

// The last of 2001 taps comes 45 ms after the impulse, whatever the block size.
TEST(BinauralPanningDirect, LongResponsesRingOutWhenTheirSourceIsMuted) {
    const Tests::TemporaryFolder folder;
    HrtfFileContent set = SmallFirSet();
    set.infos["FiltersLength"] = "2001";
    for (HrtfFrame& frame : set.frames) {
        std::vector<double> taps(4002, 0.0);
        taps[2000] = taps[4001] = 1.0;
        frame.matrices.back() = {"XFIR", Sdif::ElementType::Int16, 2, 2001, taps};
    }
    Tests::WriteText(folder / "long.hrtf", set.Bytes());
    for (const unsigned blockSize : {32u, 64u}) {
        const auto pan = OnKemar(1);
        PanPlayer player(*pan, 44100.f, blockSize);
        ASSERT_TRUE(pan->LoadHrtf((folder / "long.hrtf").string()));
        player.Play(8192, Tests::Silence);
        player.Play(64, Tests::Impulse);
        pan->SetSourceMute(0, true);
        EXPECT_NEAR(player.Play(2048, Tests::Silence)[0][2000 - 64], 1.0, 1e-5) << blockSize;
    }
}

TEST(BinauralPanningDirect, FollowsTheListenerAndReportsItsLatency) {
    const auto pan = OnKemar(1);
    PanPlayer player(*pan, 48000.f);
    EXPECT_EQ(pan->Latency(), 48u);
    EXPECT_EQ(pan->OutputLabel(0) + pan->OutputLabel(1) + pan->OutputLabel(2), "leftrightdumpout");
    const auto louderEar = [&] {
        const auto audio = player.Play(4800, Noise);
        return Energy(audio[0]) > Energy(audio[1]) ? 0 : 1;
    };
    pan->SetSourcePosition(0, {0, 1, 0}, true, true);
    pan->SetListenerAngle(90.f);
    louderEar();
    EXPECT_EQ(louderEar(), 0);
    pan->SetListenerPosition({0, 2, 0});  // now the source is at its right
    louderEar();
    EXPECT_EQ(louderEar(), 1);
    pan->SetListenerAngle(0.f);
    pan->SetListenerPosition({-1, 1, 0});
    louderEar();
    EXPECT_EQ(louderEar(), 1);
    pan->SetDelayReduction(75.f);
    pan->SetDelayScale(300.f);
    EXPECT_EQ(pan->DelayScale(), 200.f);
    EXPECT_EQ(pan->Latency(), 48u);
    pan->SetItdLatencyMode("nolatency");
    EXPECT_EQ(pan->Latency(), 0u);
    EXPECT_EQ(Pan::Create(4, 2, "binaural", "diffuse")->Latency(), 0u);  // of no direction
    pan->SetCrossfadeTime(-1.f);
    EXPECT_EQ(pan->CrossfadeTime(), 0.f);
}

// Cells that run at another rate than theirs keep their magnitude.
TEST(HrtfResponses, KeepTheMagnitudeOfCellsAtOtherRates) {
    const auto set = Hrtf::LoadShared("kemar");
    const auto cells = HrtfResponses::Of(set, {44100.f, HrtfRealisation::Auto, 0});
    for (const float rate : {32000.f, 48000.f, 96000.f}) {
        const auto taps = HrtfResponses::Of(set, {rate, HrtfRealisation::Auto, 0});
        ASSERT_FALSE(taps->AreCells());
        double squares = 0.0, worst = 0.0;
        unsigned count = 0;
        for (std::size_t point = 0; point < set->Data().points.size(); point += 18) {
            for (double hz = 100.0; hz < 0.49 * std::min(32650.0, static_cast<double>(rate));
                 hz *= 1.1) {
                const std::complex<double> z = std::polar(1.0, -2.0 * kPi * hz / 44100.0);
                std::complex<double> h = 1.0;
                const auto d = [](float v) { return static_cast<double>(v); };
                for (const auto& c : cells->CellsOf(point)->ears[0]) {
                    h *= (d(c.b0) + z * (d(c.b1) + z * d(c.b2))) /
                         (1.0 + z * (d(c.a1) + z * d(c.a2)));
                }
                std::complex<double> f = 0.0;
                const auto response = taps->TapsOf(point)->ears[0].Head();
                for (std::size_t t = 0; t < response.size(); ++t) {
                    f += d(response[t]) * std::polar(1.0, -2.0 * kPi * hz * static_cast<double>(t) /
                                                              static_cast<double>(rate));
                }
                const double error = 20.0 * std::log10(std::abs(f) / std::abs(h));
                squares += error * error;
                worst = std::max(worst, std::fabs(error));
                ++count;
            }
        }
        // What is cut off of the narrowest resonance, at 0.75 kHz, is 0.16 dB.
        EXPECT_LE(std::sqrt(squares / count), 0.01) << rate;
        EXPECT_LE(worst, 0.2) << rate;
    }
}

}  // namespace
}  // namespace Quilo
