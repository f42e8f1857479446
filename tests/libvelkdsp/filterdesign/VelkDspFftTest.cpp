// SPDX-License-Identifier: MIT
#include "filterdesign/VelkDspFft.h"

#include "kernels/VelkDspInstructionSet.h"
#include "reference/PlainFourier.h"
#include "reference/Signals.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

namespace tav {
namespace {

class FftOfSize : public testing::TestWithParam<std::size_t> {};

TEST_P(FftOfSize, IsTheSpectrumAndComesBack) {
    const std::size_t size = GetParam();
    const std::vector<float> signal = Tests::Noise(size, static_cast<unsigned>(size));
    const auto expected = Plain::Spectrum({signal.begin(), signal.end()}, size);
    // A bin's magnitude is about sqrt(size / 3).
    const double rms = std::sqrt(static_cast<double>(size) / 3.0);
    for (const InstructionSet set : RunnableInstructionSets()) {
        Fft fft(size, KernelsFor<ConvolutionKernels>(set));
        std::vector<float> re(fft.NumBins()), im(fft.NumBins()), back(size);
        fft.Forward(signal, re, im);
        double error = 0.0;
        for (std::size_t k = 0; k < fft.NumBins(); ++k) {
            const std::complex<double> got(static_cast<double>(re[k]), static_cast<double>(im[k]));
            error += std::norm(got - expected[k]);
        }
        EXPECT_LT(std::sqrt(error / static_cast<double>(fft.NumBins())) / rms, 1e-6) << NameOf(set);
        const auto last = std::complex<double>(static_cast<double>(re.back()));
        EXPECT_LT(std::abs(last - expected[size / 2]) / rms, 1e-5);
        fft.Inverse(re, im, back);
        for (std::size_t k = 0; k < size; ++k)
            ASSERT_NEAR(back[k], signal[k], 2e-6f) << NameOf(set);
    }
}

INSTANTIATE_TEST_SUITE_P(
    PowersOfTwo,
    FftOfSize,
    testing::Values(32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536),
    testing::PrintToStringParamName());

TEST(Fft, RefusesOtherSizes) {
    for (const std::size_t size : {0u, 16u, 48u, 2097152u})
        EXPECT_THROW(Fft{size}, Exception) << size;
}

}  // namespace
}  // namespace tav
