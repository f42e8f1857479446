// SPDX-License-Identifier: MIT
#include "kernels/VelkDspGainKernelsVector.h"

#include <cstdint>
#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations {
    using Vec = __m512;
    static constexpr int kLanes = 16;
    static constexpr int kPieceVectors = 4;

    static Vec Zero() { return _mm512_setzero_ps(); }
    static Vec Load(const float* p) { return _mm512_loadu_ps(p); }
    static void Store(float* p, Vec v) { _mm512_storeu_ps(p, v); }
    static Vec LoadFirst(const float* p, int count) {
        return _mm512_maskz_loadu_ps(Mask(count), p);
    }
    static void StoreFirst(float* p, Vec v, int count) { _mm512_mask_storeu_ps(p, Mask(count), v); }
    static Vec Broadcast(float value) { return _mm512_set1_ps(value); }
    static Vec Add(Vec a, Vec b) { return _mm512_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) { return _mm512_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) { return _mm512_mul_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm512_fmadd_ps(a, b, c); }
    static __mmask16 MagnitudeAbove(Vec v, Vec limit) {
        return _mm512_cmp_ps_mask(_mm512_abs_ps(v), limit, _CMP_GT_OQ);
    }
    static Vec Where(__mmask16 mask, Vec yes, Vec no) {
        return _mm512_mask_blend_ps(mask, no, yes);
    }
    static std::uint64_t Bits(__mmask16 mask) { return mask; }

private:
    static __mmask16 Mask(int count) { return static_cast<__mmask16>((1u << count) - 1u); }
};

}  // namespace

const GainKernels& GainKernels::Avx512() noexcept {
    return VectorGainKernels<Avx512Operations>::kKernels;
}

}  // namespace tav
