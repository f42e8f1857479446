// SPDX-License-Identifier: MIT
#include "kernels/VelkDspGainKernelsVector.h"

#include <cstdint>
#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations {
    using Vec = __m256;
    static constexpr int kLanes = 8;
    static constexpr int kPieceVectors = 2;

    static Vec Zero() { return _mm256_setzero_ps(); }
    static Vec Load(const float* p) { return _mm256_loadu_ps(p); }
    static void Store(float* p, Vec v) { _mm256_storeu_ps(p, v); }
    static Vec LoadFirst(const float* p, int count) { return _mm256_maskload_ps(p, Mask(count)); }
    static void StoreFirst(float* p, Vec v, int count) { _mm256_maskstore_ps(p, Mask(count), v); }
    static Vec Broadcast(float value) { return _mm256_set1_ps(value); }
    static Vec Add(Vec a, Vec b) { return _mm256_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) { return _mm256_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) { return _mm256_mul_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fmadd_ps(a, b, c); }
    static Vec MagnitudeAbove(Vec v, Vec limit) {
        const Vec magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.f), v);
        return _mm256_cmp_ps(magnitude, limit, _CMP_GT_OQ);
    }
    static Vec Where(Vec mask, Vec yes, Vec no) { return _mm256_blendv_ps(no, yes, mask); }
    static std::uint64_t Bits(Vec mask) {
        return static_cast<std::uint64_t>(_mm256_movemask_ps(mask));
    }

private:
    static __m256i Mask(int count) {
        const __m256i lane = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        return _mm256_cmpgt_epi32(_mm256_set1_epi32(count), lane);
    }
};

}  // namespace

const GainKernels& GainKernels::Avx2() noexcept {
    return VectorGainKernels<Avx2Operations>::kKernels;
}

}  // namespace tav
