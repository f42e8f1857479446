// SPDX-License-Identifier: MIT
#include "kernels/VelkDspConvolutionKernels.h"

#include "kernels/VelkDspAvx2Floats.h"

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
using Wide = Avx2Floats;
struct Narrow {
    using Vec = __m128;
    static Vec Load(const float* p) noexcept { return _mm_loadu_ps(p); }
    static void Store(float* p, Vec v) noexcept { _mm_storeu_ps(p, v); }
    static Vec Broadcast(float value) noexcept { return _mm_set1_ps(value); }
    static Vec Add(Vec a, Vec b) noexcept { return _mm_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) noexcept { return _mm_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) noexcept { return _mm_mul_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) noexcept { return _mm_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) noexcept { return _mm_fmsub_ps(a, b, c); }
};

/// Numbers side by side, as many as a vector has lanes.
template <class S>
struct Numbers {
    typename S::Vec re;
    typename S::Vec im;
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

template <class S>
void StoreNumbers(const ComplexParts& parts, int at, const Numbers<S>& numbers) noexcept {
    S::Store(parts.re + at, numbers.re);
    S::Store(parts.im + at, numbers.im);
}

template <class S>
Numbers<S> Sum(const Numbers<S>& a, const Numbers<S>& b) noexcept {
    return {S::Add(a.re, b.re), S::Add(a.im, b.im)};
}
template <class S>
Numbers<S> Difference(const Numbers<S>& a, const Numbers<S>& b) noexcept {
    return {S::Subtract(a.re, b.re), S::Subtract(a.im, b.im)};
}
/// a - i b
template <class S>
Numbers<S> MinusTurned(const Numbers<S>& a, const Numbers<S>& b) noexcept {
    return {S::Add(a.re, b.im), S::Subtract(a.im, b.re)};
}
/// a + i b
template <class S>
Numbers<S> PlusTurned(const Numbers<S>& a, const Numbers<S>& b) noexcept {
    return {S::Subtract(a.re, b.im), S::Add(a.im, b.re)};
}

/// The transform of four numbers, in their place.
template <class S>
void Four(Numbers<S>& a, Numbers<S>& b, Numbers<S>& c, Numbers<S>& d) noexcept {
    const Numbers<S> evenSum = Sum<S>(a, c), even = Difference<S>(a, c);
    const Numbers<S> oddSum = Sum<S>(b, d), odd = Difference<S>(b, d);
    a = Sum<S>(evenSum, oddSum);
    b = MinusTurned<S>(even, odd);
    c = Difference<S>(evenSum, oddSum);
    d = PlusTurned<S>(even, odd);
}

/// Reads four numbers `apart` from each other, and leaves their transform, twiddled, in `out`.
template <class S>
void Butterfly(const ConstComplexParts& from,
               int at,
               int apart,
               const Numbers<S>* twiddles,
               Numbers<S>* out) noexcept {
    for (int i = 0; i < 4; ++i) out[i] = LoadNumbers<S>(from, at + i * apart);
    Four<S>(out[0], out[1], out[2], out[3]);
    for (int i = 1; i < 4; ++i) out[i] = Product<S>(out[i], twiddles[i - 1]);
}

/// Groups that lie side by side, `stride` of them with the same twiddles.
template <class S, int kWidth>
void PassOfGroups(const RadixPass& pass) noexcept {
    const int quarter = pass.n / 4;
    for (int p = 0; p < quarter; ++p) {
        Numbers<S> twiddles[3];
        for (int i = 0; i < 3; ++i) {
            twiddles[i] = {S::Broadcast(pass.twiddles.re[i * quarter + p]),
                           S::Broadcast(pass.twiddles.im[i * quarter + p])};
        }
        for (int q = 0; q < pass.stride; q += kWidth) {
            Numbers<S> out[4];
            Butterfly<S>(pass.from, q + pass.stride * p, pass.stride * quarter, twiddles, out);
            for (int i = 0; i < 4; ++i) {
                const int at = q + pass.stride * (4 * p + i);
                StoreNumbers<S>(pass.to, at, out[i]);
            }
        }
    }
}

/// Stores lane j of the first vector at to[4 j], of the second at to[4 j + 1], and so on.
void StoreTurned(float* to, __m256 a, __m256 b, __m256 c, __m256 d) noexcept {
    const __m256 ab0 = _mm256_unpacklo_ps(a, b), ab2 = _mm256_unpackhi_ps(a, b);
    const __m256 cd0 = _mm256_unpacklo_ps(c, d), cd2 = _mm256_unpackhi_ps(c, d);
    const __m256 zero = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(1, 0, 1, 0));  // j = 0 and 4
    const __m256 one = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(3, 2, 3, 2));   // 1 and 5
    const __m256 two = _mm256_shuffle_ps(ab2, cd2, _MM_SHUFFLE(1, 0, 1, 0));
    const __m256 three = _mm256_shuffle_ps(ab2, cd2, _MM_SHUFFLE(3, 2, 3, 2));
    _mm256_storeu_ps(to, _mm256_permute2f128_ps(zero, one, 0x20));
    _mm256_storeu_ps(to + 8, _mm256_permute2f128_ps(two, three, 0x20));
    _mm256_storeu_ps(to + 16, _mm256_permute2f128_ps(zero, one, 0x31));
    _mm256_storeu_ps(to + 24, _mm256_permute2f128_ps(two, three, 0x31));
}

/// The first pass: groups do not lie side by side, so eight of them are turned.
/// @pre  n is a multiple of 32
void FirstPass(const RadixPass& pass) noexcept {
    const int quarter = pass.n / 4;
    for (int p = 0; p < quarter; p += kLanes) {
        Numbers<Wide> twiddles[3], out[4];
        for (int i = 0; i < 3; ++i) {
            twiddles[i] = LoadNumbers<Wide>(pass.twiddles, i * quarter + p);
        }
        Butterfly<Wide>(pass.from, p, quarter, twiddles, out);
        const int at = 4 * p;
        StoreTurned(pass.to.re + at, out[0].re, out[1].re, out[2].re, out[3].re);
        StoreTurned(pass.to.im + at, out[0].im, out[1].im, out[2].im, out[3].im);
    }
}

/// Two numbers, each in four lanes.
__m256 EachFourTimes(const float* two) noexcept {
    const __m128 both = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(two)));
    return _mm256_permutevar8x32_ps(_mm256_castps128_ps256(both),
                                    _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1));
}

/// The second pass: groups of four, two groups a vector.  @pre  n is a multiple of 8
void SecondPass(const RadixPass& pass) noexcept {
    const int quarter = pass.n / 4;
    for (int p = 0; p < quarter; p += 2) {
        Numbers<Wide> twiddles[3], out[4];
        for (int i = 0; i < 3; ++i) {
            const int at = i * quarter + p;
            twiddles[i] = {EachFourTimes(pass.twiddles.re + at),
                           EachFourTimes(pass.twiddles.im + at)};
        }
        Butterfly<Wide>(pass.from, 4 * p, pass.n, twiddles, out);
        const auto store = [at = 16 * p](float* to, __m256 a, __m256 b, __m256 c, __m256 d) {
            _mm256_storeu_ps(to + at, _mm256_permute2f128_ps(a, b, 0x20));
            _mm256_storeu_ps(to + at + 8, _mm256_permute2f128_ps(c, d, 0x20));
            _mm256_storeu_ps(to + at + 16, _mm256_permute2f128_ps(a, b, 0x31));
            _mm256_storeu_ps(to + at + 24, _mm256_permute2f128_ps(c, d, 0x31));
        };
        store(pass.to.re, out[0].re, out[1].re, out[2].re, out[3].re);
        store(pass.to.im, out[0].im, out[1].im, out[2].im, out[3].im);
    }
}

void Radix4(const RadixPass& pass) noexcept TAV_NONBLOCKING {
    if (pass.stride >= kLanes) return PassOfGroups<Wide, kLanes>(pass);
    if (pass.stride == 4 && pass.n % 8 == 0) return SecondPass(pass);
    if (pass.stride == 1 && pass.n % 32 == 0) return FirstPass(pass);
    ConvolutionKernels::Scalar().radix4(pass);
}

/// The transform of eight numbers, in their place.
template <class S>
void Eight(Numbers<S> (&x)[8]) noexcept {
    Numbers<S> sums[4], differences[4];
    for (int i = 0; i < 4; ++i) {
        sums[i] = Sum<S>(x[i], x[i + 4]);
        differences[i] = Difference<S>(x[i], x[i + 4]);
    }
    // Turned by 0, 1, 2 and 3 eighths.
    const typename S::Vec half = S::Broadcast(0.70710678f);
    const Numbers<S>& b = differences[1];
    const Numbers<S>& d = differences[3];
    Numbers<S> odd[4] = {
        differences[0],
        {S::Multiply(half, S::Add(b.re, b.im)), S::Multiply(half, S::Subtract(b.im, b.re))},
        MinusTurned<S>({S::Broadcast(0.f), S::Broadcast(0.f)}, differences[2]),
        {S::Multiply(half, S::Subtract(d.im, d.re)),
         S::Multiply(half, S::Subtract(S::Broadcast(0.f), S::Add(d.re, d.im)))}};
    Four<S>(sums[0], sums[1], sums[2], sums[3]);
    Four<S>(odd[0], odd[1], odd[2], odd[3]);
    for (int i = 0; i < 4; ++i) {
        x[2 * i] = sums[i];
        x[2 * i + 1] = odd[i];
    }
}

template <class S, int kWidth, int kRadix>
void LastOfRadix(const LastPass& pass) noexcept {
    for (int q = 0; q < pass.stride; q += kWidth) {
        Numbers<S> x[static_cast<unsigned>(kRadix)];
        for (int i = 0; i < kRadix; ++i) x[i] = LoadNumbers<S>(pass.from, q + i * pass.stride);
        if constexpr (kRadix == 8) {
            Eight<S>(x);
        } else {
            Four<S>(x[0], x[1], x[2], x[3]);
        }
        for (int i = 0; i < kRadix; ++i) StoreNumbers<S>(pass.to, q + i * pass.stride, x[i]);
    }
}

void Last(const LastPass& pass) noexcept TAV_NONBLOCKING {
    const bool isWide = pass.stride >= kLanes;
    if (pass.radix == 8) {
        isWide ? LastOfRadix<Wide, 8, 8>(pass) : LastOfRadix<Narrow, 4, 8>(pass);
    } else {
        isWide ? LastOfRadix<Wide, 8, 4>(pass) : LastOfRadix<Narrow, 4, 4>(pass);
    }
}

/// Both halves of each vector in the order of memory, from vectors that interleave quarters.
__m256 InOrder(__m256 v) noexcept {
    return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(v), _MM_SHUFFLE(3, 1, 2, 0)));
}

void Split(const float* signal, const ComplexParts& to, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; k += kLanes) {
        const float* const pairs = signal + k + k;
        const __m256 low = _mm256_loadu_ps(pairs);
        const __m256 high = _mm256_loadu_ps(pairs + kLanes);
        const __m256 re = _mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
        const __m256 im = _mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
        StoreNumbers<Wide>(to, k, {InOrder(re), InOrder(im)});
    }
}

void Merge(const ConstComplexParts& from,
           float* signal,
           float scale,
           int n) noexcept TAV_NONBLOCKING {
    const __m256 all = _mm256_set1_ps(scale);
    for (int k = 0; k < n; k += kLanes) {
        const __m256 re = _mm256_mul_ps(all, _mm256_loadu_ps(from.re + k));
        const __m256 im = _mm256_mul_ps(all, _mm256_loadu_ps(from.im + k));
        const __m256 low = _mm256_unpacklo_ps(re, im), high = _mm256_unpackhi_ps(re, im);
        float* const pairs = signal + k + k;
        _mm256_storeu_ps(pairs, _mm256_permute2f128_ps(low, high, 0x20));
        _mm256_storeu_ps(pairs + kLanes, _mm256_permute2f128_ps(low, high, 0x31));
    }
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
            for (int e = 0; e < 2; ++e) {
                const Numbers<Wide> x = LoadNumbers<Wide>(products.signals[e], at);
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
                const ConstComplexParts& signal = products.signals[e];
                const ConstComplexParts& filter = products.filters[e];
                ConvolutionKernels::Scalar().multiplyAdd(sum, {signal.re + at, signal.im + at},
                                                         {filter.re + at, filter.im + at}, 1);
            }
        }
    }
}

}  // namespace

const ConvolutionKernels& ConvolutionKernels::Avx2() noexcept {
    static constexpr ConvolutionKernels kKernels{Fir,  Split, Merge,       Radix4,
                                                 Last, Fold,  MultiplyAdd, MultiplyAddPair};
    return kKernels;
}

}  // namespace tav
