// SPDX-License-Identifier: MIT
#include "kernels/VelkDspConvolutionKernels.h"

#include <cstddef>
#include <immintrin.h>

namespace tav {
namespace {

constexpr int kLanes = 8;
constexpr std::ptrdiff_t kStride = kLanes;  // from a vector to the next, in floats

/// Taps that lie eight apart see the same vectors of samples, each for another vector of the
/// output: what is loaded once serves kTaps of them. Most loads straddle cache lines and are dear.
template <int kTaps, int kVectors, class Load>
void AddTaps(__m256* sums, const float* x, const float* taps, Load load) noexcept {
    __m256 tap[static_cast<unsigned>(kTaps)];
    for (int i = 0; i < kTaps; ++i) tap[i] = _mm256_broadcast_ss(taps + i * kStride);
    for (int at = 1 - kTaps; at < kVectors; ++at) {
        const __m256 late = load(x + at * kStride);
        for (int i = 0; i < kTaps; ++i) {
            const int v = at + i;
            if (v >= 0 && v < kVectors) sums[v] = _mm256_fmadd_ps(tap[i], late, sums[v]);
        }
    }
}

/// kVectors vectors of sums, which stay in registers over all taps. Their order does not depend on
/// kVectors.
template <int kVectors, class Load, class Store>
void FirVectors(
    float* y, const float* x, const float* taps, int numTaps, Load load, Store store) noexcept {
    constexpr int kTaps = 4;
    __m256 sums[static_cast<unsigned>(kVectors)];
    for (__m256& sum : sums) sum = _mm256_setzero_ps();
    int t = 0;
    for (; t + kTaps * kLanes <= numTaps; t += kTaps * kLanes) {
        for (int i = t; i < t + kLanes; ++i) AddTaps<kTaps, kVectors>(sums, x - i, taps + i, load);
    }
    for (; t < numTaps; ++t) AddTaps<1, kVectors>(sums, x - t, taps + t, load);
    for (int v = 0; v < kVectors; ++v) store(y + v * kStride, sums[v]);
}

void Fir(float* y, const float* x, const float* taps, int numTaps, int n) noexcept TAV_NONBLOCKING {
    const auto load = [](const float* p) { return _mm256_loadu_ps(p); };
    const auto store = [](float* p, __m256 v) { _mm256_storeu_ps(p, v); };
    int k = 0;
    for (; k + 8 * kLanes <= n; k += 8 * kLanes) {
        FirVectors<8>(y + k, x + k, taps, numTaps, load, store);
    }
    for (; k + 2 * kLanes <= n; k += 2 * kLanes) {
        FirVectors<2>(y + k, x + k, taps, numTaps, load, store);
    }
    for (; k + kLanes <= n; k += kLanes) FirVectors<1>(y + k, x + k, taps, numTaps, load, store);
    if (k == n) return;
    const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    const __m256i wanted = _mm256_cmpgt_epi32(_mm256_set1_epi32(n - k), lanes);
    FirVectors<1>(
        y + k, x + k, taps, numTaps,
        [wanted](const float* p) { return _mm256_maskload_ps(p, wanted); },
        [wanted](float* p, __m256 v) { _mm256_maskstore_ps(p, wanted, v); });
}

// The same names for both widths, so that a butterfly is written once.
struct Wide {
    using V = __m256;
    static V Load(const float* p) noexcept { return _mm256_loadu_ps(p); }
    static void Store(float* p, V v) noexcept { _mm256_storeu_ps(p, v); }
    static V All(float value) noexcept { return _mm256_set1_ps(value); }
    static V Add(V a, V b) noexcept { return _mm256_add_ps(a, b); }
    static V Subtract(V a, V b) noexcept { return _mm256_sub_ps(a, b); }
    static V Multiply(V a, V b) noexcept { return _mm256_mul_ps(a, b); }
    static V MultiplyAdd(V a, V b, V c) noexcept { return _mm256_fmadd_ps(a, b, c); }
    static V MultiplySubtract(V a, V b, V c) noexcept { return _mm256_fmsub_ps(a, b, c); }
};
struct Narrow {
    using V = __m128;
    static V Load(const float* p) noexcept { return _mm_loadu_ps(p); }
    static void Store(float* p, V v) noexcept { _mm_storeu_ps(p, v); }
    static V All(float value) noexcept { return _mm_set1_ps(value); }
    static V Add(V a, V b) noexcept { return _mm_add_ps(a, b); }
    static V Subtract(V a, V b) noexcept { return _mm_sub_ps(a, b); }
    static V Multiply(V a, V b) noexcept { return _mm_mul_ps(a, b); }
    static V MultiplyAdd(V a, V b, V c) noexcept { return _mm_fmadd_ps(a, b, c); }
    static V MultiplySubtract(V a, V b, V c) noexcept { return _mm_fmsub_ps(a, b, c); }
};

/// Numbers side by side, as many as a vector has lanes.
template <class S>
struct Numbers {
    typename S::V re;
    typename S::V im;
};

template <class S>
Numbers<S> LoadNumbers(const ConstComplexParts& parts, int at) noexcept {
    return {S::Load(parts.re + at), S::Load(parts.im + at)};
}

template <class S>
Numbers<S> Product(const Numbers<S>& a, const Numbers<S>& b) noexcept {
    return {S::MultiplySubtract(a.re, b.re, S::Multiply(a.im, b.im)),
            S::MultiplyAdd(a.re, b.im, S::Multiply(a.im, b.re))};
}

/// Reads four numbers `apart` from each other, and leaves their transform, twiddled, in `out`.
template <class S>
void Butterfly(const ConstComplexParts& from,
               int at,
               int apart,
               const Numbers<S>* twiddles,
               Numbers<S>* out) noexcept {
    const Numbers<S> a = LoadNumbers<S>(from, at);
    const Numbers<S> b = LoadNumbers<S>(from, at + apart);
    const Numbers<S> c = LoadNumbers<S>(from, at + 2 * apart);
    const Numbers<S> d = LoadNumbers<S>(from, at + 3 * apart);
    const Numbers<S> evenSum{S::Add(a.re, c.re), S::Add(a.im, c.im)};
    const Numbers<S> even{S::Subtract(a.re, c.re), S::Subtract(a.im, c.im)};
    const Numbers<S> oddSum{S::Add(b.re, d.re), S::Add(b.im, d.im)};
    const Numbers<S> odd{S::Subtract(b.re, d.re), S::Subtract(b.im, d.im)};
    out[0] = {S::Add(evenSum.re, oddSum.re), S::Add(evenSum.im, oddSum.im)};
    out[1] = Product<S>({S::Add(even.re, odd.im), S::Subtract(even.im, odd.re)}, twiddles[0]);
    out[2] = Product<S>({S::Subtract(evenSum.re, oddSum.re), S::Subtract(evenSum.im, oddSum.im)},
                        twiddles[1]);
    out[3] = Product<S>({S::Subtract(even.re, odd.im), S::Add(even.im, odd.re)}, twiddles[2]);
}

/// Groups that lie side by side, `stride` of them with the same twiddles.
template <class S, int kWidth>
void PassOfGroups(const RadixPass& pass) noexcept {
    const int quarter = pass.n / 4;
    for (int p = 0; p < quarter; ++p) {
        Numbers<S> twiddles[3];
        for (int i = 0; i < 3; ++i) {
            twiddles[i] = {S::All(pass.twiddles.re[i * quarter + p]),
                           S::All(pass.twiddles.im[i * quarter + p])};
        }
        for (int q = 0; q < pass.stride; q += kWidth) {
            Numbers<S> out[4];
            Butterfly<S>(pass.from, q + pass.stride * p, pass.stride * quarter, twiddles, out);
            for (int i = 0; i < 4; ++i) {
                const int at = q + pass.stride * (4 * p + i);
                S::Store(pass.to.re + at, out[i].re);
                S::Store(pass.to.im + at, out[i].im);
            }
        }
    }
}

/// The first pass: groups do not lie side by side, so four of them are turned.
/// @pre  n is a multiple of 16
void FirstPass(const RadixPass& pass) noexcept {
    const int quarter = pass.n / 4;
    for (int p = 0; p < quarter; p += 4) {
        Numbers<Narrow> twiddles[3];
        for (int i = 0; i < 3; ++i) {
            twiddles[i] = LoadNumbers<Narrow>(pass.twiddles, i * quarter + p);
        }
        Numbers<Narrow> out[4];
        Butterfly<Narrow>(pass.from, p, quarter, twiddles, out);
        _MM_TRANSPOSE4_PS(out[0].re, out[1].re, out[2].re, out[3].re);
        _MM_TRANSPOSE4_PS(out[0].im, out[1].im, out[2].im, out[3].im);
        for (int i = 0; i < 4; ++i) {
            const int at = 4 * (p + i);
            Narrow::Store(pass.to.re + at, out[i].re);
            Narrow::Store(pass.to.im + at, out[i].im);
        }
    }
}

void Radix4(const RadixPass& pass) noexcept TAV_NONBLOCKING {
    if (pass.stride >= kLanes) return PassOfGroups<Wide, kLanes>(pass);
    if (pass.stride == 4) return PassOfGroups<Narrow, 4>(pass);
    if (pass.n % 16 == 0) return FirstPass(pass);
    ConvolutionKernels::Scalar().radix4(pass);
}

__m256 Reversed(__m256 v) noexcept {
    return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

void Fold(const FoldPass& pass) noexcept TAV_NONBLOCKING {
    const __m256 scale = _mm256_set1_ps(pass.scale);
    const __m256 sign = _mm256_set1_ps(pass.sign);
    for (int k = 1; k < pass.half / 2; k += kLanes) {
        const int mirror = pass.half - k - (kLanes - 1);
        const Numbers<Wide> a = LoadNumbers<Wide>(pass.from, k);
        const Numbers<Wide> b{Reversed(_mm256_loadu_ps(pass.from.re + mirror)),
                              Reversed(_mm256_loadu_ps(pass.from.im + mirror))};
        const Numbers<Wide> sum{_mm256_add_ps(a.re, b.re), _mm256_sub_ps(a.im, b.im)};
        const Numbers<Wide> turn{_mm256_loadu_ps(pass.turns.re + k),
                                 _mm256_mul_ps(sign, _mm256_loadu_ps(pass.turns.im + k))};
        const Numbers<Wide> turned =
            Product<Wide>({_mm256_sub_ps(a.re, b.re), _mm256_add_ps(a.im, b.im)}, turn);
        const auto store = [scale](float* p, __m256 v) {
            _mm256_storeu_ps(p, _mm256_mul_ps(scale, v));
        };
        store(pass.to.re + k, _mm256_add_ps(sum.re, turned.re));
        store(pass.to.im + k, _mm256_add_ps(sum.im, turned.im));
        store(pass.to.re + mirror, Reversed(_mm256_sub_ps(sum.re, turned.re)));
        store(pass.to.im + mirror, Reversed(_mm256_sub_ps(turned.im, sum.im)));
    }
}

void MultiplyAdd(const ComplexParts& sum,
                 const ConstComplexParts& a,
                 const ConstComplexParts& b,
                 int n) noexcept TAV_NONBLOCKING {
    int k = 0;
    for (; k + kLanes <= n; k += kLanes) {
        const Numbers<Wide> product =
            Product<Wide>(LoadNumbers<Wide>(a, k), LoadNumbers<Wide>(b, k));
        Wide::Store(sum.re + k, Wide::Add(Wide::Load(sum.re + k), product.re));
        Wide::Store(sum.im + k, Wide::Add(Wide::Load(sum.im + k), product.im));
    }
    ConvolutionKernels::Scalar().multiplyAdd({sum.re + k, sum.im + k}, {a.re + k, a.im + k},
                                             {b.re + k, b.im + k}, n - k);
}

/// Sums of eight numbers stay in registers over all spectra.
void MultiplyAddPair(const PairOfProducts& products) noexcept TAV_NONBLOCKING {
    const int n = products.n;
    int k = 0;
    for (; k + kLanes <= n; k += kLanes) {
        Numbers<Wide> direct[2], crossed[2];
        for (int e = 0; e < 2; ++e) {
            const ComplexParts& sum = products.sums[e];
            direct[e] = {Wide::Load(sum.re + k), Wide::Load(sum.im + k)};
            crossed[e] = {_mm256_setzero_ps(), _mm256_setzero_ps()};
        }
        for (int at = k; at < products.numSpectra * n; at += n) {
            const Numbers<Wide> x = LoadNumbers<Wide>(products.signal, at);
            for (int e = 0; e < 2; ++e) {
                const Numbers<Wide> filter = LoadNumbers<Wide>(products.filters[e], at);
                direct[e].re = Wide::MultiplyAdd(x.re, filter.re, direct[e].re);
                direct[e].im = Wide::MultiplyAdd(x.re, filter.im, direct[e].im);
                crossed[e].re = Wide::MultiplyAdd(x.im, filter.im, crossed[e].re);
                crossed[e].im = Wide::MultiplyAdd(x.im, filter.re, crossed[e].im);
            }
        }
        for (int e = 0; e < 2; ++e) {
            Wide::Store(products.sums[e].re + k, Wide::Subtract(direct[e].re, crossed[e].re));
            Wide::Store(products.sums[e].im + k, Wide::Add(direct[e].im, crossed[e].im));
        }
    }
    for (; k < n; ++k) {
        for (int at = k; at < products.numSpectra * n; at += n) {
            for (int e = 0; e < 2; ++e) {
                const ComplexParts sum{products.sums[e].re + k, products.sums[e].im + k};
                const ConstComplexParts& filter = products.filters[e];
                ConvolutionKernels::Scalar().multiplyAdd(
                    sum, {products.signal.re + at, products.signal.im + at},
                    {filter.re + at, filter.im + at}, 1);
            }
        }
    }
}

}  // namespace

const ConvolutionKernels& ConvolutionKernels::Avx2() noexcept {
    static constexpr ConvolutionKernels kKernels{Fir, Radix4, Fold, MultiplyAdd, MultiplyAddPair};
    return kKernels;
}

}  // namespace tav
