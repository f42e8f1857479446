// SPDX-License-Identifier: MIT
// Directions that cover the sphere evenly: tables of designs and of the regular solids, and grids
// of any number of points.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace tav {

/// Navigational: azimuth 0 in front, clockwise; up is positive.
struct SphereDirection {
    double azimuthDeg;    // -180 < azimuth <= 180
    double elevationDeg;  // -90 to 90
};

/// A set that is its own mirror image, left and right.
struct SphereSet {
    std::string_view name;  // of a solid, or "sphere-" and the number of points
    int designDegree;       // the mean over the points is exact for polynomials up to this degree
    double smallestAngleDeg;
    std::span<const SphereDirection> directions;  // from the bottom up, a left one before its right
};

/// The tables; solids come first. Their figures are measured by tools/make_sphere_points.py.
std::span<const SphereSet> SphereSets() noexcept;

/// Points on a spiral of equal areas, from the top down, each turned on by the golden angle: even
/// for any number of points, but without symmetry.
/// @see A. Gonzalez, "Measurement of areas on a sphere using Fibonacci and latitude-longitude
/// lattices", Mathematical Geosciences 42, 2010
std::vector<SphereDirection> FibonacciGrid(std::size_t numPoints);

}  // namespace tav
