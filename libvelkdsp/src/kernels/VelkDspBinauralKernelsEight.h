// SPDX-License-Identifier: MIT
// The kernels of binaural rendering that are fastest with eight lanes, also on AVX-512 processors.
//
// Only the translation units of AVX2 and AVX-512 include this; all of it is in an anonymous
// namespace, so that the linker cannot use this code on older processors.
#pragma once

#include "kernels/VelkDspBinauralKernels.h"

#include <immintrin.h>

namespace tav {
namespace {

/// Both halves of a row.
inline __m256 HalvesOfRow(const float* row) noexcept {
    return _mm256_add_ps(_mm256_loadu_ps(row), _mm256_loadu_ps(row + 8));
}

/// The sums of four rows, separately for the lower and the upper lanes.
inline __m256 SumsOfFour(const float* rows) noexcept {
    const __m256 two = _mm256_hadd_ps(HalvesOfRow(rows), HalvesOfRow(rows + kSourceLanes));
    const __m256 more =
        _mm256_hadd_ps(HalvesOfRow(rows + 2 * kSourceLanes), HalvesOfRow(rows + 3 * kSourceLanes));
    return _mm256_hadd_ps(two, more);
}

inline void SumLanes(const float* rows, float* y, int n) noexcept TAV_NONBLOCKING {
    int k = 0;
    for (; k + 8 <= n; k += 8, rows += 8 * kSourceLanes) {
        const __m256 first = SumsOfFour(rows), last = SumsOfFour(rows + 4 * kSourceLanes);
        const __m256 sums = _mm256_add_ps(_mm256_permute2f128_ps(first, last, 0x20),
                                          _mm256_permute2f128_ps(first, last, 0x31));
        _mm256_storeu_ps(y + k, _mm256_add_ps(sums, _mm256_loadu_ps(y + k)));
    }
    if (k < n) BinauralKernels::Scalar().sumLanes(rows, y + k, n - k);
}

}  // namespace
}  // namespace tav
