// SPDX-License-Identifier: MIT
// The spherical harmonics of many directions at once, once per instruction set.
//
// A lane is a direction. The scalar set is empty: without vectors one direction after the other is
// faster, and HoaEncodingVector, which does that, is the reference twin.
#pragma once

#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>

namespace tav {

/// Directions of one call.
inline constexpr std::ptrdiff_t kHoaDirections = 16;
/// Degrees that stand side by side in the tables.
inline constexpr std::ptrdiff_t kHoaDegrees = 4;

/// The tables of a HoaRecurrence of three dimensions. The step to (m + 1, m) is number 5 (m % 4) of
/// its block of degrees, those to later orders follow every kHoaDegrees.
struct HoaTables {
    std::ptrdiff_t order;
    const double* sectoral;
    const double* last;
    const double* before;
};

struct HoaKernels {
    /// @param directions  x of all, y of all, z of all: kHoaDirections each, any length but 0
    /// @param channels  a row of kHoaDirections a channel, in ACN order, overwritten
    /// Gains are within two roundings of 32 bits of the exact ones.  Thread: any.
    void (*encode)(const HoaTables& tables, const double* directions, float* channels) noexcept;
    /// Turns such rows into one row a direction.
    /// @param rows  the first of numRows, at most kHoaDirections; `stride` floats apart
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
