// SPDX-License-Identifier: MIT
// The spherical harmonics of many directions at once, once per instruction set.
//
// Each lane is one direction. The scalar set is empty: without vectors HoaEncodingVector, which
// computes one direction at a time, is faster. It is also the reference for these kernels.
#pragma once

#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>

namespace tav {

/// Number of directions of one call.
inline constexpr std::ptrdiff_t kHoaDirections = 16;
/// Degrees in a block of the tables.
inline constexpr std::ptrdiff_t kHoaDegrees = 4;

/// The tables of a HoaRecurrence of three dimensions. The step to (m + 1, m) has the index 5 (m %
/// 4) in its block of degrees; each later order is kHoaDegrees further.
struct HoaTables {
    std::ptrdiff_t order;
    const double* sectoral;
    const double* last;
    const double* before;
};

struct HoaKernels {
    /// @param directions  all x, then all y, then all z, kHoaDirections each; of any length but 0
    /// @param channels  one row of kHoaDirections for each channel, in ACN order, overwritten
    /// Gains are within two roundings of 32 bits of the exact ones.  Thread: any.
    void (*encode)(const HoaTables& tables, const float* directions, float* channels) noexcept;
    /// Transposes these rows to one row of channels for each direction.
    /// @param rows  numRows rows, at most kHoaDirections, `stride` floats apart
    void (*turn)(const float* channels,
                 std::ptrdiff_t numChannels,
                 float* rows,
                 std::ptrdiff_t stride,
                 std::ptrdiff_t numRows) noexcept;

    static const HoaKernels& Scalar() noexcept;  // both pointers are null
    // One file each.
    static const HoaKernels& Avx2() noexcept;
    static const HoaKernels& Avx512() noexcept;
};

}  // namespace tav
