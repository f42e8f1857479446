// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace tav {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Few different values, so that equal minima are common; now and then what is no number.
float Element(std::mt19937& generator) {
    const auto kind = generator() % 200;
    if (kind == 0) return kNaN;
    if (kind == 1) return kInfinity;
    return static_cast<float>(generator() % 9) / 3.f - 1.f;
}

class TripletKernelsOf : public Tests::KernelsOf<TripletKernels> {};

TEST_P(TripletKernelsOf, FindTheFirstHighestMinimumOfEachLane) {
    constexpr auto kLanes = static_cast<std::size_t>(kTripletLanes);
    std::mt19937 generator(1);
    Tests::ForEveryLengthAndStart(12, [&](int numBlocks, int start) {
        std::vector<float> elements(static_cast<std::size_t>(numBlocks) * 9 * kLanes);
        std::ranges::generate(elements, [&] { return Element(generator); });
        const std::array<float, 3> p{0.7f, -1.1f, 1.f / 3.f};
        std::vector<float> best(kLanes, start % 3 == 0 ? 0.1f : -100000.f);
        std::vector<std::int32_t> where(kLanes, -1);
        Tests::Guarded<float> first(start, elements), found(start, best);
        Tests::Guarded<std::int32_t> foundWhere(start, where);
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            for (std::int32_t block = 0; block < numBlocks; ++block) {
                const float* m =
                    elements.data() + static_cast<std::size_t>(block) * 9 * kLanes + lane;
                std::array<float, 3> g;
                for (std::size_t row = 0; row < 3; ++row, m += 3 * kLanes) {
                    g[row] = m[0] * p[0] + m[kLanes] * p[1] + m[2 * kLanes] * p[2];
                }
                const float least = std::min(std::min(g[0], g[1]), g[2]);
                if (!(least > best[lane])) continue;
                best[lane] = least;
                where[lane] = block;
            }
        }
        tested_.findPeaks(first.Data(), numBlocks, p.data(), found.Data(), foundWhere.Data());
        EXPECT_EQ(found.Values(), best);
        EXPECT_EQ(foundWhere.Values(), where);
    });
}

INSTANTIATE_FOR_ALL_SETS(TripletKernelsOf);

}  // namespace
}  // namespace tav
