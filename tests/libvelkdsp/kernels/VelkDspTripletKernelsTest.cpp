// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include "kernels/VelkDspInstructionSet.h"

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

TEST(TripletKernels, AllSetsFindTheFirstHighestMinimumOfEachLane) {
    constexpr auto kLanes = static_cast<std::size_t>(kTripletLanes);
    std::mt19937 generator(1);
    for (int round = 0; round < 200; ++round) {
        const std::int32_t numBlocks = round % 7;
        std::vector<float> elements(static_cast<std::size_t>(numBlocks) * 9 * kLanes + 1);
        std::ranges::generate(elements, [&] { return Element(generator); });
        const float* const first = elements.data() + round % 2;  // any alignment
        const std::array<float, 3> p{0.7f, -1.1f, 1.f / 3.f};
        const float toBeat = round % 3 == 0 ? 0.1f : -100000.f;

        std::array<float, kLanes> best;
        std::array<std::int32_t, kLanes> where;
        best.fill(toBeat);
        where.fill(-1);
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            for (std::int32_t block = 0; block < numBlocks; ++block) {
                const float* m = first + static_cast<std::size_t>(block) * 9 * kLanes + lane;
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
        for (const InstructionSet set : RunnableInstructionSets()) {
            std::array<float, kLanes> found;
            std::array<std::int32_t, kLanes> foundWhere;
            found.fill(toBeat);
            foundWhere.fill(-1);
            KernelsFor<TripletKernels>(set).findPeaks(first, numBlocks, p.data(), found.data(),
                                                      foundWhere.data());
            EXPECT_EQ(found, best) << NameOf(set) << " round " << round;
            EXPECT_EQ(foundWhere, where) << NameOf(set) << " round " << round;
        }
    }
}

}  // namespace
}  // namespace tav
