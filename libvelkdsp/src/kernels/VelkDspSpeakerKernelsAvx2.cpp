// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSpeakerKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations {
    using Vec = __m256;
    static constexpr int kLanes = 8;

    static Vec Load(const float* p) noexcept { return _mm256_loadu_ps(p); }
    static void Store(float* p, Vec v) noexcept { _mm256_storeu_ps(p, v); }
    static Vec LoadFirst(const float* p, int count) noexcept {
        return _mm256_maskload_ps(p, FirstLanes(count));
    }
    static void StoreFirst(float* p, Vec v, int count) noexcept {
        _mm256_maskstore_ps(p, FirstLanes(count), v);
    }
    static Vec First(Vec v, int count) noexcept {
        return _mm256_and_ps(v, _mm256_castsi256_ps(FirstLanes(count)));
    }
    static Vec Broadcast(float value) noexcept { return _mm256_set1_ps(value); }
    static Vec Add(Vec a, Vec b) noexcept { return _mm256_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) noexcept { return _mm256_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) noexcept { return _mm256_mul_ps(a, b); }
    static Vec Divide(Vec a, Vec b) noexcept { return _mm256_div_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) noexcept { return _mm256_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) noexcept { return _mm256_fmsub_ps(a, b, c); }
    static Vec Sqrt(Vec v) noexcept { return _mm256_sqrt_ps(v); }
    static Vec Round(Vec v) noexcept {
        return _mm256_round_ps(v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    }
    static Vec ZeroBelow(Vec v, Vec limit, Vec other) noexcept {
        return _mm256_andnot_ps(_mm256_cmp_ps(v, limit, _CMP_LT_OQ), other);
    }
    static float Sum(Vec v) noexcept {
        __m128 sum = _mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1));
        sum = _mm_add_ps(sum, _mm_movehl_ps(sum, sum));
        return _mm_cvtss_f32(_mm_add_ss(sum, _mm_movehdup_ps(sum)));
    }
    static Vec Split(Vec v, Vec& exponent) noexcept {
        constexpr int kRootOfHalf = 0x3f3504f3;
        const __m256i bits = _mm256_castps_si256(v);
        const __m256i e =
            _mm256_srai_epi32(_mm256_sub_epi32(bits, _mm256_set1_epi32(kRootOfHalf)), 23);
        exponent = _mm256_cvtepi32_ps(e);
        return _mm256_castsi256_ps(_mm256_sub_epi32(bits, _mm256_slli_epi32(e, 23)));
    }
    static Vec TimesPowerOfTwo(Vec v, Vec n) noexcept {
        const __m256i shift = _mm256_slli_epi32(_mm256_cvtps_epi32(n), 23);
        return _mm256_castsi256_ps(_mm256_add_epi32(_mm256_castps_si256(v), shift));
    }

private:
    static __m256i FirstLanes(int count) noexcept {
        return _mm256_cmpgt_epi32(_mm256_set1_epi32(count),
                                  _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    }
};

}  // namespace

const SpeakerKernels& SpeakerKernels::Avx2() noexcept {
    return VectorSpeakerKernels<Avx2Operations>::kKernels;
}

}  // namespace tav
