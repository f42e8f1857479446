// SPDX-License-Identifier: MIT
#include "reference/PlainSphere.h"

#include <cmath>
#include <numbers>

namespace Plain {

namespace {

using Complex = std::complex<double>;
constexpr Complex kI{0.0, 1.0};

/// Spherical Hankel functions of the first kind, one order after the other.
class Hankel {
public:
    explicit Hankel(double x)
        : x_(x),
          before_(std::exp(kI * x) / x),
          now_(-kI * std::exp(kI * x) / x) {}
    Complex Now() const { return now_; }
    Complex Slope() const { return before_ - (order_ + 1.0) / x_ * now_; }
    void Next() {
        const Complex after = (2.0 * order_ + 1.0) / x_ * now_ - before_;
        before_ = now_;
        now_ = after;
        order_ += 1.0;
    }

private:
    double x_, order_ = 0.0;
    Complex before_, now_;  // orders n - 1 and n
};

}  // namespace

Complex SphereResponse(double radius, double distance, double angle, double hz) {
    const double wave = 2.0 * std::numbers::pi * hz / 343.2;
    Hankel source(wave * distance), surface(wave * radius);
    const double c = std::cos(angle);
    double legendreBefore = 0.0, legendre = 1.0;
    Complex sum = 0.0;
    for (int n = 0; n < 400; ++n) {
        const Complex term = (2.0 * n + 1.0) * legendre * source.Now() / surface.Slope();
        if (!std::isfinite(std::abs(term))) break;
        sum += term;
        if (n > wave * radius + 20.0 && std::abs(term) < 1e-12 * std::abs(sum)) break;
        const double after = ((2.0 * n + 1.0) * c * legendre - n * legendreBefore) / (n + 1.0);
        legendreBefore = legendre;
        legendre = after;
        source.Next();
        surface.Next();
    }
    // H = -(rho / mu) e^(-i mu rho) sum, with mu = wave radius and rho = distance / radius.
    return -distance / (radius * wave * radius) * std::exp(-kI * wave * distance) * sum;
}

}  // namespace Plain
