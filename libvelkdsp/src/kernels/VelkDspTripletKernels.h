// SPDX-License-Identifier: MIT
// The search for the triplet of loudspeakers around a direction, once per instruction set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tav {

/// A block holds this many 3 x 3 matrices as nine rows, element by element:
/// row e of a block is element e (row-major) of its matrices.
inline constexpr std::ptrdiff_t kTripletLanes = 16;
inline constexpr std::ptrdiff_t kTripletElements = 9;

struct TripletKernels {
    /// The smallest component of matrix . position is sought for each matrix, and per lane the
    /// largest of those over all blocks.
    /// @param elements  numBlocks blocks, any alignment       @param position  x, y, z
    /// @param best  kTripletLanes values to beat; the largest that did where one was larger
    /// @param bestBlock  the first block that has it, untouched where none beat the value
    /// All sets give the same bits: nothing is fused, and products add up from left to right. What
    /// is no number beats nothing.  Thread: any.
    void (*findPeaks)(const float* elements,
                      std::int32_t numBlocks,
                      const float* position,
                      float* best,
                      std::int32_t* bestBlock) noexcept;
};

/// The set with the name that a set of gain kernels has; the scalar one for any other name.
/// @pre  this machine runs the gain kernels of that name
const TripletKernels& TripletKernelsNamed(std::string_view name) noexcept;
/// The set that goes with BestKernels().  Thread: control.
const TripletKernels& BestTripletKernels() noexcept;

// One file each.
const TripletKernels& ScalarTripletKernels() noexcept;  // the reference twin
const TripletKernels& Avx2TripletKernels() noexcept;
const TripletKernels& Avx512TripletKernels() noexcept;

}  // namespace tav
