// SPDX-License-Identifier: MIT
#include "filterdesign/VelkDspFft.h"

#include "kernels/VelkDspKernels.h"
#include "support/Signals.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace tav {
namespace {

/// One bin by its definition, in double, from a table of turns.
class Dft {
public:
    explicit Dft(std::size_t size) : turns_(size) {
        for (std::size_t k = 0; k < size; ++k) {
            const double part = static_cast<double>(k) / static_cast<double>(size);
            turns_[k] = std::polar(1.0, -2.0 * std::numbers::pi * part);
        }
    }
    std::complex<double> Bin(const std::vector<float>& signal, std::size_t k) const {
        std::complex<double> sum = 0.0;
        for (std::size_t j = 0; j < signal.size(); ++j) {
            sum += static_cast<double>(signal[j]) * turns_[j * k % signal.size()];
        }
        return sum;
    }

private:
    std::vector<std::complex<double>> turns_;
};

class FftOfSize : public testing::TestWithParam<std::size_t> {};

TEST_P(FftOfSize, AgreesWithTheDefinitionAndComesBack) {
    const std::size_t size = GetParam();
    const std::vector<float> signal = Tests::Noise(size, static_cast<unsigned>(size));
    const Dft dft(size);
    // All bins of small sizes, some hundred of large ones; a bin's magnitude is about sqrt(size /
    // 3).
    const std::size_t step = size <= 2048 ? 1 : size / 512 + 1;
    const double rms = std::sqrt(static_cast<double>(size) / 3.0);
    for (const NamedKernels& set : RunnableKernels()) {
        Fft fft(size, ConvolutionKernelsNamed(set.name));
        std::vector<float> re(fft.NumBins()), im(fft.NumBins()), back(size);
        fft.Forward(signal, re, im);
        double error = 0.0, count = 0.0;
        for (std::size_t k = 0; k < fft.NumBins(); k += step, count += 1.0) {
            const std::complex<double> got(static_cast<double>(re[k]), static_cast<double>(im[k]));
            error += std::norm(got - dft.Bin(signal, k));
        }
        EXPECT_LT(std::sqrt(error / count) / rms, 1e-6) << set.name;
        const auto last = std::complex<double>(static_cast<double>(re.back()));
        EXPECT_LT(std::abs(last - dft.Bin(signal, size / 2)) / rms, 1e-5);
        fft.Inverse(re, im, back);
        for (std::size_t k = 0; k < size; ++k) ASSERT_NEAR(back[k], signal[k], 2e-6f) << set.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    PowersOfTwo,
    FftOfSize,
    testing::Values(32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536),
    testing::PrintToStringParamName());

TEST(Fft, RefusesOtherSizes) {
    for (const std::size_t size : {0u, 16u, 48u, 131072u})
        EXPECT_THROW(Fft{size}, Exception) << size;
}

}  // namespace
}  // namespace tav
