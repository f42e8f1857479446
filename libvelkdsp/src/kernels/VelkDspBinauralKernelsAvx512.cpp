// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx512Floats.h"
#include "kernels/VelkDspBinauralKernelsEight.h"
#include "kernels/VelkDspBinauralKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations : Avx512Floats {
    /// Four samples of each of sixteen signals; signal 4 q + i in quarter q of vector i.
    static void LoadQuarters(const float* const* signals, std::ptrdiff_t k, Vec (&four)[4]) {
        for (int i = 0; i < 4; ++i) {
            const auto quarter = [&](int q) { return _mm_loadu_ps(signals[4 * q + i] + k); };
            Vec v = _mm512_castps128_ps512(quarter(0));
            v = _mm512_insertf32x4(v, quarter(1), 1);
            v = _mm512_insertf32x4(v, quarter(2), 2);
            four[i] = _mm512_insertf32x4(v, quarter(3), 3);
        }
    }
    static Vec UnpackLow(Vec a, Vec b) { return _mm512_maskz_unpacklo_ps(kAll, a, b); }
    static Vec UnpackHigh(Vec a, Vec b) { return _mm512_maskz_unpackhi_ps(kAll, a, b); }
    static Vec LowPairs(Vec a, Vec b) {
        return _mm512_maskz_shuffle_ps(kAll, a, b, _MM_SHUFFLE(1, 0, 1, 0));
    }
    static Vec HighPairs(Vec a, Vec b) {
        return _mm512_maskz_shuffle_ps(kAll, a, b, _MM_SHUFFLE(3, 2, 3, 2));
    }
    static Vec Count() {
        return _mm512_setr_ps(0.f, 1.f, 2.f, 3.f, 4.f, 5.f, 6.f, 7.f, 8.f, 9.f, 10.f, 11.f, 12.f,
                              13.f, 14.f, 15.f);
    }
    static Vec WhereNegative(Vec test, Vec a, Vec b) {
        const __mmask16 negative = _mm512_cmp_ps_mask(test, _mm512_setzero_ps(), _CMP_LT_OQ);
        return _mm512_mask_blend_ps(negative, b, a);
    }
};

using Kernels = VectorBinauralKernels<Avx512Operations>;

}  // namespace

const BinauralKernels& BinauralKernels::Avx512() noexcept {
    static constexpr BinauralKernels kKernels{
        Kernels::Cascade,       Kernels::Read, Kernels::ReadGliding, Kernels::Glide,
        Kernels::FadeWeightsOf, SumLanes,      Kernels::FirstOrder};
    return kKernels;
}

}  // namespace tav
