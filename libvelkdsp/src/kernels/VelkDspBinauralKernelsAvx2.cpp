// SPDX-License-Identifier: MIT
#include "kernels/VelkDspBinauralKernelsEight.h"
#include "kernels/VelkDspBinauralKernelsVector.h"

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
    static Vec Count() { return _mm256_setr_ps(0.f, 1.f, 2.f, 3.f, 4.f, 5.f, 6.f, 7.f); }
    static Vec Add(Vec a, Vec b) { return _mm256_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) { return _mm256_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) { return _mm256_mul_ps(a, b); }
    static Vec Min(Vec a, Vec b) { return _mm256_min_ps(a, b); }
    static Vec Max(Vec a, Vec b) { return _mm256_max_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fmadd_ps(a, b, c); }
    static Vec NegativeMultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fnmadd_ps(a, b, c); }
};

using Kernels = VectorBinauralKernels<Avx2Operations>;

}  // namespace

const BinauralKernels& BinauralKernels::Avx2() noexcept {
    static constexpr BinauralKernels kKernels{
        Kernels::Cascade, Kernels::Glide, Kernels::FadeWeightsOf, SumLanes, Kernels::FirstOrder};
    return kKernels;
}

}  // namespace tav
