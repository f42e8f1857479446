// SPDX-License-Identifier: MIT
#include "processors/VelkDspDelay.h"

#include "reference/PlainDelay.h"
#include "reference/Signals.h"
#include "support/BlockPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace tav {
namespace {

using Tests::Impulse;
using Tests::Noise;

constexpr float kRate = 48000.f;
constexpr std::uint32_t kLagrange = 2, kAllpass = 3;

float Ms(float samples) { return samples * 1000.f / kRate; }

/// A delay at 48 kHz and what goes through it, block by block, under the trap.
struct Line {
    Line() {
        delay.SetSampleRate(kRate);
        delay.SetInterpolationTime(0.f);
    }

    std::vector<float> Play(const std::vector<float>& input, std::size_t block = 64) {
        return Tests::PlayBlocks<float>({input}, 1, input.size(), block,
                                        [this](auto outputs, auto inputs, unsigned n) {
                                            delay.Process(outputs, inputs, n);
                                        })[0];
    }

    Delay delay;
};

/// Everything a control thread may do between two blocks, at random, against the slow model.
class DelayModel : public testing::TestWithParam<std::uint32_t> {};

TEST_P(DelayModel, AgreesThroughGlidesJumpsAndGrowthOfTheRing) {
    const std::uint32_t code = GetParam();
    SCOPED_TRACE(testing::Message() << "seed " << code);
    std::mt19937 random(code);
    const auto oneOf = [&](auto... values) {
        const float list[] = {static_cast<float>(values)...};
        return list[random() % std::size(list)];
    };
    Line line;
    Plain::Delay model(static_cast<double>(kRate));
    line.delay.SetInterpolationKind(code);
    model.SetKind(code);
    const std::vector<float> noise = Noise(60000, code);
    double worst = 0.0;
    for (std::size_t begin = 0; begin < noise.size();) {
        for (auto changes = random() % 3; changes > 0; --changes) {
            const float glideMs = oneOf(0, 1, 5, 30);
            line.delay.SetInterpolationTime(glideMs);
            model.SetInterpolationTime(static_cast<double>(glideMs));
            // In milliseconds on both sides, so that both round the same number of samples.
            const float ms = Ms(oneOf(0, 0.3, 0.999, 1, 1.001, 1.7, 2, 31.25, 300, 700.5,
                                      begin > 20000 ? 12000.6 : 9));
            const bool immediate = random() % 4 == 0;
            line.delay.SetDelay(ms, immediate);
            model.SetDelay(
                static_cast<float>(static_cast<double>(ms) * 0.001 * static_cast<double>(kRate)),
                immediate);
        }
        const std::size_t block =
            std::min<std::size_t>(static_cast<std::size_t>(oneOf(1, 2, 17, 63, 64, 512, 513, 1500)),
                                  noise.size() - begin);
        const std::vector<float> output =
            line.Play({noise.begin() + static_cast<std::ptrdiff_t>(begin),
                       noise.begin() + static_cast<std::ptrdiff_t>(begin + block)},
                      block);
        for (std::size_t k = 0; k < block; ++k) {
            const double expected = model.Process(static_cast<double>(noise[begin + k]));
            worst = std::max(worst, std::abs(static_cast<double>(output[k]) - expected));
        }
        begin += block;
    }
    // A delay near 12000 samples is rounded to the nearest 2^-10 twice, when a glide is cut short
    // and when it is read; noise changes by at most 2 per sample. The allpass adds up earlier
    // errors.
    const double bound = 2.0 / 1024.0;
    EXPECT_LT(worst, code == kAllpass ? 2.0 * bound : bound);
}

INSTANTIATE_TEST_SUITE_P(Codes, DelayModel, testing::Values(1u, 2u, 3u, 5u, 6u, 7u, 8u));

TEST(Delay, OfLessThanASampleDoesNotDependOnTheBlockSize) {
    const std::vector<float> noise = Noise(2048, 6);
    for (std::uint32_t code = 0; code <= 8; ++code) {
        for (const float samples : {0.f, 0.3f, 0.5f, 1.f, 1.3f}) {
            std::vector<float> whole;
            for (const std::size_t block : {512u, 1u, 63u, 2048u}) {
                Line line;
                line.delay.SetInterpolationKind(code);
                line.delay.SetDelay(Ms(samples), true);
                // Noise all round the ring first: stale samples must not show.
                line.Play(Noise(20000, 7), 512);
                const std::vector<float> output = line.Play(noise, block);
                if (whole.empty()) whole = output;
                EXPECT_EQ(output, whole) << code << " " << samples << " " << block;
            }
        }
    }
}

TEST(Delay, AnInactiveInputGivesZerosAndIsForgottenWhileGlidesGoOn) {
    Line line;
    const std::vector<float> noise = Noise(512, 8);
    const std::vector<float> zeros(512, 0.f);
    line.Play(noise);
    line.delay.SetConnections(std::vector<short>{0}, std::vector<short>{1});
    line.delay.SetInterpolationTime(5.f);
    line.delay.SetDelay(Ms(100.f), false);
    EXPECT_EQ(line.Play(noise), zeros);
    line.delay.SetConnections(std::vector<short>{1}, std::vector<short>{1});
    const std::vector<float> after = line.Play(noise);
    EXPECT_TRUE(std::equal(after.begin(), after.begin() + 100, zeros.begin()));
    EXPECT_EQ(after[100], noise[0]);
}

TEST(Delay, ClearAndAnotherRateForgetTheSoundButNotTheDelay) {
    Line line;
    line.delay.SetInterpolationKind(kAllpass);
    line.delay.SetDelay(1.f, true);
    const std::vector<float> noise = Noise(512, 9);
    const std::vector<float> zeros(512, 0.f);
    line.Play(noise);
    line.delay.Clear();
    EXPECT_LT(std::ranges::max(line.Play(zeros)), 1e-15f);
    line.Play(noise);
    line.delay.SetInterpolationKind(kLagrange);
    line.delay.SetSampleRate(96000.f);
    const std::vector<float> impulse = line.Play(Impulse(512));
    EXPECT_EQ(std::ranges::find(impulse, 1.f) - impulse.begin(), 96);
    EXPECT_EQ(std::ranges::count(impulse, 0.f), 511);
}

TEST(Delay, NothingUnheardOfStaysInTheAllpass) {
    for (const float poison : {std::nanf(""), std::numeric_limits<float>::infinity(), 3e38f}) {
        Line line;
        line.delay.SetInterpolationKind(kAllpass);
        line.delay.SetDelay(Ms(3.4f), true);
        line.Play(std::vector<float>(1000, poison));
        line.Play(std::vector<float>(1024, 0.f));
        Line untouched;
        untouched.delay.SetInterpolationKind(kAllpass);
        untouched.delay.SetDelay(Ms(3.4f), true);
        const std::vector<float> noise = Noise(512, 10);
        const std::vector<float> expected = untouched.Play(noise);
        const std::vector<float> output = line.Play(noise);
        for (std::size_t n = 0; n < output.size(); ++n) {
            EXPECT_NEAR(output[n], expected[n], 1e-6) << poison << " " << n;
        }
    }
}

}  // namespace
}  // namespace tav
