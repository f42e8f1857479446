// SPDX-License-Identifier: MIT
// The sound field on a rigid sphere, the plainest head there is.
#pragma once

#include <complex>
#include <vector>

namespace Quilo {

/// The pressure that a point source at one distance and frequency makes on the surface of a rigid
/// sphere, times the distance of the source. A factor that depends only on the sphere and the
/// frequency is left out: ratios of two distances are meant.
/// @see "Range dependence of the response of a spherical head model", JASA 104(5), 1998
/// Thread: control.
class RigidSphereField {
public:
    /// @param radius  metres, above 0      @param distance  from the centre, above the radius
    /// @param hz  0: the limit of the magnitude, in closed form
    RigidSphereField(double radius, double distance, double hz);

    /// @param cosine  of the angle between source and point on the sphere, seen from the centre
    double Magnitude(double cosine) const;

private:
    std::vector<std::complex<double>> terms_;  // of the Legendre polynomials
};

}  // namespace Quilo
