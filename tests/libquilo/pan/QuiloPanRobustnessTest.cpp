// SPDX-License-Identifier: MIT
// Every panner against inputs, sizes, rates and geometry that nobody should send.
#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "pan/QuiloPanDefaults.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Quilo {
namespace {

using Tests::kAllPanners;
using Tests::PanCase;
using Tests::PanPlayer;

constexpr unsigned kNumInputs = 4;
struct Setting {
    float rate;
    unsigned blockSize;
};
constexpr Setting kSettings[] = {{8000.f, 1}, {44100.f, 64}, {48000.f, 63}, {384000.f, 4096}};

std::unique_ptr<Pan> Make(const PanCase& c, unsigned numInputs = kNumInputs) {
    return Tests::OnDefaultSpeakers(numInputs, c.numOutputs, c.type, c.subtype);
}

/// An input each: not a number, infinite, far too large, denormal.
double Poison(unsigned input, std::size_t frame) {
    const double sign = frame % 3 == 0 ? -1.0 : 1.0;
    const double values[] = {std::numeric_limits<double>::quiet_NaN(),
                             sign * std::numeric_limits<double>::infinity(), sign * 1e38, 1e-310};
    return values[input % 4];
}

double Music(unsigned input, std::size_t frame) {
    return std::sin(0.05 * (input + 1.0) * static_cast<double>(frame));
}

class PannerUnderFire : public testing::TestWithParam<PanCase> {};

TEST_P(PannerUnderFire, RecoversFromEverythingThatIsNoSignal) {
    for (const auto& [rate, blockSize] : kSettings) {
        const auto pan = Make(GetParam());
        PanPlayer player(*pan, rate, blockSize);
        const auto tenth = static_cast<std::size_t>(rate * 0.1f);
        // 1. Poison while the sources move, over everything finite.
        double peak = 0.0;
        for (unsigned move = 0; move < 5; ++move) {
            for (unsigned i = 0; i < kNumInputs; ++i) {
                pan->SetSourcePosition(
                    i, tav::FromNavigational(static_cast<float>(move * 70 + i * 90), 20.f, 0.8f),
                    false, false);
            }
            for (const auto& output : player.Play(tenth / 5, Poison)) {
                for (const double sample : output) {
                    ASSERT_TRUE(std::isfinite(sample));
                    peak = std::max(peak, std::fabs(sample));
                }
            }
        }
        // 2. Half a second later nothing is heard of it, another half second later nothing is left.
        for (const auto& output : player.Play(5 * tenth, Tests::Silence)) {
            EXPECT_LE(std::fabs(output.back()), 1e-5 * peak);
        }
        player.Play(5 * tenth, Tests::Silence);
        // 3. A signal comes out as from a panner that saw none of this.
        const auto fresh = Make(GetParam());
        PanPlayer undisturbed(*fresh, rate, blockSize);
        for (unsigned i = 0; i < kNumInputs; ++i) {
            fresh->SetSourcePosition(i, pan->SourcePosition(i), true, true);
        }
        const PanPlayer::Audio after = player.Play(tenth, Music);
        const PanPlayer::Audio expected = undisturbed.Play(tenth, Music);
        for (std::size_t o = 0; o < after.size(); ++o) {
            for (std::size_t k = 0; k < after[o].size(); ++k) {
                ASSERT_NEAR(after[o][k], expected[o][k], 1e-4) << rate << " Hz, frame " << k;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Panners,
                         PannerUnderFire,
                         testing::ValuesIn(kAllPanners),
                         [](const auto& test) { return Tests::NameOf(test.param); });

class PannerAnywhere : public testing::TestWithParam<PanCase> {};

TEST_P(PannerAnywhere, StaysFiniteInDegenerateGeometry) {
    // clang-format off
    const tav::CartesianVector odd[] = {
        {0, 0, 0}, {1, 0, 0}, {-1, 0, 0}, {0, 0, 1}, {1e-38f, 0, 0}, {1e-30f, 0, 0}, {0, -0.f, 0},
        {1e15f, 1e15f, 1e15f}, {3e38f, 1, 0}, {1e30f, 0, -1e30f}, {3e38f, 3e38f, -3e38f}};
    // clang-format on
    const tav::CartesianArray layouts[] = {
        DefaultSpeakersFor(Pan::Type::Vbap, 12),
        {},
        {{0, 0, 0}},
        tav::CartesianArray(8, {0, 0, 0}),
        tav::CartesianArray(8, {1, 2, 3}),
        {{-2, 1, 0}, {-1, 1, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}},
        {{-1, 0, 0}, {2, 0, 0}, {3, 0, 0}},
        {{1, 0, 0}, {-1, 0, 0}, {0, 0, 0}},
        {{1e38f, 0, 0}, {-1e38f, 1e38f, 0}, {0, -1e-38f, 0}}};
    const auto pan = Make(GetParam(), 1);
    PanPlayer player(*pan, 8000.f);
    for (const auto& layout : layouts) {
        try {
            pan->SetSpeakersPositions(layout);
        } catch (const tav::Exception&) {  // reported, and in force
        }
        for (const auto& position : odd) {
            pan->SetSourcePosition(0, position, true, true);
            for (const double gain : player.SteadyGains(0)) {  // one that is not finite fails
                ASSERT_LE(std::fabs(gain), GetParam().mostGain) << position.x;
            }
        }
    }
}

TEST_P(PannerAnywhere, WorksWithoutSourcesAndInThousandsOfFrames) {
    const auto none = Make(GetParam(), 0);
    for (const auto& output : PanPlayer(*none, 48000.f).Play(64, Poison)) {
        EXPECT_EQ(output, std::vector<double>(64, 0.0));
    }
    // Blocks longer than announced give what announced ones give.
    const auto whole = Make(GetParam()), pieces = Make(GetParam());
    PanPlayer longBlocks(*whole, 48000.f, 1000), shortBlocks(*pieces, 48000.f, 50);
    whole->SetBufferSize(50);
    EXPECT_EQ(longBlocks.Play(4000, Music), shortBlocks.Play(4000, Music));
}

// A preset that is recalled says again what is in force, at times in mid-glide.
TEST_P(PannerAnywhere, GoesOnAsBeforeWhenToldTheSameAgain) {
    const auto reminded = Make(GetParam()), left = Make(GetParam());
    PanPlayer first(*reminded), second(*left);
    for (Pan* pan : {reminded.get(), left.get()}) {
        pan->SetSourcePosition(0, {1, 2, 0.5f}, false, false);
    }
    EXPECT_EQ(first.Play(640, Music), second.Play(640, Music));
    reminded->SetInterpolationTime(reminded->GetInterpolationTime());
    reminded->SetSourcePosition(0, {1, 2, 0.5f}, false, false);
    reminded->SetSourceSpread(0, reminded->SourceSpread(0));
    reminded->SetNormalization(reminded->GetNormalization());
    reminded->SetSourceMute(0, false);
    EXPECT_EQ(first.Play(640, Music), second.Play(640, Music));
}

INSTANTIATE_TEST_SUITE_P(Panners,
                         PannerAnywhere,
                         testing::ValuesIn(kAllPanners),
                         [](const auto& test) { return Tests::NameOf(test.param); });

// The sum of 250 sources on as many loudspeakers: each plays its own one.
TEST(LargestPanner, FeedsEachSourceToItsLoudspeaker) {
    constexpr unsigned kCount = 250;
    for (const char* type : {"angular", "vbap2d", "vbip2d", "subwoofers"}) {
        const auto pan = Tests::OnDefaultSpeakers(kCount, kCount, type);
        pan->SetSourcesPositions(DefaultSpeakersFor(pan->GetType(), kCount), true);
        PanPlayer player(*pan, 8000.f);
        const auto numbered = [](unsigned input, std::size_t) { return input + 1.0; };
        const PanPlayer::Audio audio = player.Play(6400, numbered);
        for (unsigned o = 0; o < kCount; ++o)
            ASSERT_NEAR(audio[o].back(), o + 1.0, 0.02 * (o + 1.0));
    }
}

}  // namespace
}  // namespace Quilo
