// SPDX-License-Identifier: MIT
// Spherical harmonics by the standard library's Legendre functions and by angles, in 64 bits.
#pragma once

#include "math/VelkDspCartesian.h"

namespace Plain {

/// N3D, without the Condon-Shortley phase; orders up to 40.
double Harmonic(unsigned n, int m, const tav::CartesianVector& direction);

/// The sectoral harmonic of degree m with a largest value of 1: any order.
double CircularHarmonic(int m, const tav::CartesianVector& direction);

}  // namespace Plain
