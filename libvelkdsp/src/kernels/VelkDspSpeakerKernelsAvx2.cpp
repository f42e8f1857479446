// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx2Floats.h"
#include "kernels/VelkDspSpeakerKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations : Avx2Floats {
    static Vec First(Vec v, int count) noexcept {
        return _mm256_and_ps(v, _mm256_castsi256_ps(FirstLanes(count)));
    }
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
};

}  // namespace

const SpeakerKernels& SpeakerKernels::Avx2() noexcept {
    return VectorSpeakerKernels<Avx2Operations>::kKernels;
}

}  // namespace tav
