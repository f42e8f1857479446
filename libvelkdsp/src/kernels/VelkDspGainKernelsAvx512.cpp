// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx512Floats.h"
#include "kernels/VelkDspGainKernelsVector.h"

#include <cstdint>
#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations : Avx512Floats {
    static constexpr int kPieceVectors = 4;

    static __mmask16 MagnitudeAbove(Vec v, Vec limit) {
        return _mm512_cmp_ps_mask(_mm512_abs_ps(v), limit, _CMP_GT_OQ);
    }
    static Vec Where(__mmask16 mask, Vec yes, Vec no) {
        return _mm512_mask_blend_ps(mask, no, yes);
    }
    static std::uint64_t Bits(__mmask16 mask) { return mask; }
};

}  // namespace

const GainKernels& GainKernels::Avx512() noexcept {
    return VectorGainKernels<Avx512Operations>::kKernels;
}

}  // namespace tav
