// SPDX-License-Identifier: MIT
// Vectors of sixteen floats, with AVX-512 (foundation).
//
// Only the translation units of that instruction set include this; all of it is in an anonymous
// namespace, so that the linker cannot use this code on older processors.
#pragma once

#include <immintrin.h>

namespace tav {
namespace {

/// Base of the sets of operations with which kernels are written as templates. The first lanes of a
/// vector are those with the lowest addresses.
struct Avx512Floats {
    using Vec = __m512;
    static constexpr int kLanes = 16;

    static Vec Zero() noexcept { return _mm512_setzero_ps(); }
    static Vec Load(const float* p) noexcept { return _mm512_loadu_ps(p); }
    static void Store(float* p, Vec v) noexcept { _mm512_storeu_ps(p, v); }
    static Vec LoadFirst(const float* p, int count) noexcept {
        return _mm512_maskz_loadu_ps(FirstLanes(count), p);
    }
    static void StoreFirst(float* p, Vec v, int count) noexcept {
        _mm512_mask_storeu_ps(p, FirstLanes(count), v);
    }
    static Vec Broadcast(float value) noexcept { return _mm512_set1_ps(value); }
    static Vec Add(Vec a, Vec b) noexcept { return _mm512_add_ps(a, b); }
    static Vec Subtract(Vec a, Vec b) noexcept { return _mm512_sub_ps(a, b); }
    static Vec Multiply(Vec a, Vec b) noexcept { return _mm512_mul_ps(a, b); }
    static Vec Divide(Vec a, Vec b) noexcept { return _mm512_div_ps(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) noexcept { return _mm512_fmadd_ps(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) noexcept { return _mm512_fmsub_ps(a, b, c); }
    static Vec NegativeMultiplyAdd(Vec a, Vec b, Vec c) noexcept {
        return _mm512_fnmadd_ps(a, b, c);
    }

protected:
    // For masked forms with all lanes: GCC 12 warns of uninitialised values in some plain
    // intrinsics.
    static constexpr __mmask16 kAll = 0xffff;

    static __mmask16 FirstLanes(int count) noexcept {
        return static_cast<__mmask16>((1u << static_cast<unsigned>(count)) - 1u);
    }
};

}  // namespace
}  // namespace tav
