// SPDX-License-Identifier: MIT
// The sums of filter banks: products of small matrices, and windows over the past.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>

namespace tav {

/// y[row][column] = sum over k of a[row][k] * b[k][column]. Rows of a matrix lie `stride` numbers
/// apart; y overlaps neither a nor b.
struct SubbandProduct {
    float* y;
    std::ptrdiff_t yStride;
    const float* a;
    std::ptrdiff_t aStride;
    const float* b;
    std::ptrdiff_t bStride;
    int numRows;
    int numInner;
    int numColumns;  // a multiple of 8, at most 32
};

inline constexpr int kWindowTaps = 16;

/// No alignment is needed. Vector sets may fuse multiply and add.  Thread: any.
struct SubbandKernels {
    void (*multiply)(const SubbandProduct& product) noexcept TAV_NONBLOCKING;
    /// y[k] = sum over taps t of rows[t][k] * weights[16 t + k] for k = 0 .. 15; y overlaps nothing
    void (*window)(float* y,
                   const float* const* rows,
                   const float* weights) noexcept TAV_NONBLOCKING;

    // One file each.
    static const SubbandKernels& Scalar() noexcept;
    static const SubbandKernels& Avx2() noexcept;
};

}  // namespace tav
