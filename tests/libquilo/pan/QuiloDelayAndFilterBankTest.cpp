// SPDX-License-Identifier: MIT
#include "pan/QuiloDelayAndFilterBank.h"

#include "reference/PlainPathVoice.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <random>

namespace Quilo {
namespace {

constexpr float kRate = 48000.f;
constexpr float kGlideMs = 30.f;
constexpr ShadowCorners kCorners{.headHz = 1250.f, .torsoHz = 650.f};

EarPaths SomePaths(std::mt19937& random) {
    const auto between = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    EarPaths paths;
    for (auto* ways : {&paths.direct, &paths.reflected}) {
        for (EarPath& path : *ways) {
            path = {between(0.f, 3.f), between(0.f, 1.f), between(0.2f, 2.f), between(0.1f, 1.f)};
        }
    }
    for (EarPath& path : paths.reflected) path.torsoShadow = 1.f;
    return paths;
}

// Lanes, groups, pieces and segments of glides make no difference: every source is the one voice
// that it would be alone, at rest and in motion.
TEST(DelayAndFilterBank, SoundsLikeOneVoiceAfterTheOther) {
    constexpr unsigned kSources = 19, kBlocks = 150;
    for (const unsigned frames : {64u, 100u, 17u}) {
        DelayAndFilterBank bank(kSources, kRate, true);
        bank.SetCorners(kCorners, 0.f);
        std::deque<Tests::PlainPathVoice> voices;
        std::mt19937 random(frames);
        for (unsigned i = 0; i < kSources; ++i) {
            const EarPaths paths = SomePaths(random);
            voices.emplace_back(kRate, kCorners.headHz, kCorners.torsoHz, kGlideMs)
                .Set(paths, true);
            bank.SetSource(i, paths, 1.f, 0.f);
        }
        double loudest = 0.0;
        for (unsigned block = 0; block < kBlocks; ++block) {
            std::vector<Tests::Signal> signals;
            std::vector<const float*> inputs;
            for (unsigned i = 0; i < kSources; ++i) {
                signals.push_back(Tests::Noise(frames, block * kSources + i, -0.1f, 0.1f));
            }
            for (const auto& signal : signals) inputs.push_back(signal.data());
            for (unsigned i = block % 5; block >= 10 && i < kSources; i += 7) {
                const EarPaths paths = SomePaths(random);
                const bool immediate = random() % 4 == 0;
                voices[i].Set(paths, immediate);
                bank.SetSource(i, paths, 1.f, immediate ? 0.f : kGlideMs);
            }
            Tests::Signal expected[2] = {Tests::Signal(frames), Tests::Signal(frames)};
            Tests::Signal heard[2] = {Tests::Signal(frames), Tests::Signal(frames)};
            float* const ears[] = {expected[0].data(), expected[1].data()};
            for (unsigned i = 0; i < kSources; ++i) voices[i].Perform(ears, inputs[i], frames);
            bank.Perform(heard[0].data(), heard[1].data(), inputs.data(), frames);
            for (unsigned e = 0; e < 2; ++e) {
                for (unsigned k = 0; k < frames; ++k) {
                    loudest = std::max(loudest, std::fabs(static_cast<double>(expected[e][k])));
                    ASSERT_NEAR(heard[e][k], expected[e][k], 2e-4f) << block << " " << k;
                }
            }
        }
        EXPECT_GT(loudest, 0.5);
    }
}

// A head that grows moves the corner, smoothly and to its place; at rest it is there at once.
TEST(DelayAndFilterBank, GlidesToNewCorners) {
    EarPaths paths;
    for (EarPath& path : paths.direct) path.headShadow = 0.f;  // a low-pass of first order
    const auto sine = Tests::Sine(2000.0, 48000.0, 9600);
    const float* const input = sine.data();
    Tests::Signal glided(9600), there(9600), unheard(9600);
    DelayAndFilterBank moving(1, kRate, false), resting(1, kRate, false);
    for (DelayAndFilterBank* bank : {&moving, &resting}) bank->SetSource(0, paths, 1.f, 0.f);
    resting.SetCorners({.headHz = 4000.f}, kGlideMs);
    resting.Perform(there.data(), unheard.data(), &input, 9600);
    moving.SetCorners({.headHz = 250.f}, kGlideMs);
    moving.Perform(glided.data(), unheard.data(), &input, 2400);
    moving.SetCorners({.headHz = 4000.f}, kGlideMs);
    const float* const rest = input + 2400;
    moving.Perform(glided.data() + 2400, unheard.data() + 2400, &rest, 7200);
    float steepest = 0.f, steep = 0.f;
    for (std::size_t k = 2001; k < 9600; ++k) {
        steepest = std::max(steepest, std::fabs(glided[k] - glided[k - 1]));
        steep = std::max(steep, std::fabs(there[k] - there[k - 1]));
        if (k > 4200) {
            ASSERT_NEAR(glided[k], there[k], 1e-5f) << k;
        }
    }
    EXPECT_LT(steepest, 1.05f * steep);
}

}  // namespace
}  // namespace Quilo
