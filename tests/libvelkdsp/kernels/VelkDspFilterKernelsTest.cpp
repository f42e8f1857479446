// SPDX-License-Identifier: MIT
// Vector kernels of filters against their scalar twins.
#include "kernels/VelkDspFilterKernels.h"

#include "kernels/VelkDspInstructionSet.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tav {
namespace {

constexpr std::size_t kLanes = static_cast<std::size_t>(kSourceLanes);
constexpr int kLongest = 67;

/// Other numbers at every call.
std::vector<float> Noise(std::size_t count, float low = -1.f, float high = 1.f) {
    static unsigned seed = 7;
    return Tests::Noise(count, ++seed, low, high);
}

class FilterKernelsOf : public testing::TestWithParam<InstructionSet> {
protected:
    const FilterKernels& tested_ = KernelsFor<FilterKernels>(GetParam());
    const FilterKernels& plain_ = FilterKernels::Scalar();
};

TEST_P(FilterKernelsOf, AllPassOfEveryLength) {
    for (std::size_t n = 0; n <= kLongest; ++n) {
        const auto signal = Noise(n + 3), ring = Noise(n + 3);
        auto x = signal, w = ring, plainX = signal, plainW = ring;
        tested_.allPass(x.data() + 1, w.data() + 1, -0.5f, static_cast<int>(n));
        plain_.allPass(plainX.data() + 1, plainW.data() + 1, -0.5f, static_cast<int>(n));
        for (std::size_t k = 0; k < n + 3; ++k) {
            EXPECT_NEAR(x[k], plainX[k], 3e-7f);  // sums of magnitudes up to 1.75
            EXPECT_NEAR(w[k], plainW[k], 3e-7f);
        }
    }
}

TEST_P(FilterKernelsOf, GrowthIsLimitedAsByTheScalarTwin) {
    for (std::size_t n = 0; n <= kLongest; ++n) {
        auto rows = Noise(kLanes * (n + 1), 0.f, 2.f), plainRows = rows;
        auto reached = Noise(kLanes, 0.f, 1.5f), plainReached = reached;
        tested_.limitGrowth(rows.data(), reached.data(), 1.25f, static_cast<int>(n));
        plain_.limitGrowth(plainRows.data(), plainReached.data(), 1.25f, static_cast<int>(n));
        EXPECT_EQ(rows, plainRows);
        EXPECT_EQ(reached, plainReached);
    }
}

TEST_P(FilterKernelsOf, RowsAndBackOfEveryLength) {
    for (std::size_t n = 0; n <= kLongest; ++n) {
        const auto signals = Noise(kLanes * (n + 1));
        std::vector<float> rows(kLanes * n, 9.f), back(signals.size(), 9.f);
        std::vector<const float*> from;
        std::vector<float*> to;
        for (std::size_t i = 0; i < kLanes; ++i) {
            from.push_back(signals.data() + i * (n + 1));
            to.push_back(back.data() + i * (n + 1));
        }
        tested_.toRows(from.data(), rows.data(), static_cast<int>(n));
        tested_.fromRows(rows.data(), to.data(), static_cast<int>(n));
        for (std::size_t i = 0; i < kLanes; ++i) {
            for (std::size_t k = 0; k < n; ++k) {
                ASSERT_EQ(rows[k * kLanes + i], from[i][k]);
                ASSERT_EQ(back[i * (n + 1) + k], from[i][k]);
            }
            EXPECT_EQ(back[i * (n + 1) + n], 9.f);
        }
    }
}

// A stable recursion of bounded gain: rounding differs by a few epsilons times the largest signal,
// which ratios up to 3 and resonances below 2 keep under 100. A second section amplifies that by
// its own gain, below 2 x 3^2.
TEST_P(FilterKernelsOf, NearFieldSectionsOfEveryKind) {
    for (const int kind : {0, 1, 2, 3}) {  // a pair, a pole, two pairs, a pair and a pole
        for (const int highPass : {0, 1, 2, 3, 4}) {  // none, on, leaking, moving, both
            for (const std::ptrdiff_t stride : {std::ptrdiff_t{0}, kSourceLanes}) {
                for (const std::size_t n :
                     {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{64}}) {
                    const NearFieldSection pair{false, 0.2f, 1.2f, 0.9f};
                    const NearFieldSection pole{true, 0.1f, 0.f, 0.f};
                    const NearFieldSection sections[] = {kind == 1 ? pole : pair,
                                                         kind == 2 ? pair : pole};
                    const int numSections = kind < 2 ? 1 : 2;
                    const float bound = 100.f * 1.2e-7f * (numSections == 1 ? 1.f : 18.f);
                    auto g = Noise(kLanes, 0.f, 0.5f);
                    g[3] = 0.f;
                    const auto keep = Noise(kLanes, 0.5f, 1.f);
                    const auto ratios = Noise(kLanes * (n + 1), 0.f, 3.f);
                    const auto step = Noise(kLanes, 0.f, 0.005f);
                    const NearFieldLanes lanes{
                        highPass > 0 ? g.data() : nullptr, highPass > 2 ? step.data() : nullptr,
                        highPass % 2 == 0 ? keep.data() : nullptr, ratios.data(), stride};
                    auto states = Noise(2 * kNearFieldStates * kLanes);
                    for (std::size_t s = 0; highPass == 0 && s < states.size(); s += 4 * kLanes) {
                        std::fill_n(states.begin() + static_cast<std::ptrdiff_t>(s), 2 * kLanes,
                                    0.f);
                    }
                    auto plainStates = states;
                    const auto in = Noise(kLanes * n);
                    auto out = in, plainOut = in;
                    tested_.nearField(sections, numSections, lanes, states.data(), out.data(),
                                      out.data(), static_cast<int>(n));
                    plain_.nearField(sections, numSections, lanes, plainStates.data(),
                                     plainOut.data(), plainOut.data(), static_cast<int>(n));
                    for (std::size_t k = 0; k < out.size(); ++k) {
                        ASSERT_NEAR(out[k], plainOut[k], bound);
                    }
                    for (std::size_t k = 0; k < states.size(); ++k) {
                        ASSERT_NEAR(states[k], plainStates[k], bound);
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets,
                         FilterKernelsOf,
                         testing::ValuesIn(RunnableInstructionSets().begin(),
                                           RunnableInstructionSets().end()),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace tav
