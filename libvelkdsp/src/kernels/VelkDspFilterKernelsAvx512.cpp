// SPDX-License-Identifier: MIT
#include "kernels/VelkDspFilterKernelsEight.h"
#include "kernels/VelkDspFilterKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations {
    using Vec = __m512;
    static constexpr int kLanes = 16;

    static Vec Zero() { return _mm512_setzero_ps(); }
    static Vec Load(const float* p) { return _mm512_loadu_ps(p); }
    static void Store(float* p, Vec v) { _mm512_storeu_ps(p, v); }
    static Vec Broadcast(float value) { return _mm512_set1_ps(value); }
    static Vec Add(Vec a, Vec b) { return _mm512_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) { return _mm512_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) { return _mm512_mul_ps(a, b); }
    static Vec Divide(Vec a, Vec b) { return _mm512_div_ps(a, b); }
    static Vec Least(Vec a, Vec b) { return _mm512_maskz_min_ps(0xffff, a, b); }
    static Vec Largest(Vec a, Vec b) { return _mm512_maskz_max_ps(0xffff, a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm512_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) { return _mm512_fmsub_ps(a, b, c); }
    static Vec NegativeMultiplyAdd(Vec a, Vec b, Vec c) { return _mm512_fnmadd_ps(a, b, c); }
};

}  // namespace

const FilterKernels& FilterKernels::Avx512() noexcept {
    static constexpr FilterKernels kKernels{
        AllPass, VectorFilterKernels<Avx512Operations>::NearField,
        VectorFilterKernels<Avx512Operations>::LimitGrowth, ToRows, FromRows};
    return kKernels;
}

}  // namespace tav
