// SPDX-License-Identifier: MIT
#include "laws/QuiloNearFieldLaw.h"

#include "laws/QuiloBesselRoots.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace Quilo {
namespace {

// theta_n(s) = (2n)!/(2^n n!) (1 + s + ...) = s^n + n(n+1)/2 s^(n-1) + ...
TEST(ReverseBesselRoots, HaveTheProductAndTheSumsOfThePolynomial) {
    for (const unsigned n : {1u, 2u, 3u, 7u, 20u, 60u, 61u, 124u}) {
        std::complex<double> sum = 0.0, inverses = 0.0;
        double logProduct = 0.0;
        unsigned count = 0;
        double above = 1e9;
        for (const auto& root : ReverseBesselRoots(n)) {
            const unsigned times = root.imag() > 0.0 ? 2 : 1;
            count += times;
            sum += root.real() * times;
            inverses += (1.0 / root).real() * times;
            logProduct += std::log(std::abs(root)) * times;
            EXPECT_LT(root.imag(), above);
            above = root.imag();
        }
        EXPECT_EQ(count, n);
        EXPECT_NEAR(sum.real() / (n * (n + 1.0) / 2.0), -1.0, 1e-12) << n;
        EXPECT_NEAR(inverses.real(), -1.0, 1e-12) << n;
        const double expected = std::lgamma(2.0 * n + 1) - n * std::log(2.0) - std::lgamma(n + 1.0);
        EXPECT_NEAR(logProduct, expected, 1e-11 * n) << n;
    }
}

// From the limit on, a Butterworth high-pass of the same order.
TEST(NearFieldOrder, StaysBelow20DecibelsWithItsHighPass) {
    for (const unsigned n : {1u, 2u, 3u, 7u, 14u, 20u, 50u, 124u}) {
        const NearFieldOrder& order = NearFieldOrderOf(n);
        for (double logRatio = 0.0; logRatio < std::log(200.0); logRatio += 0.0173) {
            const double limit =
                2.0 * std::numbers::pi *
                static_cast<double>(order.LimitFrequency(static_cast<float>(logRatio)));
            double highest = 0.0;
            for (double w = 0.001; w < 20.0 * (n + 1); w *= 1.02) {
                const double highPass =
                    limit == 0.0 ? 1.0 : 1.0 / std::sqrt(1.0 + std::pow(limit / w, 2.0 * n));
                highest = std::max(highest, order.Magnitude(std::exp(logRatio), w) * highPass);
            }
            ASSERT_LE(20.0 * std::log10(highest), 20.05) << n << ", ln ratio " << logRatio;
        }
    }
}

}  // namespace
}  // namespace Quilo
