// SPDX-License-Identifier: MIT
// The search for the triplet of loudspeakers around a direction, once per instruction set.
#pragma once

#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>
#include <cstdint>

namespace tav {

/// A block holds this many 3 x 3 matrices as nine rows, element by element:
/// row e of a block is element e (row-major) of its matrices.
inline constexpr std::ptrdiff_t kTripletLanes = 16;
inline constexpr std::ptrdiff_t kTripletElements = 9;

struct TripletKernels {
    /// For each matrix finds the smallest component of matrix . position, and for each lane the
    /// largest of these over all blocks.
    /// @param elements  numBlocks blocks, any alignment       @param position  x, y, z
    /// @param best  kTripletLanes values, each replaced by a larger result of its lane
    /// @param bestBlock  the number of the first block with that result, where `best` is replaced
    /// All sets give the same bits, because nothing is fused and products are added from left to
    /// right. A result that is not a number never replaces another.  Thread: any.
    void (*findPeaks)(const float* elements,
                      std::int32_t numBlocks,
                      const float* position,
                      float* best,
                      std::int32_t* bestBlock) noexcept;

    // One file each.
    static const TripletKernels& Scalar() noexcept;
    static const TripletKernels& Avx2() noexcept;
    static const TripletKernels& Avx512() noexcept;
};

}  // namespace tav
