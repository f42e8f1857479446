// SPDX-License-Identifier: MIT
// Sound at the surface of a rigid sphere, in double precision, as the series says.
#pragma once

#include <complex>

namespace Plain {

/// Pressure at a point of the sphere, relative to the pressure at its centre without the sphere.
/// @param distance  metres of the source from the centre, above the radius
/// @param angle  radians between the rays from the centre to the point and to the source
/// @see "Range dependence of the response of a spherical head model", JASA 104(5), 1998, eq. 3-5
std::complex<double> SphereResponse(double radius, double distance, double angle, double hz);

}  // namespace Plain
