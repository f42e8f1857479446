// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

#include "kernels/VelkDspInstructionSet.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <span>
#include <vector>

namespace tav {
namespace {

constexpr int kMostFrames = 67;
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

class SectionKernelSets : public testing::TestWithParam<InstructionSet> {
protected:
    /// Runs `numLanes` channels in pieces of the given sizes.
    void Play(const SectionKernels& kernels,
              bool moving,
              int numLanes,
              std::span<const int> pieces,
              std::vector<std::vector<float>>& signals,
              std::vector<SectionBank>& banks) const {
        int done = 0;
        for (const int n : pieces) {
            float* outputs[kSectionLanes];
            const float* inputs[kSectionLanes];
            for (int lane = 0; lane < numLanes; ++lane) {
                outputs[lane] = signals[static_cast<std::size_t>(lane)].data() + done;
                inputs[lane] = outputs[lane];
            }
            (moving ? kernels.runMoving
                    : kernels.run)({banks.data(), kBanks, numLanes, outputs, inputs, n});
            done += n;
        }
    }

    std::vector<std::vector<float>> Noise() const {
        std::vector<std::vector<float>> signals;
        for (unsigned lane = 0; lane < kSectionLanes; ++lane)
            signals.push_back(Tests::Noise(kMostFrames, lane));
        return signals;
    }
};

TEST_P(SectionKernelSets, AgreeWithTheScalarTwinAndWithThemselvesInPieces) {
    const SectionKernels& tested = KernelsFor<SectionKernels>(GetParam());
    for (const bool moving : {false, true}) {
        for (int lanes = 1; lanes <= kSectionLanes; ++lanes) {
            for (int n = 0; n <= kMostFrames; n += lanes == 5 ? 1 : 13) {
                auto expected = Noise(), whole = Noise(), cut = Noise();
                auto expectedBanks = RandomBanks(3), wholeBanks = RandomBanks(3),
                     cutBanks = RandomBanks(3);
                Play(SectionKernels::Scalar(), moving, lanes, {{n}}, expected, expectedBanks);
                Play(tested, moving, lanes, {{n}}, whole, wholeBanks);
                Play(tested, moving, lanes, {{n / 3, n - n / 3}}, cut, cutBanks);
                EXPECT_EQ(whole, cut) << lanes << " lanes, " << n;
                for (std::size_t lane = 0; lane < kSectionLanes; ++lane) {
                    for (std::size_t k = 0; k < kMostFrames; ++k) {
                        // Doubles throughout: what differs is the last bit of the float.
                        ASSERT_NEAR(whole[lane][k], expected[lane][k],
                                    2e-7 * (1.0 + std::abs(static_cast<double>(expected[lane][k]))))
                            << lanes << " lanes, " << n << ", lane " << lane << ", frame " << k;
                    }
                    if (static_cast<int>(lane) >= lanes) continue;
                    ASSERT_NEAR(wholeBanks[1].s1[lane], expectedBanks[1].s1[lane], 1e-12);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets,
                         SectionKernelSets,
                         testing::ValuesIn(RunnableInstructionSets().begin(),
                                           RunnableInstructionSets().end()),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace tav
