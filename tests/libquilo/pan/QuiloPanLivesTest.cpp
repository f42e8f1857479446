// SPDX-License-Identifier: MIT
// Every panner: however it came by its settings, it sounds like one that always had them, at every
// rate, in blocks of every size, from its first sample on.
#include "libquilo/pan/PanPlayer.h"
#include "pan/QuiloBinauralModelPanning.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloKnnPanning.h"
#include "pan/QuiloNFCHOAPanning.h"
#include "pan/QuiloPanDefaults.h"
#include "pan/QuiloRecursivePanning.h"
#include "pan/QuiloSubwoofersPanning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <tuple>

namespace Quilo {
namespace {

using tav::CartesianVector;
using Tests::Ones;
using Tests::PanCase;
using Tests::PanPlayer;
using Tests::Silence;

constexpr unsigned kNumInputs = 3;
constexpr float kRate = 8000.f;
constexpr std::size_t kSettled = 4800;  // samples in which glides end and filters fall silent

double Music(unsigned input, std::size_t frame) {
    return std::sin((0.3 + 0.1 * input) * static_cast<double>(frame)) + 0.2 * (frame % 50 == 7);
}

/// Computed anew and at once where the sources stand.
void PlaceAll(Pan& pan) {
    for (unsigned i = 0; i < kNumInputs; ++i) {
        pan.SetSourcePosition(i, pan.SourcePosition(i), true, true);
    }
}

std::unique_ptr<Pan> Make(const PanCase& c) {
    auto pan = Tests::OnDefaultSpeakers(kNumInputs, c.numOutputs, c.type, c.subtype);
    pan->SetSourcesPositions({{0.4f, 1.f, 0.2f}, {-0.7f, 0.3f, 0.5f}, {0.2f, -0.8f, 0.1f}}, true);
    PlaceAll(*pan);
    return pan;
}

template <class Panner>
void With(Pan& pan, void (*set)(Panner&)) {
    if (auto* panner = dynamic_cast<Panner*>(&pan)) set(*panner);
}

struct Change {
    const char* name;
    void (*apply)(Pan&);
};

void ChangePlaces(Pan& p) {
    p.SetSourcePosition(0, {-0.3f, 0.9f, 0.4f}, false, false);
    p.SetSourcePosition(1, {2.f, 1.f, 0.6f}, true, false);
    p.SetSourceMute(2, true);
}

void ChangeWidths(Pan& p) {
    const float percent[] = {90.f, 30.f, 0.f};
    p.SetSourceSpread(0, 70.f);
    p.SetSpreadByDirection(1, percent);
    p.SetSpreadingMode("directional");
    p.SetNumNeighbors(1, 2);
    p.SetInterpolationTime(200.f);
    With<RecursivePanning>(p, [](auto& panr) { panr.SetCorners(std::array{-70.f, 20.f, 100.f}); });
    With<SubwoofersPanning>(p, [](auto& bass) { bass.SetCutoff(300.f); });
}

void ChangeConventions(Pan& p) {
    p.SetOrder(1);
    p.SetNormalization(tav::SphericalHarmonic::Normalization::MaxN);
    p.SetComputationMode("fast");
    p.SetSpeakersRadius(3.f);
    p.SetNearfieldCompensation(1, false);
    With<DbapPanning>(p, [](auto& dbap) { dbap.SetMuteOutside(true); });
    With<NFCHOAPanning>(p, [](auto& nfc) { nfc.SetHighPass(false); });
}

void ChangeLoudspeakers(Pan& p) {
    auto layout = DefaultSpeakersFor(p.GetType(), p.NumOutputs());
    for (CartesianVector& s : layout) s = {s.x - 0.3f * s.y, s.y + 0.3f * s.x, 0.9f * s.z};
    p.SetSpeakersPositions(layout);
    p.SetSpeakersRadius(0.7f);
}

void ChangeEars(Pan& p) {
    With<BinauralPanning>(p, [](auto& ears) {
        ears.SetItdModel("woodworth");
        ears.SetItdLatencyMode("nolatency");
        ears.SetHeadRadius(0.13f);
        ears.SetListenerAngle(70.f);
        ears.SetListenerPosition({0.3f, -0.2f, 0.1f});
    });
    With<BinauralPanningSnowmanModel>(p, [](auto& snowman) {
        snowman.SetTorsoRadius(0.25f);
        snowman.SetNeckHeight(0.08f);
        snowman.SetTorsoReflection(0.8f);
    });
}

constexpr Change kChanges[] = {{"Places", ChangePlaces},
                               {"Widths", ChangeWidths},
                               {"Conventions", ChangeConventions},
                               {"Loudspeakers", ChangeLoudspeakers},
                               {"Ears", ChangeEars}};

/// What no panner can use.
void Refuse(Pan& p) {
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity()}) {
        const float triple[] = {0.f, bad, 0.f};
        for (const unsigned index : {0u, kNumInputs}) {
            p.SetSourcePosition(index, {0, 0, bad}, true, true);
            p.SetSourceSpread(index, index == 0 ? bad : 50.f);
            p.SetSpreadByDirection(index, triple);
        }
        p.SetSourceMute(kNumInputs, true);
        p.SetNumNeighbors(kNumInputs, 1);
        p.SetNearfieldCompensation(kNumInputs, false);
        p.SetInterpolationTime(bad);
        p.SetSpeakersRadius(bad);
        p.SetSpeakersPositions({{0, 1, 0}, {1, bad, 0}, {0, 0, 1}});
        p.SetSpreadsByDirection(std::array{1.f, 2.f});
        p.SetComputationMode("faster");
        p.SetSampleRate(bad);
        p.SetBufferSize(0);
        p.SetAutoMuteTime(bad);
        if (auto* panr = dynamic_cast<RecursivePanning*>(&p)) panr->SetCorners(triple);
        if (auto* bass = dynamic_cast<SubwoofersPanning*>(&p)) bass->SetCutoff(bad);
    }
}

void Connect(Pan& pan, short inlets, short outlets) {
    pan.SetConnections(std::vector<short>(pan.NumInputs(), inlets),
                       std::vector<short>(pan.NumOutputs(), outlets));
}

void ExpectSilence(PanPlayer& player, const PanPlayer::Signal& signal) {
    for (const auto& output : player.Play(kSettled, signal)) {
        EXPECT_TRUE(std::ranges::all_of(output, [](double x) { return x == 0.0; }));
    }
}

struct Life {
    const char* name;
    void (*live)(Pan& pan, PanPlayer& player, const Change& change);
};

// Each ends with silence in which glides end.
constexpr Life kLives[] = {
    {"Sounding",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         player.Play(1600, Music);
         change.apply(pan);
         player.Play(800, Music);
         player.Play(kSettled, Silence);
     }},
    {"Resting",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         pan.SetAutoMuteTime(1.f);
         player.Play(1600, Music);
         player.Play(2 * static_cast<std::size_t>(kRate), Silence);
         EXPECT_FALSE(pan.InputActive(0));
         change.apply(pan);
         player.Play(kSettled, Silence);
     }},
    {"Cleared",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         player.Play(1600, Music);
         change.apply(pan);
         player.Play(64, Music);
         pan.Reset();
         ExpectSilence(player, Silence);
     }},
    {"AtAnotherRate",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         pan.SetSampleRate(2.f * kRate);
         player.Play(3200, Music);
         change.apply(pan);
         player.Play(64, Music);
         pan.SetSampleRate(kRate);
         ExpectSilence(player, Silence);
     }},
    {"WithoutOutlets",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         player.Play(1600, Music);
         Connect(pan, 1, 0);
         change.apply(pan);
         ExpectSilence(player, Silence);
         Connect(pan, 1, 1);
     }},
    {"WithoutInlets",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         player.Play(1600, Music);
         Connect(pan, 0, 1);
         change.apply(pan);
         for (const auto& output : player.Play(kSettled, Music))
             EXPECT_NEAR(output.back(), 0, 1e-4);
         Connect(pan, 1, 1);
     }},
    {"Refused",
     [](Pan& pan, PanPlayer& player, const Change& change) {
         change.apply(pan);
         player.Play(kSettled, Silence);
         Refuse(pan);
     }},
};

class PannerLife : public testing::TestWithParam<std::tuple<PanCase, Life>> {};

TEST_P(PannerLife, EndsWithTheSoundOfItsSettings) {
    const auto& [panCase, life] = GetParam();
    for (const Change& change : kChanges) {
        SCOPED_TRACE(change.name);
        const auto lived = Make(panCase), fresh = Make(panCase);
        PanPlayer player(*lived, kRate), expected(*fresh, kRate);
        change.apply(*fresh);
        PlaceAll(*fresh);
        expected.Play(kSettled, Silence);
        life.live(*lived, player, change);
        const auto heard = player.Play(1600, Music), wanted = expected.Play(1600, Music);
        for (std::size_t o = 0; o < heard.size(); ++o) {
            for (std::size_t k = 0; k < heard[o].size(); ++k) {
                ASSERT_NEAR(heard[o][k], wanted[o][k], 2e-5) << "output " << o << ", frame " << k;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lives,
                         PannerLife,
                         testing::Combine(testing::ValuesIn(Tests::kAllPanners),
                                          testing::ValuesIn(kLives)),
                         [](const auto& test) {
                             return Tests::NameOf(std::get<0>(test.param)) +
                                    std::get<1>(test.param).name;
                         });

class PannerFromTheStart : public testing::TestWithParam<PanCase> {};

/// Nobody placed its sources, or somebody did and forced it.
TEST_P(PannerFromTheStart, BeginsAsItGoesOn) {
    for (const bool isPlaced : {false, true}) {
        std::vector<PanPlayer::Audio> heard;
        for (const std::size_t silence : {std::size_t{0}, kSettled}) {
            auto pan = isPlaced ? Make(GetParam())
                                : Pan::Create(kNumInputs, GetParam().numOutputs, GetParam().type,
                                              GetParam().subtype);
            pan->SetInterpolationTime(200.f);
            PanPlayer player(*pan, kRate);
            player.Play(silence, Silence);
            heard.push_back(player.Play(256, Music));
        }
        for (std::size_t o = 0; o < heard[0].size(); ++o) {
            for (std::size_t k = 0; k < 256; ++k) {
                ASSERT_NEAR(heard[0][o][k], heard[1][o][k], 1e-6) << isPlaced << " " << k;
            }
        }
    }
}

TEST_P(PannerFromTheStart, LosesNoOutletButTheOneThatIsCut) {
    const auto whole = PanPlayer(*Make(GetParam()), kRate).Play(800, Music);
    for (unsigned cut = 0; cut < GetParam().numOutputs; ++cut) {
        const auto pan = Make(GetParam());
        std::vector<short> outlets(pan->NumOutputs(), 1);
        outlets[cut] = 0;
        pan->SetConnections(std::vector<short>(kNumInputs, 1), outlets);
        const auto heard = PanPlayer(*pan, kRate).Play(800, Music);
        for (unsigned o = 0; o < heard.size(); ++o) {
            for (std::size_t k = 0; o != cut && k < heard[o].size(); ++k) {
                ASSERT_NEAR(heard[o][k], whole[o][k], 1e-6) << cut << " " << o;
            }
        }
    }
}

TEST_P(PannerFromTheStart, AnswersAnImpulseInBlocksOfAnySize) {
    PanPlayer::Audio first;
    for (const unsigned blockSize : {64u, 1u, 7u, 1500u}) {
        const auto pan = Make(GetParam());
        PanPlayer player(*pan, kRate, blockSize);
        const auto impulse = [](unsigned input, std::size_t frame) {
            return input == 1 && frame == 1234 ? 1.0 : 0.0;
        };
        const auto response = player.Play(3000, impulse);
        if (first.empty()) first = response;
        for (std::size_t o = 0; o < response.size(); ++o) {
            for (std::size_t k = 0; k < 3000; ++k) {
                ASSERT_NEAR(response[o][k], first[o][k], 1e-7) << blockSize << " " << k;
            }
        }
    }
}

// Delays, corners and glides are times and frequencies, not samples.
TEST_P(PannerFromTheStart, ChangesWithTheRateInNothingButItsSamples) {
    std::vector<std::complex<double>> first;
    for (const unsigned factor : {1u, 2u}) {
        const float rate = 48000.f * static_cast<float>(factor);
        const auto pan = Make(GetParam());
        PanPlayer player(*pan, 48000.f, 64);
        pan->SetSampleRate(rate);
        std::vector<std::complex<double>> numbers;
        const auto response = player.Play(24000 * factor, Tests::Impulse);
        for (const auto& output : response) {
            for (const double hz : {30.0, 100.0, 200.0}) {
                const double turn = -2.0 * std::numbers::pi * hz / static_cast<double>(rate);
                std::complex<double> bin;
                for (std::size_t k = 0; k < output.size(); ++k) {
                    bin += output[k] * std::polar(1.0, turn * static_cast<double>(k));
                }
                numbers.push_back(bin);
            }
        }
        ChangePlaces(*pan);
        ChangeConventions(*pan);
        const auto glide = player.Play(4800 * factor, Ones);
        for (const auto& output : glide) {
            for (std::size_t k = 240; k < 4800; k += 240) numbers.push_back(output[k * factor]);
        }
        if (first.empty()) first = numbers;
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            EXPECT_LT(std::abs(numbers[k] - first[k]), 0.1 * GetParam().mostGain) << k;
        }
    }
}

// A change begins to glide within one interpolation time and has arrived within two.
TEST_P(PannerFromTheStart, GlidesForTheTimeItWasTold) {
    for (const float ms : {150.f, 40.f}) {
        const auto pan = Make(GetParam()), there = Make(GetParam());
        PanPlayer player(*pan, kRate, 16), target(*there, kRate, 16);
        pan->SetInterpolationTime(ms);
        player.Play(kSettled, Ones);
        pan->SetSourceMute(0, true);
        there->SetSourceMute(0, true);
        target.Play(kSettled, Ones);
        const auto time = static_cast<std::size_t>(ms * 0.001f * kRate);
        const auto glide = player.Play(2 * time + kSettled, Ones), end = target.Play(16, Ones);
        const bool isDiffuse = pan->GetSubType() == Pan::SubType::Diffuse;  // its chains ring
        double early = 0.0, late = 0.0;
        for (std::size_t o = 0; o < glide.size(); ++o) {
            early += std::fabs(glide[o][time - time / 8] - end[o][0]);
            late += std::fabs(glide[o][2 * time + (isDiffuse ? kSettled : 400) - 1] - end[o][0]);
        }
        // Ears hear a source that is muted fade in 5 ms, whatever time delays take.
        const bool glides =
            pan->GetType() != Pan::Type::Null && pan->GetType() != Pan::Type::Binaural;
        EXPECT_EQ(early > 1e-3, glides) << ms;
        EXPECT_LT(late, 1e-4) << ms;
    }
}

INSTANTIATE_TEST_SUITE_P(Panners,
                         PannerFromTheStart,
                         testing::ValuesIn(Tests::kAllPanners),
                         [](const auto& test) { return Tests::NameOf(test.param); });

struct Clamp {
    const char* type;
    float first, low, high;
    float (*set)(Pan& pan, float value);  // what is in force then
};

// clang-format off
constexpr Clamp kClamps[] = {
    // type        first low  high     sets
    {"dbap",       30,   0,   200,  [](Pan& p, float v) { p.SetInterpolationTime(v); return p.GetInterpolationTime(); }},
    {"dbap",       0,    0,   100,  [](Pan& p, float v) { p.SetSourceSpread(0, v); return p.SourceSpread(0); }},
    {"spcap",      0,    0,   100,  [](Pan& p, float v) { p.SetSourceSpread(0, v); return p.SourceSpread(0); }},
    {"dbap3d",     0,    0,   100,  [](Pan& p, float v) { p.SetSpreadByDirection(0, std::array{1.f, 2.f, v}); return dynamic_cast<DbapPanning&>(p).SourceSpreadByDirection(0)[2]; }},
    {"knn",        3,    1,   9,    [](Pan& p, float v) { if (v == v) p.SetNumNeighbors(0, v > 0 ? 1000u : 0u); return static_cast<float>(dynamic_cast<KnnPanning&>(p).NumNeighbors(0)); }},
    {"subwoofers", 125,  10,  1000, [](Pan& p, float v) { auto& bass = dynamic_cast<SubwoofersPanning&>(p); bass.SetCutoff(v); return bass.Cutoff(); }},
    {"nfchoa3d",   1,    0.2f, 20,  [](Pan& p, float v) { p.SetSpeakersRadius(v); return dynamic_cast<NFCHOAPanning&>(p).SpeakersRadius(); }},
};
// clang-format on

TEST(PannerNumbers, AreHeldToTheirRangeAndRefusedWhereTheyAreNone) {
    for (const Clamp& c : kClamps) {
        const auto pan = Tests::OnDefaultSpeakers(1, 9, c.type);
        EXPECT_EQ(c.set(*pan, std::nanf("")), c.first) << c.type;
        EXPECT_EQ(c.set(*pan, -1e9f), c.low) << c.type;
        EXPECT_EQ(c.set(*pan, 1e9f), c.high) << c.type;
    }
}

}  // namespace
}  // namespace Quilo
