// SPDX-License-Identifier: MIT
// Sample loops of direct convolution, passes of a Fourier transform, products of spectra.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

namespace tav {

/// Complex numbers, real and imaginary parts in separate arrays.
struct ComplexParts {
    float* re;
    float* im;
};
struct ConstComplexParts {
    const float* re;
    const float* im;
};

/// One radix-4 pass of a Stockham transform of n * stride numbers: combines groups of four that are
/// n / 4 * stride apart.
/// @param twiddles  w^p, then w^2p, then w^3p, for p = 0 .. n / 4 - 1; w = exp(-2 pi i / n)
struct RadixPass {
    ConstComplexParts from;
    ComplexParts to;  // another place
    ConstComplexParts twiddles;
    int n;       // a multiple of 4
    int stride;  // a power of 4
};

/// The last pass, of radix 4 or 8: transforms of as many numbers, which are `stride` apart.
struct LastPass {
    ConstComplexParts from;
    ComplexParts to;  // another place
    int radix;
    int stride;  // a power of 4, at least 4
};

/// Takes a spectrum and its mirror image together: with a = from[k], b = conj from[half - k] and
/// t = turns[k], whose imaginary part is multiplied by `sign`, to[k] = scale ((a + b) + t (a - b))
/// and to[half - k] = conj scale ((a + b) - t (a - b)) for k = 1 .. half / 2. It is the last step
/// of a forward transform of real samples and the first of an inverse one.
struct FoldPass {
    ConstComplexParts from;
    ComplexParts to;  // another place
    ConstComplexParts turns;
    int half;  // a multiple of 16
    float scale;
    float sign;
};

/// Spectra of two signals, or twice of one, and of a filter for each, `n` numbers apart from each
/// other.
struct PairOfProducts {
    ComplexParts sums[2];
    ConstComplexParts signals[2];
    ConstComplexParts filters[2];
    int numSpectra;
    int n;
};

/// Counts may be 0 unless stated otherwise; no alignment is needed. Vector sets may fuse
/// multiply and add.  Thread: any.
struct ConvolutionKernels {
    /// y[k] = sum over t of taps[t] * x[k - t]; x has numTaps - 1 samples before its first. The sum
    /// of a sample does not depend on n. y overlaps nothing.
    void (*fir)(float* y, const float* x, const float* taps, int numTaps, int n) noexcept
        TAV_NONBLOCKING;
    /// to[k] = signal[2 k] + i signal[2 k + 1], for n numbers; n is a multiple of 8.
    void (*split)(const float* signal, const ComplexParts& to, int n) noexcept TAV_NONBLOCKING;
    /// The other way, times `scale`.
    void (*merge)(const ConstComplexParts& from,
                  float* signal,
                  float scale,
                  int n) noexcept TAV_NONBLOCKING;
    void (*radix4)(const RadixPass& pass) noexcept TAV_NONBLOCKING;
    void (*lastPass)(const LastPass& pass) noexcept TAV_NONBLOCKING;
    void (*fold)(const FoldPass& pass) noexcept TAV_NONBLOCKING;
    /// sum[k] += a[k] * b[k]
    void (*multiplyAdd)(const ComplexParts& sum,
                        const ConstComplexParts& a,
                        const ConstComplexParts& b,
                        int n) noexcept TAV_NONBLOCKING;

    /// sums[e][k] += sum over s of signals[e][s n + k] * filters[e][s n + k]
    void (*multiplyAddPair)(const PairOfProducts& products) noexcept TAV_NONBLOCKING;

    // One file each.
    static const ConvolutionKernels& Scalar() noexcept;
    static const ConvolutionKernels& Avx2() noexcept;
};

}  // namespace tav
