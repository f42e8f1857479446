// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaKernels.h"

#include "kernels/VelkDspHoaKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations {
    using Vec = __m256d;
    using Floats = __m256;
    static constexpr std::ptrdiff_t kLanes = 4;

    static Vec Load(const float* p) { return _mm256_cvtps_pd(_mm_loadu_ps(p)); }
    static Vec Broadcast(const double* p) { return _mm256_broadcast_sd(p); }
    static Vec Multiply(Vec a, Vec b) { return _mm256_mul_pd(a, b); }
    static Vec MultiplyAdd(Vec a, Vec b, Vec c) { return _mm256_fmadd_pd(a, b, c); }
    static Vec MultiplySubtract(Vec a, Vec b, Vec c) { return _mm256_fmsub_pd(a, b, c); }
    static Vec Inverse(Vec square) {
        return _mm256_div_pd(_mm256_set1_pd(1.0), _mm256_sqrt_pd(square));
    }
    static Floats Rounded(Vec a, Vec b) {
        return _mm256_set_m128(_mm256_cvtpd_ps(b), _mm256_cvtpd_ps(a));
    }
    static Floats MultiplyFloats(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
    static void StoreFloats(float* p, Floats v) { _mm256_storeu_ps(p, v); }
};

constexpr std::ptrdiff_t kPatchChannels = 8;
constexpr std::ptrdiff_t kPatchRows = 4;

/// Four directions of channel c in the lower half, of channel c + 4 in the upper half.
__m256 LoadPair(const float* c) noexcept {
    const __m256 low = _mm256_castps128_ps256(_mm_loadu_ps(c));
    return _mm256_insertf128_ps(low, _mm_loadu_ps(c + 4 * kHoaDirections), 1);
}

/// Transposes at most eight channels of four directions.
void TurnPatch(const float* channels,
               float* rows,
               std::ptrdiff_t stride,
               std::ptrdiff_t numRows) noexcept {
    const __m256 c0 = LoadPair(channels);
    const __m256 c1 = LoadPair(channels + kHoaDirections);
    const __m256 c2 = LoadPair(channels + 2 * kHoaDirections);
    const __m256 c3 = LoadPair(channels + 3 * kHoaDirections);
    const __m256 low01 = _mm256_unpacklo_ps(c0, c1);
    const __m256 low23 = _mm256_unpacklo_ps(c2, c3);
    const __m256 high01 = _mm256_unpackhi_ps(c0, c1);
    const __m256 high23 = _mm256_unpackhi_ps(c2, c3);
    _mm256_storeu_ps(rows, _mm256_shuffle_ps(low01, low23, 0x44));
    if (numRows > 1) _mm256_storeu_ps(rows + stride, _mm256_shuffle_ps(low01, low23, 0xee));
    if (numRows > 2) _mm256_storeu_ps(rows + 2 * stride, _mm256_shuffle_ps(high01, high23, 0x44));
    if (numRows > 3) _mm256_storeu_ps(rows + 3 * stride, _mm256_shuffle_ps(high01, high23, 0xee));
}

void Turn(const float* channels,
          std::ptrdiff_t numChannels,
          float* rows,
          std::ptrdiff_t stride,
          std::ptrdiff_t numRows) noexcept {
    const std::ptrdiff_t numWhole = numChannels - numChannels % kPatchChannels;
    // Rows in the outer loop, so that two successive patches fill a cache line.
    for (std::ptrdiff_t row = 0; row < numRows; row += kPatchRows) {
        for (std::ptrdiff_t c = 0; c < numWhole; c += kPatchChannels) {
            TurnPatch(channels + c * kHoaDirections + row, rows + row * stride + c, stride,
                      numRows - row);
        }
    }
    for (std::ptrdiff_t c = numWhole; c < numChannels; ++c) {
        for (std::ptrdiff_t row = 0; row < numRows; ++row) {
            rows[row * stride + c] = channels[c * kHoaDirections + row];
        }
    }
}

}  // namespace

const HoaKernels& HoaKernels::Avx2() noexcept {
    static constexpr HoaKernels kKernels{VectorHoaKernels<Avx2Operations>::Encode, Turn};
    return kKernels;
}

}  // namespace tav
