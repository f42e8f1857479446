// SPDX-License-Identifier: MIT
// The gains of many directions, when all of them are needed.
#pragma once

#include "kernels/VelkDspHoaKernels.h"
#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspMatrix.h"

#include <span>

namespace tav {

/// What encoding.Compute gives for each direction, within two roundings of 32 bits; in three
/// dimensions at a fraction of the time.
/// @param directions  finite, as many as `gains` has rows  @param gains  directions x
/// NumChannels(); more columns are left as they are, and where there are fewer, all are
/// @param kernels  where its pointers are null, one direction is computed after the other
/// Thread: one at a time.  Throws: std::bad_alloc.
void ComputeHoaGains(HoaEncodingVector& encoding,
                     std::span<const CartesianVector> directions,
                     Matrix<float>& gains,
                     const HoaKernels& kernels = BestKernels<HoaKernels>());

}  // namespace tav
