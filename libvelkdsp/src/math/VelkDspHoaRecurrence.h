// SPDX-License-Identifier: MIT
// How one spherical harmonic follows from those before it, tabulated for an encoding.
//
// Written as Y(n, m) = Q(n, |m|) Re or Im of w^|m| with w = (x + i y) / r, every harmonic needs
// products only: Q is a polynomial in z / r that grows over n, and neither an angle nor the
// distance from the vertical axis appears.
#pragma once

#include "math/VelkDspSphericalHarmonic.h"
#include "math/VelkDspVector.h"

#include <cstddef>

namespace tav {

/// Q(n, m) = last (z / r) Q(n - 1, m) - before Q(n - 2, m).
struct HoaStep {
    double last = 0.0;
    double before = 0.0;
};

/// N3D.  @pre  n > m
HoaStep StepToOrder(unsigned n, unsigned m);
/// Q(m, m) / Q(m - 1, m - 1) in N3D.  @pre  m > 0
double SectoralStep(unsigned m);

/// The steps of all harmonics up to an order in one normalisation.
struct HoaRecurrence {
    /// Throws: std::bad_alloc.
    HoaRecurrence(unsigned order,
                  unsigned dimension,
                  SphericalHarmonic::Normalization normalization);

    unsigned order = 0;
    unsigned dimension = 0;
    /// Q(m, m) for m = 0 .. order.
    Vector<double> sectoral;
    /// Three dimensions only. Row n, from n = 1, has the steps to (n, 0) .. (n, n - 1); the rows
    /// follow each other, so that the step to (n, m) is number n (n - 1) / 2 + m.
    Vector<HoaStep> steps;
};

}  // namespace tav
