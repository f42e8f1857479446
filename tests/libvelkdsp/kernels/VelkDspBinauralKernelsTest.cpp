// SPDX-License-Identifier: MIT
#include "kernels/VelkDspBinauralKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <vector>

namespace tav {
namespace {

using Tests::Guarded;

constexpr std::size_t kRow = static_cast<std::size_t>(kSourceLanes);

class BinauralKernelsOf : public Tests::KernelsOf<BinauralKernels> {};

TEST_P(BinauralKernelsOf, FirstOrder) {
    const auto gains = Tests::Noise(2 * kRow, 1, 0.f, 1.f), mix = Tests::Noise(4 * kRow, 2);
    const auto steps = Tests::Noise(4 * kRow, 3, -0.01f, 0.01f);
    const auto states = Tests::Noise(2 * kRow, 4);
    Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
        const std::size_t size = kRow * static_cast<std::size_t>(n);
        for (int variant = 0; variant < 4; ++variant) {
            const bool adds = variant % 2 == 1, moves = variant >= 2;
            std::vector<float> rows[2][4];
            for (int side = 0; side < 2; ++side) {
                const BinauralKernels& kernels = side == 0 ? tested_ : plain_;
                Guarded<float> left(start, Tests::Noise(size, 5)), right(3, Tests::Noise(size, 6));
                Guarded<float> sums[2] = {{start, Tests::Noise(size, 7)},
                                          {5, Tests::Noise(size, 8)}};
                Guarded<float> s(start, states);
                const EarRows in{left.Data(), right.Data()};
                const EarRows out = adds ? EarRows{sums[0].Data(), sums[1].Data()} : in;
                kernels.firstOrder(
                    {gains.data(), mix.data(), moves ? steps.data() : nullptr, s.Data()}, in, out,
                    adds, n);
                rows[side][0] = adds ? sums[0].Values() : left.Values();
                rows[side][1] = adds ? sums[1].Values() : right.Values();
                rows[side][2] = s.Values();
            }
            // States stay below 3, mixes below 1.7; 67 steps of the mix are 67 roundings.
            for (int r = 0; r < 3; ++r) {
                Tests::ExpectNear(rows[0][r], rows[1][r], 100 * Tests::kEpsilon);
            }
        }
    });
}

INSTANTIATE_FOR_ALL_SETS(BinauralKernelsOf);

}  // namespace
}  // namespace tav
