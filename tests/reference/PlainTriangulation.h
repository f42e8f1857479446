// SPDX-License-Identifier: MIT
// The triangulation of loudspeaker layouts and the choice of a triplet, step by step and slowly.
//
// Nothing is remembered between steps and nothing is skipped: every angle is measured where it is
// needed, all pairs meet all pairs. What the fast version must equal exactly.
#pragma once

#include "laws/QuiloTriangulation.h"

namespace Plain {

tav::Vector<Quilo::Triplet> Triangulate(const tav::CartesianArray& speakers);

/// The running choice over all triplets.
/// @param gains  one per loudspeaker, overwritten; before normalisation
void VbapGains(const tav::Vector<Quilo::Triplet>& triplets,
               const tav::CartesianVector& source,
               tav::Vector<float>& gains);

}  // namespace Plain
