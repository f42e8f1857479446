// SPDX-License-Identifier: MIT
#include "kernels/VelkDspFilterKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace tav {
namespace {

using Tests::ForEveryLength;
using Tests::ForEveryLengthAndStart;
using Tests::Guarded;
using Tests::kLongestRun;

constexpr std::size_t kLanes = static_cast<std::size_t>(kSourceLanes);

class FilterKernelsOf : public Tests::KernelsOf<FilterKernels> {
protected:
    /// Other numbers at every call.
    std::vector<float> Noise(std::size_t count, float low = -1.f, float high = 1.f) {
        return Tests::Noise(count, ++seed_, low, high);
    }

private:
    unsigned seed_ = 7;
};

TEST_P(FilterKernelsOf, AllPass) {
    ForEveryLengthAndStart(kLongestRun, [&](int n, int start) {
        auto signal = Noise(static_cast<std::size_t>(n)), ring = Noise(signal.size());
        Guarded<float> x(start, signal), w((5 * start) % Tests::kStarts, ring);
        tested_.allPass(x.Data(), w.Data(), -0.5f, n);
        plain_.allPass(signal.data(), ring.data(), -0.5f, n);
        Tests::ExpectNear(x.Values(), signal, 3e-7);  // sums of magnitudes up to 1.75
        Tests::ExpectNear(w.Values(), ring, 3e-7);
    });
}

TEST_P(FilterKernelsOf, LimitGrowth) {
    ForEveryLengthAndStart(kLongestRun, [&](int n, int start) {
        auto rows = Noise(kLanes * static_cast<std::size_t>(n), 0.f, 2.f);
        auto reached = Noise(kLanes, 0.f, 1.5f);
        Guarded<float> testedRows(start, rows), testedReached(start, reached);
        tested_.limitGrowth(testedRows.Data(), testedReached.Data(), 1.25f, n);
        plain_.limitGrowth(rows.data(), reached.data(), 1.25f, n);
        EXPECT_EQ(testedRows.Values(), rows);
        EXPECT_EQ(testedReached.Values(), reached);
    });
}

TEST_P(FilterKernelsOf, RowsAndBack) {
    ForEveryLengthAndStart(kLongestRun, [&](int n, int start) {
        const auto pitch = static_cast<std::size_t>(n);
        const auto signals = Noise(kLanes * pitch);
        Guarded<float> rows(start, std::vector<float>(signals.size()));
        Guarded<float> back(start, std::vector<float>(signals.size()));
        std::vector<const float*> from;
        std::vector<float*> to;
        for (std::size_t i = 0; i < kLanes; ++i) {
            from.push_back(signals.data() + i * pitch);
            to.push_back(back.Data() + i * pitch);
        }
        tested_.toRows(from.data(), rows.Data(), n);
        tested_.fromRows(rows.Data(), to.data(), n);
        for (std::size_t at = 0; at < signals.size(); ++at) {
            ASSERT_EQ(rows.Data()[at], from[at % kLanes][at / kLanes]);
        }
        EXPECT_EQ(back.Values(), signals);
    });
}

struct Series {
    const char* name;
    std::vector<NearFieldSection> sections;
    double gain;  // of all sections but the first: below 2 x 3^2 each
};

// A stable recursion of bounded gain: rounding differs by a few epsilons times the largest signal,
// which ratios up to 3 and resonances below 2 keep under 100. A section amplifies what the
// high-pass or the section before it has rounded.
TEST_P(FilterKernelsOf, NearFieldSectionsOfEveryKind) {
    const NearFieldSection pair{false, 0.2f, 1.2f, 0.9f};
    const NearFieldSection pole{true, 0.1f, 0.f, 0.f};
    const Series kSeries[] = {{"pair", {pair}, 1.0},
                              {"pole", {pole}, 1.0},
                              {"two pairs", {pair, pair}, 18.0},
                              {"pair and pole", {pair, pole}, 18.0},
                              {"three", {pair, pair, pole}, 324.0}};
    for (const Series& series : kSeries) {
        for (const int highPass : {0, 1, 2, 3, 4}) {  // none, on, leaking, moving, both
            for (const std::ptrdiff_t stride : {std::ptrdiff_t{0}, kSourceLanes}) {
                ForEveryLength(kLongestRun, [&](int n, int start) {
                    SCOPED_TRACE(series.name);
                    const auto numRows = static_cast<std::size_t>(n);
                    auto g = Noise(kLanes, 0.f, 0.5f);
                    g[3] = 0.f;
                    const auto keep = Noise(kLanes, 0.5f, 1.f);
                    const auto ratios = Noise(kLanes * (numRows + 1), 0.f, 3.f);
                    const auto step = Noise(kLanes, 0.f, 0.005f);
                    const NearFieldLanes lanes{
                        highPass > 0 ? g.data() : nullptr, highPass > 2 ? step.data() : nullptr,
                        highPass % 2 == 0 ? keep.data() : nullptr, ratios.data(), stride};
                    auto states = Noise(series.sections.size() * kNearFieldStates * kLanes);
                    for (std::size_t s = 0; s < states.size() && highPass == 0; ++s) {
                        if (s / kLanes % kNearFieldStates < 2) states[s] = 0.f;
                    }
                    auto signal = Noise(kLanes * numRows);
                    Guarded<float> out(start, signal), testedStates(start, states);
                    const auto* const sections = series.sections.data();
                    const auto count = static_cast<int>(series.sections.size());
                    tested_.nearField(sections, count, lanes, testedStates.Data(), out.Data(),
                                      out.Data(), n);
                    plain_.nearField(sections, count, lanes, states.data(), signal.data(),
                                     signal.data(), n);
                    const double bound =
                        100.0 * Tests::kEpsilon * series.gain * (highPass > 0 ? 18.0 : 1.0);
                    Tests::ExpectNear(out.Values(), signal, bound);
                    Tests::ExpectNear(testedStates.Values(), states, bound);
                });
            }
        }
    }
}

INSTANTIATE_FOR_ALL_SETS(FilterKernelsOf);

}  // namespace
}  // namespace tav
