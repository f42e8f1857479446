// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSubbandKernels.h"

#include <immintrin.h>

namespace tav {
namespace {

/// `rows` rows of the product from `row` on, all sums in registers.
template <std::size_t rows, std::size_t vectors>
void MultiplyTile(const SubbandProduct& product, int row) noexcept TAV_NONBLOCKING {
    __m256 sums[rows][vectors];
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t v = 0; v < vectors; ++v) sums[r][v] = _mm256_setzero_ps();
    }
    const float* const a = product.a + row * product.aStride;
    for (int k = 0; k < product.numInner; ++k) {
        const float* const b = product.b + k * product.bStride;
        __m256 columns[vectors];
        for (std::size_t v = 0; v < vectors; ++v) columns[v] = _mm256_loadu_ps(b + 8 * v);
        for (std::size_t r = 0; r < rows; ++r) {
            const __m256 factor =
                _mm256_broadcast_ss(a + static_cast<std::ptrdiff_t>(r) * product.aStride + k);
            for (std::size_t v = 0; v < vectors; ++v) {
                sums[r][v] = _mm256_fmadd_ps(factor, columns[v], sums[r][v]);
            }
        }
    }
    for (std::size_t r = 0; r < rows; ++r) {
        float* const y = product.y + (row + static_cast<std::ptrdiff_t>(r)) * product.yStride;
        for (std::size_t v = 0; v < vectors; ++v) _mm256_storeu_ps(y + 8 * v, sums[r][v]);
    }
}

template <std::size_t vectors>
void MultiplyRows(const SubbandProduct& product) noexcept TAV_NONBLOCKING {
    int row = 0;
    for (; row + 3 <= product.numRows; row += 3) MultiplyTile<3, vectors>(product, row);
    for (; row < product.numRows; ++row) MultiplyTile<1, vectors>(product, row);
}

void MultiplySubbands(const SubbandProduct& product) noexcept TAV_NONBLOCKING {
    switch (product.numColumns / 8) {
        case 1: return MultiplyRows<1>(product);
        case 2: return MultiplyRows<2>(product);
        case 3: return MultiplyRows<3>(product);
        case 4: return MultiplyRows<4>(product);
        default: return;
    }
}

void WindowSubbands(float* y,
                    const float* const* rows,
                    const float* weights) noexcept TAV_NONBLOCKING {
    // Two sums a vector, so that additions need not wait for each other.
    __m256 sums[2][2] = {{_mm256_setzero_ps(), _mm256_setzero_ps()},
                         {_mm256_setzero_ps(), _mm256_setzero_ps()}};
    for (std::size_t tap = 0; tap < kWindowTaps; ++tap) {
        for (std::size_t v = 0; v < 2; ++v) {
            sums[tap % 2][v] =
                _mm256_fmadd_ps(_mm256_loadu_ps(rows[tap] + 8 * v),
                                _mm256_loadu_ps(weights + 16 * tap + 8 * v), sums[tap % 2][v]);
        }
    }
    for (std::size_t v = 0; v < 2; ++v)
        _mm256_storeu_ps(y + 8 * v, _mm256_add_ps(sums[0][v], sums[1][v]));
}

}  // namespace

const SubbandKernels& SubbandKernels::Avx2() noexcept {
    static constexpr SubbandKernels kKernels{MultiplySubbands, WindowSubbands};
    return kKernels;
}

}  // namespace tav
