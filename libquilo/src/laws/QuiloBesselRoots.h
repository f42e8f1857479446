// SPDX-License-Identifier: MIT
// Where the spherical waves of an ambisonic order have their zeros and poles.
#pragma once

#include <complex>
#include <vector>

namespace Quilo {

/// Roots of the reverse Bessel polynomial of degree n, the one with constant term (2n)!/(2^n n!)
/// and leading term 1. All lie left of the imaginary axis; those on and above the real axis are
/// given, imaginary parts descending, so a real root is the last one. Right to 1e-12 for n up to
/// 124 and beyond; polynomial coefficients or plain recurrences would fail from about 25 on.
/// Throws: std::bad_alloc.  Cost: O(n^2).
std::vector<std::complex<double>> ReverseBesselRoots(unsigned degree);

}  // namespace Quilo
