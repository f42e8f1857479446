// SPDX-License-Identifier: MIT
// Angles and distances of positions; everything here is 32-bit arithmetic in a fixed order.
//
// Two conventions of azimuth are used. Navigational: degrees, 0 in front, clockwise, as users write
// it. Mathematical: radians, 0 on +x, counter-clockwise. Results are promises to the last bit, so
// no formula here may be replaced by an equivalent one.
#pragma once

#include "math/VelkDspCartesian.h"

namespace tav {

inline constexpr float kRadiansPerDegree = 0.017453292f;
inline constexpr float kDegreesPerRadian = 57.29578f;

/// Wraps into [0, 360) by repeated addition or subtraction; beyond |deg| = 1e6 by a remainder.
/// @param deg  finite
float Wrap360(float deg) noexcept;
double Wrap360(double deg) noexcept;

/// A position by its angles.
struct Spherical {
    float azimuth = 0;    ///< radians, mathematical
    float distance = 0;   ///< may be negative until Normalised
    float elevation = 0;  ///< radians, up is positive
};

/// Mathematical azimuth (radians, in [-pi, pi)) of a navigational one.
float MathematicalAzimuth(float azimuthDeg) noexcept;

Spherical ToSpherical(const CartesianVector& v) noexcept;
CartesianVector ToCartesian(const Spherical& s) noexcept;
/// The same point with distance >= 0, elevation in [-pi/2, pi/2], azimuth in [-pi, pi).
Spherical Normalised(Spherical s) noexcept;
/// Normalised: a negative distance points backwards, an elevation beyond 90 folds over the pole.
Spherical SphericalFromNavigational(float azimuthDeg, float elevationDeg, float distance) noexcept;
CartesianVector FromNavigational(float azimuthDeg, float elevationDeg, float distance) noexcept;

/// In [-180, 180); 90 at the origin and on the z axis.
float NavigationalAzimuthDeg(const CartesianVector& v) noexcept;
/// In [-pi/2, pi/2]; 0 at the origin.
float ElevationRad(const CartesianVector& v) noexcept;
float ElevationDeg(const CartesianVector& v) noexcept;
/// Infinite where the squares overflow 32 bits.
float Distance(const CartesianVector& v) noexcept;

/// Each of these replaces one spherical coordinate and keeps the other two.
void SetAzimuthRad(CartesianVector& v, float azimuth) noexcept;
void SetAzimuthDeg(CartesianVector& v, float azimuthDeg) noexcept;
void SetElevationRad(CartesianVector& v, float elevation) noexcept;
/// Beyond +-90 the position goes over the pole: azimuth turns by 180, the distance stays.
void SetElevationDeg(CartesianVector& v, float elevationDeg) noexcept;
void SetDistance(CartesianVector& v, float distance) noexcept;
void AddAzimuthDeg(CartesianVector& v, float deltaDeg) noexcept;
void AddElevationDeg(CartesianVector& v, float deltaDeg) noexcept;

}  // namespace tav
