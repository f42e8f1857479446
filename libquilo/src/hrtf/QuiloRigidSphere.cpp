// SPDX-License-Identifier: MIT
#include "hrtf/QuiloRigidSphere.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace Quilo {

namespace {

using Complex = std::complex<double>;

constexpr double kSphereSpeedOfSound = 343.2;
constexpr double kSmallestTerm = 1e-9;  // of the sum
constexpr std::size_t kMostTerms = 400;

/// Spherical Hankel functions of rising order. The upward recurrence is stable: they grow.
class Hankel {
public:
    explicit Hankel(double x) : x_(x), present_(std::polar(1.0 / x, x - std::numbers::pi / 2.0)) {
        before_ = std::polar(1.0 / x, x);  // order -1
    }
    Complex Value() const { return present_; }
    Complex Derivative() const { return before_ - (order_ + 1.0) / x_ * present_; }
    void Next() {
        const Complex next = (2.0 * order_ + 1.0) / x_ * present_ - before_;
        before_ = present_;
        present_ = next;
        order_ += 1.0;
    }

private:
    double x_;
    double order_ = 0.0;
    Complex before_, present_;
};

}  // namespace

RigidSphereField::RigidSphereField(double radius, double distance, double hz) {
    const double waveNumber = 2.0 * std::numbers::pi * hz / kSphereSpeedOfSound;
    const double closeness = radius / distance;
    Hankel source(hz > 0.0 ? waveNumber * distance : 1.0);
    Hankel surface(hz > 0.0 ? waveNumber * radius : 1.0);
    double sum = 0.0, power = 1.0;
    for (std::size_t n = 0; n < kMostTerms; ++n) {
        const double weight = 2.0 * static_cast<double>(n) + 1.0;
        const Complex term = hz > 0.0 ? weight * distance * source.Value() / surface.Derivative()
                                      : Complex(weight / (static_cast<double>(n) + 1.0) * power);
        // Beyond the range of doubles the terms have long become too small to matter.
        if (!std::isfinite(std::norm(term))) break;
        terms_.push_back(term);
        sum += std::abs(term);
        // Up to the order of the wave number all terms are of one size.
        const bool falls = static_cast<double>(n) > waveNumber * radius;
        if (falls && std::abs(term) < kSmallestTerm * sum) break;
        source.Next();
        surface.Next();
        power *= closeness;
    }
}

double RigidSphereField::Magnitude(double cosine) const {
    Complex sum;
    double before = 0.0, present = 1.0;  // Legendre polynomials
    for (std::size_t n = 0; n < terms_.size(); ++n) {
        sum += terms_[n] * present;
        const auto order = static_cast<double>(n);
        const double next =
            ((2.0 * order + 1.0) * cosine * present - order * before) / (order + 1.0);
        before = present;
        present = next;
    }
    return std::abs(sum);
}

}  // namespace Quilo
