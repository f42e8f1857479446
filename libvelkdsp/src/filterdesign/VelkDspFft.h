// SPDX-License-Identifier: MIT
// The Fourier transform of real signals.
#pragma once

#include "kernels/VelkDspConvolutionKernels.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// Sizes are powers of two from 32 to 1048576. A spectrum has size / 2 + 1 numbers, from 0 Hz to
/// half the rate, real and imaginary parts in separate arrays. Thread: any, one at a time: an
/// object owns the scratch of its transforms.
class Fft {
public:
    static constexpr std::size_t kMinSize = 32;
    static constexpr std::size_t kMaxSize = 1048576;

    /// Throws: tav::Exception for any other size.
    explicit Fft(std::size_t size,
                 const ConvolutionKernels& kernels = BestKernels<ConvolutionKernels>());

    std::size_t Size() const noexcept TAV_NONBLOCKING { return 2 * half_; }
    std::size_t NumBins() const noexcept TAV_NONBLOCKING { return half_ + 1; }

    /// re + i im at bin k = sum over j of signal[j] exp(-2 pi i j k / size).
    /// @param signal  Size()      @param re, im  NumBins(), overwritten
    void Forward(std::span<const float> signal,
                 std::span<float> re,
                 std::span<float> im) noexcept TAV_NONBLOCKING;
    /// Inverse of Forward, scaled so that both in turn give the signal. Imaginary parts of the
    /// first and last bin are ignored.
    void Inverse(std::span<const float> re,
                 std::span<const float> im,
                 std::span<float> signal) noexcept TAV_NONBLOCKING;

private:
    struct Scratch {
        std::vector<float> re;
        std::vector<float> im;

        explicit Scratch(std::size_t count) : re(count), im(count) {}
        ComplexParts Parts() noexcept TAV_NONBLOCKING { return {re.data(), im.data()}; }
    };

    /// The complex transform of half the size of the numbers in scratch_[0].
    ComplexParts Transform() noexcept TAV_NONBLOCKING;

    const std::size_t half_;
    const ConvolutionKernels& kernels_;
    std::vector<float> twiddlesRe_;  // of all passes, one after the other
    std::vector<float> twiddlesIm_;
    std::vector<float> turnsRe_;  // -i exp(-2 pi i k / size), k = 0 .. size / 4
    std::vector<float> turnsIm_;
    Scratch scratch_[2];
};

}  // namespace tav
