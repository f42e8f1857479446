// SPDX-License-Identifier: MIT
// Ambisonic gains of many directions at once.
#pragma once

#include "kernels/VelkDspHoaKernels.h"
#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspMatrix.h"

#include <span>

namespace tav {

/// Computes the gains that encoding.Compute gives for each direction, except for two roundings to
/// 32 bits. In three dimensions this is much faster than one direction after the other.
/// @param directions  finite, as many as `gains` has rows
/// @param gains    directions x NumChannels(); further columns are not written, and nothing is
///                 written where there are fewer columns
/// @param kernels  with null pointers each direction is computed separately
/// Thread: one at a time.  Throws: std::bad_alloc.
void ComputeHoaGains(HoaEncodingVector& encoding,
                     std::span<const CartesianVector> directions,
                     Matrix<float>& gains,
                     const HoaKernels& kernels = BestKernels<HoaKernels>());

}  // namespace tav
