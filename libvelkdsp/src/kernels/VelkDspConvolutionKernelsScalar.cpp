// SPDX-License-Identifier: MIT
#include "kernels/VelkDspConvolutionKernels.h"

#include <algorithm>

namespace tav {
namespace {

void Fir(float* y, const float* x, const float* taps, int numTaps, int n) noexcept TAV_NONBLOCKING {
    std::fill_n(y, n, 0.f);
    for (int t = 0; t < numTaps; ++t) {
        const float tap = taps[t];
        const float* const late = x - t;
        for (int k = 0; k < n; ++k) y[k] += tap * late[k];
    }
}

void Split(const float* signal, const ComplexParts& to, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        const float* const pair = signal + k + k;
        to.re[k] = pair[0];
        to.im[k] = pair[1];
    }
}

void Merge(const ConstComplexParts& from,
           float* signal,
           float scale,
           int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        float* const pair = signal + k + k;
        pair[0] = scale * from.re[k];
        pair[1] = scale * from.im[k];
    }
}

void Radix4(const RadixPass& pass) noexcept TAV_NONBLOCKING {
    const int s = pass.stride;
    const int quarter = pass.n / 4;
    const ConstComplexParts w = pass.twiddles;
    for (int p = 0; p < quarter; ++p) {
        for (int q = 0; q < s; ++q) {
            float re[4];
            float im[4];
            for (int i = 0; i < 4; ++i) {
                re[i] = pass.from.re[q + s * (p + i * quarter)];
                im[i] = pass.from.im[q + s * (p + i * quarter)];
            }
            const float evenSumRe = re[0] + re[2];
            const float evenSumIm = im[0] + im[2];
            const float evenRe = re[0] - re[2];
            const float evenIm = im[0] - im[2];
            const float oddSumRe = re[1] + re[3];
            const float oddSumIm = im[1] + im[3];
            const float oddRe = re[1] - re[3];
            const float oddIm = im[1] - im[3];
            // -i times the odd difference is (oddIm, -oddRe).
            const float outRe[4] = {evenSumRe + oddSumRe, evenRe + oddIm, evenSumRe - oddSumRe,
                                    evenRe - oddIm};
            const float outIm[4] = {evenSumIm + oddSumIm, evenIm - oddRe, evenSumIm - oddSumIm,
                                    evenIm + oddRe};
            const int first = q + s * 4 * p;
            pass.to.re[first] = outRe[0];
            pass.to.im[first] = outIm[0];
            for (int i = 1; i < 4; ++i) {
                const float wRe = w.re[(i - 1) * quarter + p];
                const float wIm = w.im[(i - 1) * quarter + p];
                pass.to.re[first + i * s] = outRe[i] * wRe - outIm[i] * wIm;
                pass.to.im[first + i * s] = outRe[i] * wIm + outIm[i] * wRe;
            }
        }
    }
}

/// A discrete Fourier transform by its definition.
void Last(const LastPass& pass) noexcept TAV_NONBLOCKING {
    // exp(-2 pi i k / 8)
    constexpr float kHalf = 0.70710678f;
    constexpr float kRe[] = {1.f, kHalf, 0.f, -kHalf, -1.f, -kHalf, 0.f, kHalf};
    constexpr float kIm[] = {0.f, -kHalf, -1.f, -kHalf, 0.f, kHalf, 1.f, kHalf};
    const int turn = 8 / pass.radix;
    for (int q = 0; q < pass.stride; ++q) {
        for (int k = 0; k < pass.radix; ++k) {
            float re = 0.f, im = 0.f;
            for (int j = 0; j < pass.radix; ++j) {
                const float a = pass.from.re[q + j * pass.stride];
                const float b = pass.from.im[q + j * pass.stride];
                const float c = kRe[j * k * turn % 8], s = kIm[j * k * turn % 8];
                re += a * c - b * s;
                im += a * s + b * c;
            }
            pass.to.re[q + k * pass.stride] = re;
            pass.to.im[q + k * pass.stride] = im;
        }
    }
}

void Fold(const FoldPass& pass) noexcept TAV_NONBLOCKING {
    for (int k = 1; k <= pass.half / 2; ++k) {
        const int mirror = pass.half - k;
        const float sumRe = pass.from.re[k] + pass.from.re[mirror];
        const float sumIm = pass.from.im[k] - pass.from.im[mirror];
        const float differenceRe = pass.from.re[k] - pass.from.re[mirror];
        const float differenceIm = pass.from.im[k] + pass.from.im[mirror];
        const float re = pass.turns.re[k];
        const float im = pass.sign * pass.turns.im[k];
        const float turnedRe = differenceRe * re - differenceIm * im;
        const float turnedIm = differenceRe * im + differenceIm * re;
        pass.to.re[k] = pass.scale * (sumRe + turnedRe);
        pass.to.im[k] = pass.scale * (sumIm + turnedIm);
        pass.to.re[mirror] = pass.scale * (sumRe - turnedRe);
        pass.to.im[mirror] = pass.scale * (turnedIm - sumIm);
    }
}

void MultiplyAdd(const ComplexParts& sum,
                 const ConstComplexParts& a,
                 const ConstComplexParts& b,
                 int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        sum.re[k] += a.re[k] * b.re[k] - a.im[k] * b.im[k];
        sum.im[k] += a.re[k] * b.im[k] + a.im[k] * b.re[k];
    }
}

void MultiplyAddPair(const PairOfProducts& products) noexcept TAV_NONBLOCKING {
    for (int e = 0; e < 2; ++e) {
        const ConstComplexParts& x = products.signals[e];
        const ConstComplexParts& filter = products.filters[e];
        for (int at = 0; at < products.numSpectra * products.n; at += products.n) {
            MultiplyAdd(products.sums[e], {x.re + at, x.im + at}, {filter.re + at, filter.im + at},
                        products.n);
        }
    }
}

}  // namespace

const ConvolutionKernels& ConvolutionKernels::Scalar() noexcept {
    static constexpr ConvolutionKernels kKernels{Fir,  Split, Merge,       Radix4,
                                                 Last, Fold,  MultiplyAdd, MultiplyAddPair};
    return kKernels;
}

}  // namespace tav
