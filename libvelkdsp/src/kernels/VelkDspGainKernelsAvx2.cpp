// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx2Floats.h"
#include "kernels/VelkDspGainKernelsVector.h"

#include <cstdint>
#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations : Avx2Floats {
    static constexpr int kPieceVectors = 2;

    static Vec MagnitudeAbove(Vec v, Vec limit) {
        const Vec magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.f), v);
        return _mm256_cmp_ps(magnitude, limit, _CMP_GT_OQ);
    }
    static Vec Where(Vec mask, Vec yes, Vec no) { return _mm256_blendv_ps(no, yes, mask); }
    static std::uint64_t Bits(Vec mask) {
        return static_cast<std::uint64_t>(_mm256_movemask_ps(mask));
    }
};

}  // namespace

const GainKernels& GainKernels::Avx2() noexcept {
    return VectorGainKernels<Avx2Operations>::kKernels;
}

}  // namespace tav
