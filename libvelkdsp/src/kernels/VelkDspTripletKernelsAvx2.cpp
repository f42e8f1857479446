// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include <immintrin.h>

namespace tav {
namespace {

constexpr std::ptrdiff_t kLanes = 8;

struct Position {
    __m256 x, y, z;
};

__m256 Product(const float* row, const Position& p) noexcept {
    const __m256 x = _mm256_mul_ps(_mm256_loadu_ps(row), p.x);
    const __m256 y = _mm256_mul_ps(_mm256_loadu_ps(row + kTripletLanes), p.y);
    const __m256 z = _mm256_mul_ps(_mm256_loadu_ps(row + 2 * kTripletLanes), p.z);
    return _mm256_add_ps(_mm256_add_ps(x, y), z);
}

void FindPeaks(const float* elements,
               std::int32_t numBlocks,
               const float* position,
               float* best,
               std::int32_t* bestBlock) noexcept {
    const Position p{_mm256_set1_ps(position[0]), _mm256_set1_ps(position[1]),
                     _mm256_set1_ps(position[2])};
    for (std::ptrdiff_t first = 0; first < kTripletLanes; first += kLanes) {
        __m256 highest = _mm256_loadu_ps(best + first);
        // Block numbers are blended as if they were floats.
        auto* const places = reinterpret_cast<__m256i*>(bestBlock + first);
        __m256 where = _mm256_castsi256_ps(_mm256_loadu_si256(places));
        const float* m = elements + first;
        for (std::int32_t block = 0; block < numBlocks; ++block) {
            const __m256 a = Product(m, p);
            const __m256 b = Product(m + 3 * kTripletLanes, p);
            const __m256 c = Product(m + 6 * kTripletLanes, p);
            // min(v, u) is u if one of them is NaN, like std::min(u, v).
            const __m256 least = _mm256_min_ps(c, _mm256_min_ps(b, a));
            const __m256 isHigher = _mm256_cmp_ps(least, highest, _CMP_GT_OQ);
            const __m256 here = _mm256_castsi256_ps(_mm256_set1_epi32(block));
            where = _mm256_blendv_ps(where, here, isHigher);
            highest = _mm256_blendv_ps(highest, least, isHigher);
            m += kTripletElements * kTripletLanes;
        }
        _mm256_storeu_ps(best + first, highest);
        _mm256_storeu_si256(places, _mm256_castps_si256(where));
    }
}

}  // namespace

const TripletKernels& TripletKernels::Avx2() noexcept {
    static constexpr TripletKernels kKernels{FindPeaks};
    return kKernels;
}

}  // namespace tav
