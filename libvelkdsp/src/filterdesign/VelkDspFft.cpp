// SPDX-License-Identifier: MIT
// Even samples become the real parts and odd ones the imaginary parts of a complex signal of half
// the length; the symmetry of real spectra separates the two again. The complex transform is a
// Stockham transform: each pass writes to the other of two buffers, and no bit reversal is needed.
#include "filterdesign/VelkDspFft.h"

#include "text/VelkDspException.h"

#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace tav {

namespace {

std::size_t CheckedHalf(std::size_t size) {
    if (!std::has_single_bit(size) || size < Fft::kMinSize || size > Fft::kMaxSize) {
        throw Exception("Fourier transform of a size that is no power of two from 32 to 1048576");
    }
    return size / 2;
}

/// Appends exp(-2 pi i * turns).
void AppendTurn(double turns, std::vector<float>& re, std::vector<float>& im) {
    re.push_back(static_cast<float>(std::cos(2.0 * std::numbers::pi * turns)));
    im.push_back(static_cast<float>(-std::sin(2.0 * std::numbers::pi * turns)));
}

}  // namespace

Fft::Fft(std::size_t size, const ConvolutionKernels& kernels)
    : half_(CheckedHalf(size)),
      kernels_(kernels),
      scratch_{Scratch(half_), Scratch(half_)} {
    for (std::size_t n = half_; n > 8; n /= 4) {
        for (const double power : {1.0, 2.0, 3.0}) {
            for (std::size_t p = 0; p < n / 4; ++p) {
                const double turns = power * static_cast<double>(p) / static_cast<double>(n);
                AppendTurn(turns, twiddlesRe_, twiddlesIm_);
            }
        }
    }
    for (std::size_t k = 0; k <= half_ / 2; ++k) {
        // -i is a quarter of a turn.
        AppendTurn(0.25 + static_cast<double>(k) / static_cast<double>(size), turnsRe_, turnsIm_);
    }
}

ComplexParts Fft::Transform() noexcept TAV_NONBLOCKING {
    ComplexParts from = scratch_[0].Parts();
    ComplexParts to = scratch_[1].Parts();
    ConstComplexParts twiddles{twiddlesRe_.data(), twiddlesIm_.data()};
    int n = static_cast<int>(half_);
    int stride = 1;
    for (; n > 8; n /= 4, stride *= 4) {
        kernels_.radix4({{from.re, from.im}, to, twiddles, n, stride});
        const int used = 3 * (n / 4);
        twiddles = {twiddles.re + used, twiddles.im + used};
        std::swap(from, to);
    }
    kernels_.lastPass({{from.re, from.im}, to, n, stride});
    return to;
}

void Fft::Forward(std::span<const float> signal,
                  std::span<float> re,
                  std::span<float> im) noexcept TAV_NONBLOCKING {
    kernels_.split(signal.data(), scratch_[0].Parts(), static_cast<int>(half_));
    const ComplexParts z = Transform();
    re[0] = z.re[0] + z.im[0];
    re[half_] = z.re[0] - z.im[0];
    im[0] = im[half_] = 0.f;
    kernels_.fold({{z.re, z.im},
                   {re.data(), im.data()},
                   {turnsRe_.data(), turnsIm_.data()},
                   static_cast<int>(half_),
                   0.5f,
                   1.f});
}

void Fft::Inverse(std::span<const float> re,
                  std::span<const float> im,
                  std::span<float> signal) noexcept TAV_NONBLOCKING {
    // With real and imaginary parts exchanged, the forward transform computes the inverse one.
    const ComplexParts swapped{scratch_[0].im.data(), scratch_[0].re.data()};
    swapped.re[0] = re[0] + re[half_];
    swapped.im[0] = re[0] - re[half_];
    kernels_.fold({{re.data(), im.data()},
                   swapped,
                   {turnsRe_.data(), turnsIm_.data()},
                   static_cast<int>(half_),
                   1.f,
                   -1.f});
    const ComplexParts z = Transform();
    const float scale = 0.5f / static_cast<float>(half_);
    kernels_.merge({z.im, z.re}, signal.data(), scale, static_cast<int>(half_));
}

}  // namespace tav
