// SPDX-License-Identifier: MIT
#include "laws/QuiloDefaultLayouts.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace Quilo {

namespace {

struct Direction {
    double azimuthDeg = 0.0;  // navigational
    double elevationDeg = 0.0;
};

/// Users read these numbers, so the sine of a half turn is 0 and not 1e-16.
double ZeroIfTiny(double value) { return std::fabs(value) < 1e-15 ? 0.0 : value; }

tav::CartesianVector UnitVector(Direction d) {
    constexpr double kRadPerDeg = std::numbers::pi / 180.0;
    const double azimuth = d.azimuthDeg * kRadPerDeg;
    const double elevation = d.elevationDeg * kRadPerDeg;
    return {static_cast<float>(ZeroIfTiny(std::sin(azimuth) * std::cos(elevation))),
            static_cast<float>(ZeroIfTiny(std::cos(azimuth) * std::cos(elevation))),
            static_cast<float>(ZeroIfTiny(std::sin(elevation)))};
}

tav::CartesianArray Placed(std::initializer_list<Direction> directions) {
    tav::CartesianArray layout(directions.size());
    std::size_t i = 0;
    for (const Direction& d : directions) layout[i++] = UnitVector(d);
    return layout;
}

tav::CartesianArray Ring(unsigned count) {
    tav::CartesianArray layout(count);
    for (unsigned k = 0; k < count; ++k) {
        layout[k] = UnitVector({(k - 0.5) * 360.0 / count, 0.0});
    }
    return layout;
}

/// Bands of equal area from the top down, turned against each other by the golden angle.
/// @see "Measurement of areas on a sphere using Fibonacci and latitude-longitude lattices",
///      Mathematical Geosciences 42(1), 2010
tav::CartesianArray EvenSphere(unsigned count) {
    constexpr double kRadPerDeg = std::numbers::pi / 180.0;
    constexpr double kGoldenAngleDeg = 360.0 * (2.0 - std::numbers::phi);
    tav::CartesianArray layout(count);
    for (unsigned k = 0; k < count; ++k) {
        const double height = 1.0 - (2.0 * k + 1.0) / count;
        layout[k] = UnitVector({k * kGoldenAngleDeg, std::asin(height) / kRadPerDeg});
    }
    return layout;
}

tav::CartesianArray Periphonic(unsigned count) {
    constexpr double kCubeDeg = 35.264389682754654;        // atan(1 / sqrt(2))
    constexpr double kTetrahedronDeg = 19.47122063449069;  // asin(1 / 3)
    switch (count) {
        case 3: return Placed({{-60, -30}, {60, -30}, {0, 60}});
        case 4:
            return Placed({{-60, -kTetrahedronDeg},
                           {60, -kTetrahedronDeg},
                           {180, -kTetrahedronDeg},
                           {0, 90}});
        case 6: return Placed({{0, 0}, {90, 0}, {180, 0}, {-90, 0}, {0, 90}, {0, -90}});
        case 8:
            return Placed({{-45, -kCubeDeg},
                           {45, -kCubeDeg},
                           {135, -kCubeDeg},
                           {-135, -kCubeDeg},
                           {-45, kCubeDeg},
                           {45, kCubeDeg},
                           {135, kCubeDeg},
                           {-135, kCubeDeg}});
        default: return EvenSphere(count);
    }
}

}  // namespace

tav::CartesianArray DefaultSources(unsigned numSources) {
    if (numSources == 1) return Placed({{0, 0}});
    tav::CartesianArray sources(numSources);
    for (unsigned i = 0; i < numSources; ++i) {
        sources[i] = UnitVector({-30.0 + 60.0 * i / (numSources - 1.0), 0.0});
    }
    return sources;
}

tav::CartesianArray DefaultSpeakers(LayoutKind kind, unsigned numSpeakers) {
    if (numSpeakers == 1) return Placed({{0, 0}});
    if (numSpeakers == 2) return Placed({{-30, 0}, {30, 0}});
    const bool surround = kind == LayoutKind::Surround;
    if (surround && numSpeakers == 3) return Placed({{-30, 0}, {30, 0}, {180, 0}});
    if (surround && numSpeakers == 4) return Placed({{-30, 0}, {0, 0}, {30, 0}, {180, 0}});
    return kind == LayoutKind::Periphonic ? Periphonic(numSpeakers) : Ring(numSpeakers);
}

}  // namespace Quilo
