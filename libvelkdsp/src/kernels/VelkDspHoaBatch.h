// SPDX-License-Identifier: MIT
// Ambisonic gains of many directions at once.
#pragma once

#include "kernels/VelkDspHoaKernels.h"
#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspMatrix.h"

#include <span>

namespace tav {

/// The same gains as encoding.Compute for each direction, within two roundings of 32 bits; in three
/// dimensions much faster.
/// @param directions  finite, as many as `gains` has rows  @param gains  directions x
/// NumChannels(); more columns are left as they are, and where there are fewer, all are
/// @param kernels  if its pointers are null, each direction is computed by itself
/// Thread: one at a time.  Throws: std::bad_alloc.
void ComputeHoaGains(HoaEncodingVector& encoding,
                     std::span<const CartesianVector> directions,
                     Matrix<float>& gains,
                     const HoaKernels& kernels = BestKernels<HoaKernels>());

}  // namespace tav
