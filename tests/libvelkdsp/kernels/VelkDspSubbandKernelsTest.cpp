// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSubbandKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tav {
namespace {

class SubbandKernelsOf : public Tests::KernelsOf<SubbandKernels> {};

TEST_P(SubbandKernelsOf, MultiplyMatricesOfAnyHeight) {
    for (const int columns : {0, 8, 16, 24, 32}) {
        Tests::ForEveryLength(40, [&](int rows, int start) {
            const int inner = 1 + rows % 18, aStride = inner + 1, bStride = 33, yStride = 35;
            const auto a = Tests::Noise(static_cast<std::size_t>(rows * aStride), 1);
            const auto b = Tests::Noise(static_cast<std::size_t>(inner * bStride), 2);
            std::vector<float> expected(static_cast<std::size_t>(rows * yStride), 99.f);
            Tests::Guarded<float> y(start, expected);
            for (int row = 0; row < rows; ++row) {
                for (int column = 0; column < columns; ++column) {
                    double sum = 0;
                    for (int k = 0; k < inner; ++k) {
                        sum +=
                            static_cast<double>(a[static_cast<std::size_t>(row * aStride + k)]) *
                            static_cast<double>(b[static_cast<std::size_t>(k * bStride + column)]);
                    }
                    expected[static_cast<std::size_t>(row * yStride + column)] =
                        static_cast<float>(sum);
                }
            }
            tested_.multiply(
                {y.Data(), yStride, a.data(), aStride, b.data(), bStride, rows, inner, columns});
            Tests::ExpectNear(y.Values(), expected, (inner + 1) * Tests::kEpsilon);
        });
    }
}

TEST_P(SubbandKernelsOf, WindowSixteenRows) {
    const auto samples = Tests::Noise(64 * kWindowTaps, 3), weights = Tests::Noise(256, 4);
    std::vector<const float*> rows;
    std::vector<float> expected(16, 0.f);
    for (std::size_t tap = 0; tap < kWindowTaps; ++tap) {
        rows.push_back(samples.data() + 61 * tap % 900);
        for (std::size_t k = 0; k < 16; ++k) expected[k] += rows[tap][k] * weights[16 * tap + k];
    }
    Tests::Guarded<float> y(5, std::vector<float>(16, 99.f));
    tested_.window(y.Data(), rows.data(), weights.data());
    Tests::ExpectNear(y.Values(), expected, 17 * Tests::kEpsilon);
}

INSTANTIATE_FOR_ALL_SETS(SubbandKernelsOf);

}  // namespace
}  // namespace tav
