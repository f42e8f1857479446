// SPDX-License-Identifier: MIT
#include "reference/PlainHarmonics.h"

#include <cmath>
#include <cstdlib>

namespace Plain {

namespace {

double Azimuth(const tav::CartesianVector& v) {
    return std::atan2(static_cast<double>(v.y), static_cast<double>(v.x));
}

double Elevation(const tav::CartesianVector& v) {
    const double ground = std::hypot(static_cast<double>(v.x), static_cast<double>(v.y));
    return std::atan2(static_cast<double>(v.z), ground);
}

double Trigonometric(int m, double azimuth) {
    return m < 0 ? std::sin(-m * azimuth) : std::cos(m * azimuth);
}

}  // namespace

double Harmonic(unsigned n, int m, const tav::CartesianVector& direction) {
    const auto degree = static_cast<unsigned>(std::abs(m));
    double square = (2.0 * n + 1.0) * (m == 0 ? 1.0 : 2.0);
    for (unsigned k = n - degree + 1; k <= n + degree; ++k) square /= k;
    return std::sqrt(square) * std::assoc_legendre(n, degree, std::sin(Elevation(direction))) *
           Trigonometric(m, Azimuth(direction));
}

double CircularHarmonic(int m, const tav::CartesianVector& direction) {
    return std::pow(std::cos(Elevation(direction)), std::abs(m)) *
           Trigonometric(m, Azimuth(direction));
}

}  // namespace Plain
