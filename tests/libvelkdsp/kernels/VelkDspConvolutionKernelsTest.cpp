// SPDX-License-Identifier: MIT
#include "kernels/VelkDspConvolutionKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <complex>
#include <vector>

namespace tav {
namespace {

using Tests::Guarded;
using Tests::kEpsilon;

class ConvolutionKernelsOf : public Tests::KernelsOf<ConvolutionKernels> {};

TEST_P(ConvolutionKernelsOf, AddUpTapsTheSameWayForAnyNumberOfSamples) {
    for (const int numTaps : {0, 1, 3, 31, 64, 130}) {
        const auto before = static_cast<std::size_t>(std::max(numTaps - 1, 0));
        Tests::ForEveryLength(2 * Tests::kLongestRun, [&](int n, int start) {
            const auto count = static_cast<std::size_t>(n);
            const auto taps = Tests::Noise(static_cast<std::size_t>(numTaps), 1);
            const auto signal = Tests::Noise(before + count, 2);
            const float* const x = signal.data() + before;
            Guarded<float> whole(start, std::vector<float>(count, 99.f)),
                cut(start, std::vector<float>(count, 99.f));
            const int first = n / 3;
            tested_.fir(whole.Data(), x, taps.data(), numTaps, n);
            tested_.fir(cut.Data(), x, taps.data(), numTaps, first);
            tested_.fir(cut.Data() + first, x + first, taps.data(), numTaps, n - first);
            EXPECT_EQ(whole.Values(), cut.Values());
            for (int k = 0; k < n; ++k) {
                double expected = 0.0;
                for (int t = 0; t < numTaps; ++t) {
                    expected += static_cast<double>(taps[static_cast<std::size_t>(t)]) *
                                static_cast<double>(x[k - t]);
                }
                ASSERT_NEAR(whole.Data()[k], expected, numTaps * kEpsilon) << numTaps << " taps";
            }
        });
    }
}

/// Noise as complex numbers that begin `start` places behind a cache line.
struct Spectra {
    Guarded<float> re, im;

    Spectra(int start, int count, unsigned seed)
        : re(start, Tests::Noise(static_cast<std::size_t>(count), seed)),
          im(start, Tests::Noise(static_cast<std::size_t>(count), seed + 1)) {}
    ComplexParts Parts() { return {re.Data(), im.Data()}; }
    ConstComplexParts ConstParts() { return {re.Data(), im.Data()}; }
    std::complex<double> At(int k) {
        return {static_cast<double>(re.Data()[k]), static_cast<double>(im.Data()[k])};
    }
};

TEST_P(ConvolutionKernelsOf, AddUpProductsOfSpectra) {
    for (const int numSpectra : {0, 1, 5}) {
        Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
            Spectra signal(start, numSpectra * n, 1), left(start, numSpectra * n, 3),
                right(start, numSpectra * n, 5), second(start, numSpectra * n, 9);
            Spectra before(start, n, 7), sum(start, n, 7), other(start, n, 7), single(start, n, 7);
            tested_.multiplyAddPair({{sum.Parts(), other.Parts()},
                                     {signal.ConstParts(), second.ConstParts()},
                                     {left.ConstParts(), right.ConstParts()},
                                     numSpectra,
                                     n});
            if (numSpectra == 1) {
                tested_.multiplyAdd(single.Parts(), signal.ConstParts(), left.ConstParts(), n);
            }
            for (int k = 0; k < n; ++k) {
                std::complex<double> expected[] = {before.At(k), before.At(k)};
                for (int at = k; at < numSpectra * n; at += n) {
                    expected[0] += signal.At(at) * left.At(at);
                    expected[1] += second.At(at) * right.At(at);
                }
                const double bound = 2.0 * (1 + numSpectra) * kEpsilon;
                ASSERT_LT(std::abs(sum.At(k) - expected[0]), bound) << k << " of " << n;
                ASSERT_LT(std::abs(other.At(k) - expected[1]), bound) << k << " of " << n;
                if (numSpectra == 1) {
                    ASSERT_LT(std::abs(single.At(k) - expected[0]), bound) << k << " of " << n;
                }
            }
        });
    }
}

INSTANTIATE_FOR_ALL_SETS(ConvolutionKernelsOf);

}  // namespace
}  // namespace tav
