// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx2Floats.h"
#include "kernels/VelkDspBinauralKernelsEight.h"
#include "kernels/VelkDspBinauralKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations : Avx2Floats {
    /// Four samples of each of eight signals; signal 4 q + i in quarter q of vector i.
    static void LoadQuarters(const float* const* signals, std::ptrdiff_t k, Vec (&four)[4]) {
        for (int i = 0; i < 4; ++i) {
            const __m256 low = _mm256_castps128_ps256(_mm_loadu_ps(signals[i] + k));
            four[i] = _mm256_insertf128_ps(low, _mm_loadu_ps(signals[i + 4] + k), 1);
        }
    }
    static Vec UnpackLow(Vec a, Vec b) { return _mm256_unpacklo_ps(a, b); }
    static Vec UnpackHigh(Vec a, Vec b) { return _mm256_unpackhi_ps(a, b); }
    static Vec LowPairs(Vec a, Vec b) { return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 1, 0)); }
    static Vec HighPairs(Vec a, Vec b) { return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 2, 3, 2)); }
    static Vec Count() { return _mm256_setr_ps(0.f, 1.f, 2.f, 3.f, 4.f, 5.f, 6.f, 7.f); }
    static Vec WhereNegative(Vec test, Vec a, Vec b) { return _mm256_blendv_ps(b, a, test); }
};

using Kernels = VectorBinauralKernels<Avx2Operations>;

}  // namespace

const BinauralKernels& BinauralKernels::Avx2() noexcept {
    static constexpr BinauralKernels kKernels{
        Kernels::Cascade,       Kernels::Read, Kernels::ReadGliding, Kernels::Glide,
        Kernels::FadeWeightsOf, SumLanes,      Kernels::FirstOrder};
    return kKernels;
}

}  // namespace tav
