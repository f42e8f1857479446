// SPDX-License-Identifier: MIT
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace tav {
namespace {

constexpr float kPi = 3.1415927f;
constexpr float kTwoPi = 6.2831855f;
constexpr float kHalfPi = 1.5707964f;

/// Wraps into [0, period).
template <class Real>
Real Wrap(Real angle, Real period) noexcept {
    // Below this magnitude the result includes the rounding of each step of the loops, and is a
    // promise. Above it the loops would take long, or never end for huge angles.
    constexpr Real kLoopLimit = static_cast<Real>(1e6);
    if (std::abs(angle) > kLoopLimit) angle = std::fmod(angle, period);
    while (angle < 0) angle += period;
    while (angle >= period) angle -= period;
    return angle;
}

float WrapSymmetric(float radians) noexcept { return Wrap(radians + kPi, kTwoPi) - kPi; }

}  // namespace

float Wrap360(float deg) noexcept { return Wrap(deg, 360.f); }
double Wrap360(double deg) noexcept { return Wrap(deg, 360.0); }

float MathematicalAzimuth(float azimuthDeg) noexcept {
    return (Wrap360(270.f - azimuthDeg) - 180.f) * kRadiansPerDegree;
}

float Distance(const CartesianVector& v) noexcept {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

float NavigationalAzimuthDeg(const CartesianVector& v) noexcept {
    return Wrap360(270.f - std::atan2(v.y, v.x) * kDegreesPerRadian) - 180.f;
}

float ElevationRad(const CartesianVector& v) noexcept {
    const float d = Distance(v);
    // Clamped, since underflow of the squares can make the distance smaller than |z|.
    return d != 0 ? std::asin(std::clamp(v.z / d, -1.f, 1.f)) : 0.f;
}

float ElevationDeg(const CartesianVector& v) noexcept {
    return ElevationRad(v) * kDegreesPerRadian;
}

Spherical ToSpherical(const CartesianVector& v) noexcept {
    return {std::atan2(v.y, v.x), Distance(v), ElevationRad(v)};
}

CartesianVector ToCartesian(const Spherical& s) noexcept {
    const float cosElevation = std::cos(s.elevation);
    return {std::cos(s.azimuth) * s.distance * cosElevation,
            std::sin(s.azimuth) * s.distance * cosElevation, std::sin(s.elevation) * s.distance};
}

Spherical Normalised(Spherical s) noexcept {
    // 1. elevation into one turn
    s.elevation = WrapSymmetric(s.elevation);
    // 2. an elevation beyond the pole
    if (s.elevation > kHalfPi) {
        s.elevation = kPi - s.elevation;
        s.azimuth += kPi;
    } else if (s.elevation < -kHalfPi) {
        s.elevation = -kPi - s.elevation;
        s.azimuth += kPi;
    }
    // 3. a negative distance is the opposite direction
    if (s.distance < 0) {
        s.distance = -s.distance;
        s.elevation = -s.elevation;
        s.azimuth += kPi;
    }
    // 4. azimuth into one turn
    s.azimuth = WrapSymmetric(s.azimuth);
    return s;
}

Spherical SphericalFromNavigational(float azimuthDeg, float elevationDeg, float distance) noexcept {
    return Normalised(
        {MathematicalAzimuth(azimuthDeg), distance, elevationDeg * kRadiansPerDegree});
}

CartesianVector FromNavigational(float azimuthDeg, float elevationDeg, float distance) noexcept {
    return ToCartesian(SphericalFromNavigational(azimuthDeg, elevationDeg, distance));
}

void SetAzimuthRad(CartesianVector& v, float azimuth) noexcept {
    Spherical s = ToSpherical(v);
    s.azimuth = azimuth;
    v = ToCartesian(s);
}

void SetAzimuthDeg(CartesianVector& v, float azimuthDeg) noexcept {
    SetAzimuthRad(v, MathematicalAzimuth(azimuthDeg));
}

void SetElevationRad(CartesianVector& v, float elevation) noexcept {
    Spherical s = ToSpherical(v);
    s.elevation = elevation;
    v = ToCartesian(s);
}

void SetElevationDeg(CartesianVector& v, float elevationDeg) noexcept {
    const float e = Wrap360(elevationDeg + 180.f) - 180.f;
    const float turned = NavigationalAzimuthDeg(v) + 180.f;
    if (e > 90.f) {
        v = FromNavigational(turned, 180.f - e, Distance(v));
    } else if (e < -90.f) {
        v = FromNavigational(turned, -180.f - e, Distance(v));
    } else {
        SetElevationRad(v, e * kRadiansPerDegree);
    }
}

void SetDistance(CartesianVector& v, float distance) noexcept {
    Spherical s = ToSpherical(v);
    s.distance = distance;
    v = ToCartesian(s);
}

void AddAzimuthDeg(CartesianVector& v, float deltaDeg) noexcept {
    SetAzimuthDeg(v, NavigationalAzimuthDeg(v) + deltaDeg);
}

void AddElevationDeg(CartesianVector& v, float deltaDeg) noexcept {
    SetElevationDeg(v, ElevationDeg(v) + deltaDeg);
}

}  // namespace tav
