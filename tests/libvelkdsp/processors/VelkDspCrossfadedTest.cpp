// SPDX-License-Identifier: MIT
// The filters that are exchanged while they sound: finite responses and cascades.
#include "processors/VelkDspCrossfadedCascade.h"
#include "processors/VelkDspCrossfadedFir.h"
#include "reference/PlainFourier.h"
#include "reference/Signals.h"
#include "support/BlockPlayer.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace tav {
namespace {

constexpr float kRate = 48000.f;
using Tests::kNothing;
using Tests::Noise;
using Tests::Signal;

/// What comes out of a filter in blocks; `before(frame)` is called in front of each of them.
template <class Before, class Perform>
Signal Play(const Signal& input, unsigned blockSize, Before before, Perform perform) {
    return Tests::PlayBlocks<float>(
        {input}, 1, input.size(), blockSize,
        [&](auto outputs, auto inputs, unsigned n) { perform(outputs[0], inputs[0], n); },
        before)[0];
}

Signal PlayFir(CrossfadedFir& fir, const Signal& input, unsigned blockSize, auto before) {
    return Play(input, blockSize, before,
                [&](float* y, const float* x, unsigned n) { fir.Perform(y, x, n); });
}

/// What comes out of `taps` from a filter that heard nothing before `from`.
std::vector<double> Convolve(const Signal& taps, const Signal& input, std::size_t from = 0) {
    std::vector<double> output(input.size());
    for (std::size_t k = from; k < input.size(); ++k) {
        for (std::size_t t = 0; t < std::min(taps.size(), k - from + 1); ++t) {
            output[k] += static_cast<double>(taps[t]) * static_cast<double>(input[k - t]);
        }
    }
    return output;
}

class FirOfLength : public testing::TestWithParam<std::size_t> {};

TEST_P(FirOfLength, IsTheConvolutionInEveryFormAndBlock) {
    const Signal taps = Noise(GetParam(), 1), input = Noise(6000, 2);
    double largest = 0.0;  // sum of the magnitudes of the taps: what a sample can be
    for (const float tap : taps) largest += std::abs(static_cast<double>(tap));
    const std::vector<double> expected = Convolve(taps, input);
    for (const auto form : {FirResponse::Form::Cheapest, FirResponse::Form::Partitioned}) {
        const FirResponse response(taps, form);
        for (const unsigned blockSize : {1u, 17u, 64u, 4096u}) {
            CrossfadedFir fir(taps.size(), kRate);
            fir.SetFade(0.f, FadeShape::Linear);
            fir.Load(&response);
            const Signal output = PlayFir(fir, input, blockSize, kNothing);
            for (std::size_t k = 0; k < output.size(); ++k) {
                ASSERT_NEAR(output[k], expected[k], 1e-6 * (1.0 + largest))
                    << "blocks of " << blockSize << ", frame " << k;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths,
                         FirOfLength,
                         testing::Values(0, 1, 127, 128, 129, 256, 512, 513, 3000),
                         testing::PrintToStringParamName());

/// Weights read from a constant: the old filter gives 1, the new one 3.
struct ShapeCase {
    const char* name;
    FadeShape shape;
    double (*expected)(double t);
};
double Sin(double t) { return std::sin(0.5 * std::numbers::pi * t); }
double Cos(double t) { return std::cos(0.5 * std::numbers::pi * t); }
const ShapeCase kShapes[] = {
    {"Linear", FadeShape::Linear, [](double t) { return 1.0 - t + 3.0 * t; }},
    {"Cosine", FadeShape::Cosine, [](double t) { return Cos(t) + 3.0 * Sin(t); }},
    {"SquareCosine", FadeShape::SquareCosine,
     [](double t) { return Cos(t) * Cos(t) + 3.0 * Sin(t) * Sin(t); }},
    {"Unknown", FadeShape{9}, [](double t) { return Cos(t) * Cos(t) + 3.0 * Sin(t) * Sin(t); }},
};

class FadeOfShape : public testing::TestWithParam<ShapeCase> {};

TEST_P(FadeOfShape, FollowsItsWeightsAndTakesTheNewestOfThoseThatWait) {
    const FirResponse one(Signal{1.f}), two(Signal{2.f}), three(Signal{3.f});
    const Signal ones(1000, 1.f);
    for (const unsigned blockSize : {1u, 100u, 1000u}) {
        CrossfadedFir fir(1, kRate);
        fir.SetFade(0.f, GetParam().shape);
        fir.Load(&one);
        EXPECT_EQ(PlayFir(fir, Signal(3, 1.f), 1, kNothing), Signal(3, 1.f));
        fir.SetFade(5.f, GetParam().shape);  // 240 samples
        fir.Load(&three);
        fir.Load(&three);
        const auto retarget = [&](std::size_t frame) {
            if (frame != 100) return;
            fir.Load(&two);
            fir.Load(&one);
            fir.SetFade(10.f, FadeShape::Linear);  // of the next fade
        };
        const Signal output = PlayFir(fir, ones, blockSize, retarget);
        for (std::size_t k = 0; k < 240; ++k) {
            const double t = static_cast<double>(k + 1) / 240.0;
            ASSERT_NEAR(output[k], GetParam().expected(t), 1e-6) << k;
        }
        EXPECT_EQ(output[239], 3.f);
        // In one block there was no moment to retarget.
        for (std::size_t k = 240; k < 1000; ++k) {
            const double t = std::min(static_cast<double>(k - 239) / 480.0, 1.0);
            ASSERT_NEAR(output[k], blockSize == 1000 ? 3.0 : 3.0 - 2.0 * t, 1e-6) << k;
        }
        // To one that is equal nothing fades; a cosine would swell by 3 dB.
        const FirResponse equal(Signal{output.back()});
        fir.SetFade(5.f, GetParam().shape);
        fir.Load(&equal);
        EXPECT_EQ(PlayFir(fir, ones, blockSize, kNothing), Signal(1000, output.back()));
        fir.Load(nullptr);
        EXPECT_EQ(PlayFir(fir, ones, blockSize, kNothing).back(), 0.f);
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, FadeOfShape, testing::ValuesIn(kShapes), Tests::kByName);

/// Energy above 3 kHz in relation to all, in decibels, of the 65536 samples in the middle.
double HighEnergyDb(const Signal& signal) {
    constexpr std::size_t kSize = 65536;
    const auto first = signal.begin() + static_cast<std::ptrdiff_t>(signal.size() - kSize) / 2;
    std::vector<double> part(first, first + kSize);
    for (std::size_t k = 0; k < kSize; ++k) {
        part[k] *= std::pow(std::sin(std::numbers::pi * static_cast<double>(k) / kSize), 8.0);
    }
    const auto bins = Plain::Spectrum(part, kSize);
    double all = 0.0, high = 0.0;
    for (std::size_t k = 0; k < bins.size(); ++k) {
        all += std::norm(bins[k]);
        if (static_cast<float>(k) * kRate / kSize > 3000.f) high += std::norm(bins[k]);
    }
    return 10.0 * std::log10(high / all);
}

/// As rough as a measured ear: six peaks and dips of up to 15 dB from 800 Hz to 16 kHz.
BiquadCells RandomCells(std::mt19937& random) {
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    BiquadCells cells(6);
    for (BiquadCell& cell : cells) {
        const double turn =
            2.0 * std::numbers::pi / 48000.0 * 800.0 * std::pow(20.0, uniform(random));
        const double width = std::sin(turn) / (1.0 + 5.0 * uniform(random));
        const double a = std::pow(10.0, 15.0 / 40.0 * (2.0 * uniform(random) - 1.0));
        const double a0 = 1.0 + width / a;
        const auto part = [a0](double v) { return static_cast<float>(v / a0); };
        cell = {part(1.0 + width * a), part(-2.0 * std::cos(turn)), part(1.0 - width * a),
                part(-2.0 * std::cos(turn)), part(1.0 - width / a)};
    }
    return cells;
}

// Four responses follow each other in the middle, the last three inside the first fade.
TEST(CrossfadedFilters, DoNotClick) {
    std::mt19937 random(5);
    const Signal sine = Tests::Sine(500.0, 48000.0, 66000, 0.5);
    for (const unsigned numChanges : {1u, 4u}) {
        double worst = -300.0;
        for (int round = 0; round < 20; ++round) {
            std::deque<BiquadCells> cells;
            std::deque<FirResponse> responses;
            for (int i = 0; i < 5; ++i) {
                cells.push_back(RandomCells(random));
                Signal taps = Noise(200, static_cast<unsigned>(10 * round + i));
                for (std::size_t t = 0; t < taps.size(); ++t) {
                    taps[t] *= std::exp(-0.03f * static_cast<float>(t));
                }
                responses.emplace_back(taps);
            }
            CrossfadedCascade cascade(6, kRate);
            CrossfadedFir fir(200, kRate);
            cascade.Load(&cells[0]);
            fir.Load(&responses[0]);
            /// Loads the next response 50 samples after the last one.
            const auto changes = [&](auto& filter, const auto& following) {
                return [&](std::size_t frame) {
                    if (frame < 33000 || (frame - 33000) % 50 != 0) return;
                    const std::size_t i = (frame - 33000) / 50 + 1;
                    if (i <= numChanges) filter.Load(&following[i]);
                };
            };
            const Signal convolved = PlayFir(fir, sine, 50, changes(fir, responses));
            const auto perform = [&](float* y, const float* x, unsigned n) {
                unsigned starts = 1;
                cascade.Perform(y, x, n, starts);
            };
            const Signal cascaded = Play(sine, 50, changes(cascade, cells), perform);
            worst = std::max({worst, HighEnergyDb(convolved), HighEnergyDb(cascaded)});
        }
        EXPECT_LT(worst, -90.0) << numChanges << " changes";
    }
}

TEST(CrossfadedCascade, RunsItsCellsOneAfterTheOther) {
    std::mt19937 random(6);
    const BiquadCells cells = RandomCells(random);
    const Signal input = Noise(2000, 7);
    std::vector<double> expected(input.begin(), input.end());
    for (const BiquadCell& cell : cells) {
        const auto d = [](float v) { return static_cast<double>(v); };
        double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
        for (double& sample : expected) {
            const double y = d(cell.b0) * sample + d(cell.b1) * x1 + d(cell.b2) * x2 -
                             d(cell.a1) * y1 - d(cell.a2) * y2;
            x2 = std::exchange(x1, sample);
            y2 = std::exchange(y1, y);
            sample = y;
        }
    }
    for (const unsigned blockSize : {1u, 600u}) {
        CrossfadedCascade cascade(6, kRate);
        cascade.SetFade(0.f, FadeShape::Linear);
        cascade.Load(&cells);
        unsigned starts = 0;
        const auto perform = [&](float* y, const float* x, unsigned n) {
            cascade.Perform(y, x, n, starts);
        };
        EXPECT_EQ(Play(input, blockSize, kNothing, perform), Signal(2000));  // may not begin
        cascade.Clear();
        starts = 1;
        const Signal output = Play(input, blockSize, kNothing, perform);
        for (std::size_t k = 0; k < output.size(); ++k) ASSERT_NEAR(output[k], expected[k], 1e-4);
        EXPECT_EQ(starts, 0u);
        // What is no number goes through and leaves nothing behind.
        Signal burst(64, std::numeric_limits<float>::quiet_NaN());
        EXPECT_EQ(Play(burst, 64, kNothing, perform), Signal(64));
        const Signal after = Play(input, blockSize, kNothing, perform);
        for (std::size_t k = 0; k < after.size(); ++k) ASSERT_NEAR(after[k], expected[k], 1e-4);
    }
}

TEST(CrossfadedCascade, StartsFromItsPastAloneWheneverItIsExchanged) {
    std::mt19937 random(7);
    const BiquadCells a = RandomCells(random), b = RandomCells(random);
    const Signal noise = Noise(600, 8), silence(200);
    CrossfadedCascade cascade(6, kRate);
    unsigned starts = 9;
    const auto play = [&](const Signal& input) {
        return Play(input, 64, kNothing, [&](float* y, const float* x, unsigned n) {
            cascade.Perform(y, x, n, starts);
        });
    };
    const auto load = [&](const BiquadCells& cells, float fadeMs) {
        cascade.SetFade(fadeMs, FadeShape::Linear);
        cascade.Load(&cells);
    };
    load(a, 0.f);
    play(noise);
    load(b, 0.f);
    play(silence);
    load(a, 0.f);
    EXPECT_EQ(play(silence), silence) << "what it heard the last time is no past";
    play(noise);
    load(b, 50.f);
    play(noise);
    cascade.Clear();
    EXPECT_EQ(play(silence), silence) << "in the middle of the fade";
    play(Signal(3000));
    play(noise);
    cascade.Clear();
    load(a, 0.f);
    EXPECT_EQ(play(silence), silence) << "a past that is forgotten";
}

}  // namespace
}  // namespace tav
