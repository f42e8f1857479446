// SPDX-License-Identifier: MIT
// Tables of the recurrence by which an encoding computes spherical harmonics.
//
// Written as Y(n, m) = Q(n, |m|) Re or Im of w^|m| with w = (x + i y) / r, every harmonic needs
// products only: Q is a polynomial in z / r with a recurrence over n, and neither angles nor the
// distance from the vertical axis are needed.
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
/// Degrees are stored in blocks of kLanes neighbours, so that a block can be computed at once:
/// first the block of degrees 0 .. 3 with its rows n = 1 .. order, then that of 4 .. 7 with its
/// rows n = 5 .. order, and so on; a row has one value per degree. In rows up to n = m, where Q(n,
/// m) does not exist, the steps leave a lane that starts with Q(m, m) twice at this value.
struct HoaRecurrence {
    static constexpr std::size_t kLanes = 4;

    /// Throws: std::bad_alloc.
    HoaRecurrence(unsigned order,
                  unsigned dimension,
                  SphericalHarmonic::Normalization normalization);

    unsigned order = 0;
    unsigned dimension = 0;
    Vector<double> sectoral;  ///< Q(m, m), zeros up to a whole block
    Vector<double> last;      ///< three dimensions only: HoaStep::last
    Vector<double> before;    ///< and HoaStep::before

private:
    void AddSteps(SphericalHarmonic::Normalization normalization);
};

}  // namespace tav
