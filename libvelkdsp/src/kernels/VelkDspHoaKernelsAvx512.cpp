// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaKernels.h"
#include "kernels/VelkDspHoaKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

// Masked forms with all lanes where compilers warn of uninitialised values in the plain intrinsic.
struct Avx512Operations {
    using Vec = __m512d;
    using Floats = __m512;
    static constexpr std::ptrdiff_t kLanes = 8;

    static Vec Load(const float* p) { return _mm512_maskz_cvtps_pd(0xff, _mm256_loadu_ps(p)); }
    static Vec Broadcast(const double* p) { return _mm512_set1_pd(*p); }
    static Vec Multiply(Vec a, Vec b) { return _mm512_mul_pd(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm512_fmadd_pd(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) { return _mm512_fmsub_pd(a, b, c); }
    static Vec Inverse(Vec square) {
        const Vec length = _mm512_maskz_sqrt_pd(0xff, square);
        return _mm512_div_pd(_mm512_set1_pd(1.0), length);
    }
    static Floats Rounded(Vec a, Vec b) {
        const __m512d low =
            _mm512_castps_pd(_mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(0xff, a)));
        const __m256d high = _mm256_castps_pd(_mm512_maskz_cvtpd_ps(0xff, b));
        return _mm512_castpd_ps(_mm512_maskz_insertf64x4(0xff, low, high, 1));
    }
    static Floats MultiplyFloats(Floats a, Floats b) { return _mm512_mul_ps(a, b); }
    static void StoreFloats(float* p, Floats v) { _mm512_storeu_ps(p, v); }
};

}  // namespace

const HoaKernels& HoaKernels::Avx512() noexcept {
    static const HoaKernels kKernels{VectorHoaKernels<Avx512Operations>::Encode,
                                     HoaKernels::Avx2().turn};
    return kKernels;
}

}  // namespace tav
