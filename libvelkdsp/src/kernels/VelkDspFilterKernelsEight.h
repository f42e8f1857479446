// SPDX-License-Identifier: MIT
// The kernels of filters that are fastest with eight lanes, also on AVX-512 processors.
//
// Only the translation units of AVX2 and AVX-512 include this; all of it is in an anonymous
// namespace, so that the linker cannot use this code on older processors.
#pragma once

#include "kernels/VelkDspFilterKernels.h"

#include <cstddef>
#include <immintrin.h>

namespace tav {
namespace {

/// eight[i][j] becomes eight[j][i].
inline void Transpose(__m256 (&eight)[8]) noexcept {
    __m256 pairs[8], fours[8];
    for (int i = 0; i < 8; i += 2) {
        pairs[i] = _mm256_unpacklo_ps(eight[i], eight[i + 1]);
        pairs[i + 1] = _mm256_unpackhi_ps(eight[i], eight[i + 1]);
    }
    for (int i = 0; i < 8; i += 4) {
        fours[i] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], _MM_SHUFFLE(1, 0, 1, 0));
        fours[i + 1] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], _MM_SHUFFLE(3, 2, 3, 2));
        fours[i + 2] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], _MM_SHUFFLE(1, 0, 1, 0));
        fours[i + 3] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], _MM_SHUFFLE(3, 2, 3, 2));
    }
    for (int i = 0; i < 4; ++i) {
        eight[i] = _mm256_permute2f128_ps(fours[i], fours[i + 4], 0x20);
        eight[i + 4] = _mm256_permute2f128_ps(fours[i], fours[i + 4], 0x31);
    }
}

/// Rings are not aligned: vectors of sixteen lanes would always cross cache lines.
inline void AllPass(float* signal, float* ring, float gain, int n) noexcept TAV_NONBLOCKING {
    const __m256 g = _mm256_set1_ps(gain);
    int k = 0;
    for (; k + 8 <= n; k += 8) {
        const __m256 old = _mm256_loadu_ps(ring + k);
        const __m256 w = _mm256_fnmadd_ps(g, old, _mm256_loadu_ps(signal + k));
        _mm256_storeu_ps(ring + k, w);
        _mm256_storeu_ps(signal + k, _mm256_fmadd_ps(g, w, old));
    }
    for (; k < n; ++k) {
        const float old = ring[k];
        const float w = signal[k] - gain * old;
        ring[k] = w;
        signal[k] = gain * w + old;
    }
}

inline void ToRows(const float* const* signals, float* rows, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t first = 0; first < kSourceLanes; first += 8) {
        const float* const* lane = signals + first;
        int k = 0;
        for (; k + 8 <= n; k += 8) {
            __m256 block[8];
            for (int i = 0; i < 8; ++i) block[i] = _mm256_loadu_ps(lane[i] + k);
            Transpose(block);
            float* const row = rows + k * kSourceLanes + first;
            for (int j = 0; j < 8; ++j) _mm256_storeu_ps(row + j * kSourceLanes, block[j]);
        }
        for (; k < n; ++k) {
            for (int i = 0; i < 8; ++i) rows[k * kSourceLanes + first + i] = lane[i][k];
        }
    }
}

inline void FromRows(const float* rows, float* const* signals, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t first = 0; first < kSourceLanes; first += 8) {
        float* const* lane = signals + first;
        int k = 0;
        for (; k + 8 <= n; k += 8) {
            __m256 block[8];
            const float* const row = rows + k * kSourceLanes + first;
            for (int j = 0; j < 8; ++j) block[j] = _mm256_loadu_ps(row + j * kSourceLanes);
            Transpose(block);
            for (int i = 0; i < 8; ++i) _mm256_storeu_ps(lane[i] + k, block[i]);
        }
        for (; k < n; ++k) {
            for (int i = 0; i < 8; ++i) lane[i][k] = rows[k * kSourceLanes + first + i];
        }
    }
}

}  // namespace
}  // namespace tav
