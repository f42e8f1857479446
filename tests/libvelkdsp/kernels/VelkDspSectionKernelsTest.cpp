// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tav {
namespace {

constexpr int kBanks = 2;

/// Stable sections with corners all over the band, anything in the mix and in the states.
std::vector<SectionBank> RandomBanks(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<SectionBank> banks(kBanks);
    for (SectionBank& b : banks) {
        for (int lane = 0; lane < kSectionLanes; ++lane) {
            const double g = std::pow(10.0, 1.5 * uniform(random) - 1.0);
            b.a1[lane] = 1.0 / (1.0 + g * (g + 0.1 + std::abs(uniform(random))));
            b.a2[lane] = g * b.a1[lane];
            b.a3[lane] = g * b.a2[lane];
            for (auto* row : {b.s1, b.s2, b.m0, b.m1, b.m2}) row[lane] = uniform(random);
            for (auto* row : {b.step0, b.step1, b.step2}) row[lane] = 0.01 * uniform(random);
        }
    }
    return banks;
}

class SectionKernelsOf : public Tests::KernelsOf<SectionKernels> {};

/// Runs the first `numLanes` rows of `signals` in place, `first` frames and then the rest.
void Play(const SectionKernels& kernels,
          bool moving,
          int numLanes,
          float* signals,
          int n,
          int first,
          std::vector<SectionBank>& banks) {
    for (const int frames : {first, n - first}) {
        float* outputs[kSectionLanes];
        const float* inputs[kSectionLanes];
        for (int lane = 0; lane < numLanes; ++lane)
            inputs[lane] = outputs[lane] = signals + lane * n;
        const SectionRun run{banks.data(), kBanks, numLanes, outputs, inputs, frames};
        (moving ? kernels.runMoving : kernels.run)(run);
        signals += frames;
    }
}

TEST_P(SectionKernelsOf, AgreeWithTheScalarTwinAndWithThemselvesInPieces) {
    for (const bool moving : {false, true}) {
        for (int lanes = 1; lanes <= kSectionLanes; ++lanes) {
            Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
                SCOPED_TRACE(lanes);
                auto expected = Tests::Noise(static_cast<std::size_t>(lanes * n), 1);
                Tests::Guarded<float> whole(start, expected), cut(start, expected);
                auto expectedBanks = RandomBanks(3), wholeBanks = expectedBanks,
                     cutBanks = expectedBanks;
                Play(plain_, moving, lanes, expected.data(), n, n, expectedBanks);
                Play(tested_, moving, lanes, whole.Data(), n, n, wholeBanks);
                Play(tested_, moving, lanes, cut.Data(), n, n / 3, cutBanks);
                EXPECT_EQ(whole.Values(), cut.Values());
                for (std::size_t k = 0; k < expected.size(); ++k) {
                    // Doubles throughout: what differs is the last bit of the float.
                    ASSERT_NEAR(whole.Data()[k], expected[k],
                                2e-7 * (1.0 + std::abs(static_cast<double>(expected[k]))));
                }
                for (int lane = 0; lane < lanes; ++lane) {
                    ASSERT_NEAR(wholeBanks[1].s1[lane], expectedBanks[1].s1[lane], 1e-12);
                }
            });
        }
    }
}

INSTANTIATE_FOR_ALL_SETS(SectionKernelsOf);

}  // namespace
}  // namespace tav
