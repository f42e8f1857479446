// SPDX-License-Identifier: MIT
#include "laws/QuiloBesselRoots.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

namespace {

using Complex = std::complex<double>;

/// The root number k = 1 .. n with the opposite sign, from the uniform expansion for large degrees:
/// 2 nu xi(z / nu) = i pi (2k - n - 1) with nu = n + 1/2.
Complex AsymptoticRoot(unsigned n, unsigned k) {
    constexpr int kSteps = 8;
    const double nu = n + 0.5;
    const double t = std::numbers::pi * (k - 0.5) / n;
    const Complex target(0.0, std::numbers::pi * (2.0 * k - n - 1.0));
    Complex z = nu * Complex(0.6627 * std::sin(t) + 0.05, -0.95 * std::cos(t));
    for (int step = 0; step < kSteps; ++step) {
        const Complex v = z / nu;
        const Complex root = std::sqrt(1.0 + v * v);
        const Complex xi = root + std::log(v / (1.0 + root));
        Complex move = (2.0 * nu * xi - target) / (2.0 * root / v);
        const double longest = 0.3 * std::abs(z);
        if (std::abs(move) > longest) move *= longest / std::abs(move);
        z -= move;
        z.real(std::max(z.real(), 0.001 * nu));
    }
    return z;
}

/// ln of the modified spherical Bessel function of the first kind, by the ratios of neighbours run
/// down from far above n.
Complex LogFirstKind(unsigned n, Complex z) {
    Complex sum = std::log((1.0 - std::exp(-2.0 * z)) / (2.0 * z)) + z;
    Complex ratio = 0.0;
    for (unsigned j = 2 * n + 40; j >= 1; --j) {
        ratio = 1.0 / ((2.0 * j + 1.0) / z + ratio);
        if (j <= n) sum += std::log(ratio);
    }
    return sum;
}

/// ln of the one of the second kind, exp(-z) theta_n(z) / z^(n + 1).
Complex LogSecondKind(unsigned n, Complex z) {
    Complex ratio = 1.0 + z;
    Complex sum = std::log(ratio);
    for (unsigned j = 2; j <= n; ++j) {
        ratio = (2.0 * j - 1.0) + z * z / ratio;
        sum += std::log(ratio);
    }
    return sum - z - (n + 1.0) * std::log(z);
}

/// theta_n(-z) is 0 where twice the first kind is the second one, but for the sign (-1)^(n + 1):
/// Newton's steps on the logarithm of their quotient.
Complex Polish(unsigned n, Complex z) {
    constexpr int kSteps = 4;
    for (int step = 0; step < kSteps; ++step) {
        const Complex first = LogFirstKind(n, z);
        const Complex second = LogSecondKind(n, z);
        Complex rest = std::log(2.0) + first - second;
        const double offset = std::numbers::pi * (n % 2 == 0 ? 1.0 : 0.0);
        rest.imag(std::remainder(rest.imag() - offset, 2.0 * std::numbers::pi));
        const Complex slope = std::exp(-first - second) / (z * z);
        z -= rest / slope;
    }
    return z;
}

}  // namespace

std::vector<Complex> ReverseBesselRoots(unsigned degree) {
    std::vector<Complex> roots;
    for (unsigned k = 1; 2 * k <= degree + 1; ++k) {
        Complex z = Polish(degree, AsymptoticRoot(degree, k));
        if (2 * k == degree + 1) z.imag(0.0);  // the middle one
        roots.emplace_back(-z.real(), std::fabs(z.imag()));
    }
    std::ranges::sort(roots, std::greater{}, [](const Complex& x) { return x.imag(); });
    return roots;
}

}  // namespace Quilo
