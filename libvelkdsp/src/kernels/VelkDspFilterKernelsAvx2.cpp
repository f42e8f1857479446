// SPDX-License-Identifier: MIT
#include "kernels/VelkDspFilterKernelsEight.h"
#include "kernels/VelkDspFilterKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations {
    using Vec = __m256;
    static constexpr int kLanes = 8;

    static Vec Zero() { return _mm256_setzero_ps(); }
    static Vec Load(const float* p) { return _mm256_loadu_ps(p); }
    static void Store(float* p, Vec v) { _mm256_storeu_ps(p, v); }
    static Vec Broadcast(float value) { return _mm256_set1_ps(value); }
    static Vec Add(Vec a, Vec b) { return _mm256_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) { return _mm256_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) { return _mm256_mul_ps(a, b); }
    static Vec Divide(Vec a, Vec b) { return _mm256_div_ps(a, b); }
    static Vec Least(Vec a, Vec b) { return _mm256_min_ps(a, b); }
    static Vec Largest(Vec a, Vec b) { return _mm256_max_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) { return _mm256_fmsub_ps(a, b, c); }
    static Vec NegativeMultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fnmadd_ps(a, b, c); }
};

}  // namespace

const FilterKernels& FilterKernels::Avx2() noexcept {
    static constexpr FilterKernels kKernels{AllPass, VectorFilterKernels<Avx2Operations>::NearField,
                                            VectorFilterKernels<Avx2Operations>::LimitGrowth,
                                            ToRows, FromRows};
    return kKernels;
}

}  // namespace tav
