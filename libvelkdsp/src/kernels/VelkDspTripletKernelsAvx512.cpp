// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include <immintrin.h>

namespace tav {
namespace {

static_assert(kTripletLanes == 16, "a row of a block is one register");

struct Position {
    __m512 x, y, z;
};

__m512 Product(const float* row, const Position& p) noexcept {
    const __m512 x = _mm512_mul_ps(_mm512_loadu_ps(row), p.x);
    const __m512 y = _mm512_mul_ps(_mm512_loadu_ps(row + kTripletLanes), p.y);
    const __m512 z = _mm512_mul_ps(_mm512_loadu_ps(row + 2 * kTripletLanes), p.z);
    return _mm512_add_ps(_mm512_add_ps(x, y), z);
}

/// Like std::min(u, v). Masked, since some compilers warn of uninitialised values in the plain
/// form.
__m512 Least(__m512 u, __m512 v) noexcept {
    return _mm512_mask_mov_ps(u, _mm512_cmp_ps_mask(v, u, _CMP_LT_OQ), v);
}

void FindPeaks(const float* elements,
               std::int32_t numBlocks,
               const float* position,
               float* best,
               std::int32_t* bestBlock) noexcept {
    const Position p{_mm512_set1_ps(position[0]), _mm512_set1_ps(position[1]),
                     _mm512_set1_ps(position[2])};
    __m512 highest = _mm512_loadu_ps(best);
    __m512i where = _mm512_loadu_si512(bestBlock);
    const float* m = elements;
    for (std::int32_t block = 0; block < numBlocks; ++block) {
        const __m512 a = Product(m, p);
        const __m512 b = Product(m + 3 * kTripletLanes, p);
        const __m512 c = Product(m + 6 * kTripletLanes, p);
        const __m512 least = Least(Least(a, b), c);
        const __mmask16 isHigher = _mm512_cmp_ps_mask(least, highest, _CMP_GT_OQ);
        where = _mm512_mask_mov_epi32(where, isHigher, _mm512_set1_epi32(block));
        highest = _mm512_mask_mov_ps(highest, isHigher, least);
        m += kTripletElements * kTripletLanes;
    }
    _mm512_storeu_ps(best, highest);
    _mm512_storeu_si512(bestBlock, where);
}

}  // namespace

const TripletKernels& TripletKernels::Avx512() noexcept {
    static constexpr TripletKernels kKernels{FindPeaks};
    return kKernels;
}

}  // namespace tav
