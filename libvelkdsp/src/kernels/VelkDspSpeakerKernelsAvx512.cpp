// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx512Floats.h"
#include "kernels/VelkDspSpeakerKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations : Avx512Floats {
    static Vec First(Vec v, int count) noexcept {
        return _mm512_maskz_mov_ps(FirstLanes(count), v);
    }
    static Vec Sqrt(Vec v) noexcept { return _mm512_maskz_sqrt_ps(kAll, v); }
    static Vec Round(Vec v) noexcept {
        return _mm512_maskz_roundscale_ps(kAll, v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    }
    static Vec ZeroBelow(Vec v, Vec limit, Vec other) noexcept {
        return _mm512_maskz_mov_ps(_mm512_cmp_ps_mask(v, limit, _CMP_NLT_UQ), other);
    }
    static float Sum(Vec v) noexcept {
        alignas(64) float lanes[kLanes];
        _mm512_store_ps(lanes, v);
        for (int width = kLanes / 2; width > 0; width /= 2) {
            for (int k = 0; k < width; ++k) lanes[k] += lanes[k + width];
        }
        return lanes[0];
    }
    static Vec Split(Vec v, Vec& exponent) noexcept {
        constexpr int kRootOfHalf = 0x3f3504f3;
        const __m512i bits = _mm512_castps_si512(v);
        const __m512i e = _mm512_maskz_srai_epi32(
            kAll, _mm512_sub_epi32(bits, _mm512_set1_epi32(kRootOfHalf)), 23);
        exponent = _mm512_maskz_cvtepi32_ps(kAll, e);
        return _mm512_castsi512_ps(_mm512_sub_epi32(bits, _mm512_maskz_slli_epi32(kAll, e, 23)));
    }
    static Vec TimesPowerOfTwo(Vec v, Vec n) noexcept {
        const __m512i shift = _mm512_maskz_slli_epi32(kAll, _mm512_maskz_cvtps_epi32(kAll, n), 23);
        return _mm512_castsi512_ps(_mm512_add_epi32(_mm512_castps_si512(v), shift));
    }
};

}  // namespace

const SpeakerKernels& SpeakerKernels::Avx512() noexcept {
    return VectorSpeakerKernels<Avx512Operations>::kKernels;
}

}  // namespace tav
