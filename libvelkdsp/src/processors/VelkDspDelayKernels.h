// SPDX-License-Identifier: MIT
// Interpolation between the samples of a delay line.
//
// Each kernel gives the signal at the fraction f, 0 <= f < 1, of the way from x[0] to x[1]; the
// four-point ones also look at x[-1] and x[2]. Each is an object of its own type, so that a loop
// that is a template of the kernel has it inlined.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <cstdint>

namespace tav {

/// Kinds of interpolation. Any other code acts as Nearest.
enum class DelayKind : std::uint32_t {
    Nearest = 0,
    Linear = 1,
    Lagrange = 2,
    Allpass = 3,
    Hermite = 5,
    Quadratic = 6,
    BSpline = 7,
    Cardinal = 8,
};

/// Weights of x[-1], x[0], x[1], x[2]; they sum to 1.
struct FourPointWeights {
    float before, here, next, afterNext;
};

inline float Apply(const FourPointWeights& w, const float* x) noexcept TAV_NONBLOCKING {
    return w.before * x[-1] + w.here * x[0] + w.next * x[1] + w.afterNext * x[2];
}

/// The nearer sample; x[1] if both are equally near.
inline constexpr auto kNearestKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    return f >= 0.5f ? x[1] : x[0];
};

inline constexpr auto kLinearKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    return x[0] + (x[1] - x[0]) * f;
};

/// Third-order Lagrange.
inline constexpr auto kLagrangeKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    const float f2 = f * f;
    const float f3 = f2 * f;
    return Apply({f2 / 2.f - f3 / 6.f - f / 3.f, f3 / 2.f - f2 - f / 2.f + 1.f,
                  (f2 - f3 + 2.f * f) / 2.f, (f3 - f) / 6.f},
                 x);
};

/// Cubic Hermite (Catmull-Rom).
inline constexpr auto kHermiteKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    const float f2 = f * f;
    const float f3 = f2 * f;
    return Apply({f2 - f3 / 2.f - f / 2.f, 1.5f * f3 - 2.5f * f2 + 1.f,
                  2.f * f2 - 1.5f * f3 + f / 2.f, f3 / 2.f - f2 / 2.f},
                 x);
};

/// Four points, second order.
inline constexpr auto kQuadraticKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    const float f2 = f * f;
    return Apply(
        {f2 / 2.f - f / 2.f, 1.f - f / 2.f - f2 / 2.f, 1.5f * f - f2 / 2.f, f2 / 2.f - f / 2.f}, x);
};

/// Cubic B-spline; a low-pass, so f = 0 does not give x[0].
inline constexpr auto kBSplineKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    const float cubic = (x[0] - x[1]) * 0.5f + (x[2] - x[-1]) / 6.f;
    const float square = (x[1] + x[-1]) * 0.5f - x[0];
    const float slope = (x[1] - x[-1]) * 0.5f;
    return ((cubic * f + square) * f + slope) * f + (x[1] + x[-1]) / 6.f + x[0] * (2.f / 3.f);
};

/// Cardinal cubic with tension -0.6: flatter magnitude than Lagrange, with a delay error of up to
/// 0.02 samples at low frequencies; better for constant delays.
inline constexpr auto kCardinalKernel = [](const float* x, float f) noexcept TAV_NONBLOCKING {
    const float t = -0.6f;
    const float f2 = f * f;
    const float f3 = f2 * f;
    return Apply({t * (f3 - 2.f * f2 + f), (t + 2.f) * f3 - (t + 3.f) * f2 + 1.f,
                  -(t + 2.f) * f3 + (2.f * t + 3.f) * f2 - t * f, t * (f2 - f3)},
                 x);
};

/// First-order all-pass; it keeps its previous output.
struct AllpassKernel {
    float previous;

    float operator()(const float* x, float f) noexcept TAV_NONBLOCKING {
        const float d = 1.f - f;
        const float eta = (1.f - d) / (1.f + d);
        return previous = (x[1] - previous + 1e-20f) * eta + x[0] - 1e-20f;
    }
};

}  // namespace tav
