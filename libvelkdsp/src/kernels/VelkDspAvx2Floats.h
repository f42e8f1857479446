// SPDX-License-Identifier: MIT
// Vectors of eight floats, with AVX2 and FMA.
//
// Only the translation units of that instruction set include this; all of it is in an anonymous
// namespace, so that the linker cannot use this code on older processors.
#pragma once

#include <immintrin.h>

namespace tav {
namespace {

/// Base of the sets of operations with which kernels are written as templates. The first lanes of a
/// vector are those with the lowest addresses.
struct Avx2Floats {
    using Vec = __m256;
    static constexpr int kLanes = 8;

    static Vec Zero() noexcept { return _mm256_setzero_ps(); }
    static Vec Load(const float* p) noexcept { return _mm256_loadu_ps(p); }
    static void Store(float* p, Vec v) noexcept { _mm256_storeu_ps(p, v); }
    static Vec LoadFirst(const float* p, int count) noexcept {
        return _mm256_maskload_ps(p, FirstLanes(count));
    }
    static void StoreFirst(float* p, Vec v, int count) noexcept {
        _mm256_maskstore_ps(p, FirstLanes(count), v);
    }
    static Vec Broadcast(float value) noexcept { return _mm256_set1_ps(value); }
    static Vec Add(Vec a, Vec b) noexcept { return _mm256_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) noexcept { return _mm256_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) noexcept { return _mm256_mul_ps(a, b); }
    static Vec Divide(Vec a, Vec b) noexcept { return _mm256_div_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) noexcept { return _mm256_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) noexcept { return _mm256_fmsub_ps(a, b, c); }
    static Vec NegativeMultiplyAdd(Vec a, Vec b, Vec c) noexcept {
        return _mm256_fnmadd_ps(a, b, c);
    }

protected:
    static __m256i FirstLanes(int count) noexcept {
        return _mm256_cmpgt_epi32(_mm256_set1_epi32(count),
                                  _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    }
};

}  // namespace
}  // namespace tav
