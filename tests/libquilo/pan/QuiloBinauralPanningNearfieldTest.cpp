// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningNearfield.h"

#include "libquilo/hrtf/HrtfFiles.h"
#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainFourier.h"
#include "reference/PlainSphere.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <filesystem>
#include <fstream>
#include <numbers>

namespace Quilo {
namespace {

using Switch = BinauralPanningNearfield::Switch;
using Tests::PanPlayer;
using Spectra = std::vector<std::vector<std::complex<double>>>;  // of the ears

constexpr float kRate = 44100.f;  // of the built-in set
constexpr std::size_t kSize = 4096;
constexpr double kHead = 0.0875;

Spectra AnswersOf(Pan& pan) {
    PanPlayer player(pan, kRate);
    player.Play(9600, Tests::Silence);
    Spectra ears;
    for (const auto& ear : player.Play(kSize, Tests::Impulse)) {
        ears.push_back(Plain::Spectrum(ear, kSize));
    }
    return ears;
}

double LevelAt(const std::vector<std::complex<double>>& ear, double hz) {
    const auto bin = static_cast<std::size_t>(std::lround(hz / static_cast<double>(kRate) * kSize));
    return 20.0 * std::log10(std::abs(ear[bin]));
}

/// Samples that the bass is late, from the turn of the phase between two low bins.
double LatenessOf(const std::vector<std::complex<double>>& ear) {
    return -std::arg(ear[4] / ear[2]) * kSize / (2.0 * std::numbers::pi * 2.0);
}

void SetAll(BinauralPanningNearfield& pan, bool on) {
    for (std::size_t i = 0; i < BinauralPanningNearfield::kNumSwitches; ++i) {
        pan.SetSwitch(static_cast<Switch>(i), on);
    }
}

BinauralPanningNearfield& Place(BinauralPanningNearfield& pan, float azimuth, float r) {
    pan.SetSourcePosition(0, tav::FromNavigational(azimuth, 10.f, r), true, true);
    return pan;
}

TEST(BinauralPanningNearfield, IsTheDirectOneFromOneMetreFortyOn) {
    for (const char* realisation : {"cells", "taps"}) {
        for (const float r : {1.4f, 1.6f, 5.f}) {
            BinauralPanningNearfield near(1, 2);
            BinauralPanningDirect direct(1, 2);
            near.SetSwitch(Switch::DistanceAttenuation, false);
            for (BinauralPanningDirect* pan :
                 {static_cast<BinauralPanningDirect*>(&near), &direct}) {
                pan->LoadHrtf("kemar");
                if (*realisation == 't') pan->SetRealisation(HrtfRealisation::Fir);
                pan->SetSourcePosition(0, tav::FromNavigational(70.f, 20.f, r), true, true);
            }
            const Spectra one = AnswersOf(near), other = AnswersOf(direct);
            for (std::size_t e = 0; e < 2; ++e) {
                for (std::size_t bin = 1; bin < kSize / 2; ++bin) {
                    ASSERT_NEAR(std::abs(one[e][bin] / other[e][bin] - 1.0), 0.0, 0.001) << r;
                }
            }
        }
    }
}

// Without head-related filters what is left is what nearness adds to them.
TEST(BinauralPanningNearfield, AddsWhatASphereAddsNearTheHead) {
    BinauralPanningNearfield pan(1, 2);
    pan.LoadHrtf("kemar");
    pan.SetSwitch(Switch::HrtfFilters, false);
    pan.SetSwitch(Switch::CrossEarSelection, false);
    for (const float r : {0.2f, 0.35f, 0.7f}) {
        for (const float azimuth : {0.f, 45.f, 90.f, 140.f}) {
            pan.SetSourcePosition(0, tav::FromNavigational(azimuth, 0.f, r), true, true);
            const Spectra heard = AnswersOf(pan);
            for (const double hz : {100.0, 500.0, 2000.0, 8000.0}) {
                double expected[2];
                for (std::size_t e = 0; e < 2; ++e) {
                    const double side = e == 0 ? -1.0 : 1.0;
                    const double sine =
                        std::sin(static_cast<double>(azimuth) * std::numbers::pi / 180.0);
                    const double angle = std::acos(side * sine);
                    const auto level = [&](double distance) {
                        return 20.0 * std::log10(std::abs(
                                          Plain::SphereResponse(kHead, distance, angle, hz)));
                    };
                    const auto metres = static_cast<double>(r);
                    expected[e] = level(metres) - level(1.4) - 20.0 * std::log10(metres);
                    EXPECT_NEAR(LevelAt(heard[e], hz), expected[e], 1.0)
                        << r << " m, " << azimuth << ", " << hz << " Hz, ear " << e;
                }
            }
        }
    }
}

// ... each of them what it says, and nothing else.
TEST(BinauralPanningNearfield, EverySwitchChangesOneThing) {
    const auto makeIt = [](Switch off, bool allOff) {
        auto pan = std::make_unique<BinauralPanningNearfield>(1, 2);
        pan->LoadHrtf("kemar");
        if (allOff) SetAll(*pan, false);
        pan->SetSwitch(off, allOff);
        Place(*pan, 60.f, 0.25f);
        return AnswersOf(*pan);
    };
    BinauralPanningNearfield bare(1, 2), all(1, 2);
    for (BinauralPanningNearfield* pan : {&bare, &all}) pan->LoadHrtf("kemar");
    SetAll(bare, false);
    const Spectra nothing = AnswersOf(Place(bare, 60.f, 0.25f));
    const Spectra everything = AnswersOf(Place(all, 60.f, 0.25f));
    for (std::size_t i = 0; i < BinauralPanningNearfield::kNumSwitches; ++i) {
        const auto which = static_cast<Switch>(i);
        for (const bool alone : {true, false}) {
            const Spectra with = alone ? makeIt(which, true) : everything;
            const Spectra without = alone ? nothing : makeIt(which, false);
            for (std::size_t e = 0; e < 2; ++e) {
                const auto change = [&](double hz) {
                    return LevelAt(with[e], hz) - LevelAt(without[e], hz);
                };
                const double late = LatenessOf(with[e]) - LatenessOf(without[e]);
                const double bass = change(60.0), middle = change(1000.0), top = change(9000.0);
                SCOPED_TRACE(testing::Message()
                             << "switch " << i << (alone ? " alone" : "") << ", ear " << e);
                const bool filters =
                    which == Switch::HrtfFilters || which == Switch::CrossEarSelection;
                const bool isGain =
                    which == Switch::DistanceAttenuation || which == Switch::GainsCorrection;
                if (isGain) {
                    EXPECT_NEAR(middle, bass, 0.01);
                    EXPECT_NEAR(top, bass, 0.01);
                    EXPECT_NEAR(late, 0.0, 0.01);
                    if (which == Switch::DistanceAttenuation) {
                        EXPECT_NEAR(bass, 12.04, 0.01);
                    } else {
                        EXPECT_GT(e == 0 ? -bass : bass, 2.0);
                    }
                } else if (which == Switch::DelaysCorrection) {
                    for (const double level : {bass, middle, top}) EXPECT_NEAR(level, 0.0, 0.4);
                    EXPECT_GT(e == 0 ? late : -late, 0.4);
                } else {
                    EXPECT_NEAR(bass, 0.0, filters ? 1.0 : 0.1);
                    // Another direction means nothing to a source that no filter hears.
                    const bool acts = which != Switch::CrossEarSelection || !alone;
                    EXPECT_EQ(std::abs(middle) + std::abs(top) > 0.3, acts);
                }
            }
        }
    }
}

// Nearness delays the far ear as much whether the set has delays or holds them in its responses.
TEST(BinauralPanningNearfield, DelaysAreCorrectedForEverySet) {
    const Tests::TemporaryFolder folder;
    const std::string finite = (folder / "ears.hrtf").generic_string();
    Tests::WriteText(finite, SmallFirSet().Bytes());
    HrtfFileContent shelf = SmallCellSet();
    shelf.infos["DataType"] = "NearfieldCompensationFilter";
    shelf.infos["FiltersLength"] = "5";
    shelf.frames[1].matrices[2].columns = 5;
    shelf.frames[1].matrices[2].values = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    shelf.frames[0] = shelf.frames[1];  // half a millisecond late
    shelf.frames[0].stream = 1;
    const std::string nearness = (folder / "shelf.near").generic_string();
    Tests::WriteText(nearness, shelf.Bytes());
    const auto growth = [](const std::string& set, const std::string& filters = "") {
        double lead[2];
        for (const bool on : {false, true}) {
            BinauralPanningNearfield pan(1, 2);
            EXPECT_TRUE(pan.LoadHrtf(set) && pan.LoadNearfield(filters));
            SetAll(pan, false);
            pan.SetSwitch(Switch::DelaysCorrection, on);
            const Spectra ears = AnswersOf(Place(pan, 90.f, 0.25f));
            lead[on] = LatenessOf(ears[0]) - LatenessOf(ears[1]);
        }
        return lead[1] - lead[0];
    };
    const double ofCells = growth("kemar");
    EXPECT_GT(ofCells, 1.0);  // samples
    EXPECT_NEAR(growth(finite), ofCells, 0.05);
    EXPECT_NEAR(growth(finite, nearness), 0.0005 * static_cast<double>(kRate), 0.05);
}

TEST(BinauralPanningNearfield, HearsSourcesWithinTheRadiusFromIt) {
    BinauralPanningNearfield pan(1, 2);
    pan.LoadHrtf("kemar");
    pan.SetRadius(0.5f);
    const Spectra border = AnswersOf(Place(pan, 60.f, 0.5f));
    for (const float r : {0.01f, 0.3f, 0.49f}) {
        const Spectra within = AnswersOf(Place(pan, 60.f, r));
        for (const double hz : {60.0, 1000.0, 9000.0}) {
            EXPECT_NEAR(LevelAt(within[0], hz), LevelAt(border[0], hz), 0.001) << r;
        }
        EXPECT_NEAR(LatenessOf(within[0]), LatenessOf(border[0]), 0.001) << r;
    }
}

// The direction in which an ear sees a source at its side is not that in which the head does.
TEST(BinauralPanningNearfield, EachEarSeesTheSourceItself) {
    const auto pointsOf = [](float r) {
        BinauralPanningNearfield pan(1, 2);
        pan.LoadHrtf("kemar");
        SetAll(pan, false);
        pan.SetSwitch(Switch::HrtfFilters, true);
        pan.SetSwitch(Switch::CrossEarSelection, true);
        pan.SetSourcePosition(0, {0.f, r, 0.f}, true, true);
        return AnswersOf(pan);
    };
    // Ahead the right ear sees the source on its left: as far sources at -asin(a / r) are seen.
    const Spectra near = pointsOf(0.2f);
    BinauralPanningDirect far(1, 2);
    far.LoadHrtf("kemar");
    double least = 1e9, at = 0.0;
    for (float azimuth = -40.f; azimuth <= 40.f; azimuth += 5.f) {
        far.SetSourcePosition(0, tav::FromNavigational(azimuth, 0.f, 1.f), true, true);
        const Spectra heard = AnswersOf(far);
        double squares = 0.0;
        for (double hz = 200.0; hz < 4000.0; hz *= 1.1) {  // delays between samples cost little
            squares += std::pow(LevelAt(heard[1], hz) - LevelAt(near[1], hz), 2);
        }
        if (squares < least) least = squares, at = static_cast<double>(azimuth);
    }
    EXPECT_NEAR(at, -20.0, 5.1);
    EXPECT_LT(least, 0.1);
    for (double hz = 500.0; hz < 15000.0; hz *= 1.1) {
        EXPECT_NEAR(LevelAt(near[0], hz), LevelAt(near[1], hz), 0.01);
    }
}

// Sources glide in other lanes, at other times, in pieces of other lengths: none hears the others.
TEST(NearfieldStage, GlidesAloneAsAmongOthersInAnyPieces) {
    constexpr unsigned kSource = 18, kGlide = 1024;  // samples
    constexpr float kAt = 48000.f;
    std::vector<float> sweep(4096);
    for (std::size_t k = 0; k < sweep.size(); ++k) {
        sweep[k] = std::sin(3e-4f * static_cast<float>(k * k));
    }
    const std::vector<float> silence(64);
    const auto play = [&](bool isAmongOthers, std::size_t piece, const NearfieldEars& target) {
        NearfieldStage stage(20, kAt, 64);
        stage.Wake(kSource);
        std::vector<float> heard;
        for (std::size_t at = 0; at < sweep.size(); at += piece) {
            // Told the same again, a glide goes on, whatever time others are to take.
            if (at == 1024 || at == 1536) {
                stage.SetSource(kSource, target, (at == 1024 ? 1000.f : 100.f) * kGlide / kAt);
            }
            NearfieldStage::Signals inputs;
            inputs.fill(silence.data());
            inputs[kSource % 16] = sweep.data() + at;
            if (isAmongOthers) {
                inputs[1] = sweep.data() + (at + 512) % 2048;
                const NearfieldEar other{0.5f, 0.25f, 300.f + static_cast<float>(at), 3.f, 900.f};
                if (at % 64 == 0) stage.SetSource(17, {other, other}, 5.f);
            }
            stage.Perform(1, inputs, piece);
            const float* const ear = stage.Ear(1, kSource % 16);
            heard.insert(heard.end(), ear, ear + piece);
        }
        return heard;
    };
    const NearfieldEar near{3.f, 0.2f, 400.f, 2.f, 5000.f};
    const auto alone = play(false, 64, {near, near});
    EXPECT_EQ(play(true, 64, {near, near}), alone);
    EXPECT_EQ(play(true, 16, {near, near}), alone);
    const auto inOdd = play(true, 8, {near, near});
    for (std::size_t k = 0; k < inOdd.size(); ++k) ASSERT_NEAR(inOdd[k], alone[k], 1e-5) << k;
    // The gain of one without shelves is a straight line.
    const auto louder = play(true, 32, {NearfieldEar{}, NearfieldEar{.gain = 3.f}});
    for (std::size_t k = 0; k < sweep.size(); ++k) {
        const double part = std::clamp((static_cast<double>(k) - 1023.0) / kGlide, 0.0, 1.0);
        ASSERT_NEAR(louder[k], (1.0 + 2.0 * part) * static_cast<double>(sweep[k]), 2e-6) << k;
    }
    // Corners move in equal ratios: between 200 and 3200 Hz a low-pass passes by 800.
    NearfieldStage stage(1, kAt, 64);
    const auto lowPass = [&](float hz, float glideMs) {
        const NearfieldEar ear{.shelf = 0.f, .shelfHz = hz};
        stage.SetSource(0, {ear, ear}, glideMs);
    };
    lowPass(200.f, 0.f);
    stage.Wake(0);
    std::complex<double> sum;  // over a period of 800 Hz in the middle
    for (unsigned frame = 0; frame < 2048 + 30; ++frame) {
        const double turn = 2.0 * std::numbers::pi * frame / 60.0;
        const auto tone = static_cast<float>(std::sin(turn));
        NearfieldStage::Signals inputs;
        inputs.fill(&tone);
        stage.Perform(0, inputs, 1);
        if (frame >= 2048 - 30)
            sum += std::polar(static_cast<double>(stage.Ear(0, 0)[0]) / 30.0, -turn);
        if (frame == 0) lowPass(3200.f, 1000.f * 4096.f / kAt);
    }
    EXPECT_NEAR(std::abs(sum), std::sqrt(0.5), 0.03);
}

TEST(BinauralPanningNearfield, ComesNearUnderASineWithoutANoise) {
    for (const bool taps : {false, true}) {
        BinauralPanningNearfield pan(1, 2);
        pan.LoadHrtf("kemar");
        if (taps) pan.SetRealisation(HrtfRealisation::Fir);
        PanPlayer player(pan, kRate);
        std::size_t played = 0;
        const auto tone = [&](unsigned, std::size_t frame) {
            return std::sin(2.0 * std::numbers::pi * 500.0 / static_cast<double>(kRate) *
                            static_cast<double>(played + frame));
        };
        std::vector<double> ear;
        constexpr std::size_t kBlock = 448;  // about 10 ms
        for (unsigned block = 0; block < 160; ++block) {
            const float part = std::clamp((static_cast<float>(block) - 20.f) / 100.f, 0.f, 1.f);
            pan.SetSourcePosition(0, tav::FromNavigational(75.f, 5.f, 3.f - 2.8f * part), false,
                                  false);
            const auto heard = player.Play(kBlock, tone);
            ear.insert(ear.end(), heard[1].begin(), heard[1].end());
            played += kBlock;
        }
        ear.resize(65536);
        for (std::size_t k = 0; k < ear.size(); ++k) {
            ear[k] *=
                0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(k) / 65536.0);
        }
        double carrier = 0.0, spurious = 0.0;
        const auto spectrum = Plain::Spectrum(ear, 65536);
        for (std::size_t bin = 0; bin < spectrum.size(); ++bin) {
            const double hz = static_cast<double>(bin) * static_cast<double>(kRate) / 65536.0;
            (hz < 3000.0 ? carrier : spurious) += std::norm(spectrum[bin]);
        }
        EXPECT_LT(10.0 * std::log10(spurious / carrier), -70.0);
    }
}

}  // namespace
}  // namespace Quilo
