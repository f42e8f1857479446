// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>

namespace Quilo {

/// The square in which "surround" and "panr" pan. The azimuths of four corner loudspeakers are
/// warped onto its corners, and a source is a point inside:
///
///     corner 1   y = 1   corner 2        A source 1 metre away or farther, level with the ears,
///           +-------------+              is on the edge. A nearer one counts as higher, and one
///           |             |              that is high is nearer to the middle, which is both the
///   x = -1  |      .      |  x = 1       zenith and the listener. One that counts as beyond the
///           |             |              zenith comes down on the other side.
///           +-------------+
///     corner 4  y = -1   corner 3
///
/// In single precision.  Thread: control.  Throws: nothing.

/// Azimuths of the corners, navigational degrees, clockwise from front left.
using SquareCorners = std::array<float, 4>;

/// A direction after the warp.
struct SquareDirection {
    double azimuthDeg = 0.0;  ///< [0, 360): 315, 45, 135 and 225 at the corners 1 to 4
    float radius = 0.f;       ///< 0 in the middle, 1 at the edge
};
/// @param source  metres, any finite point      @param corners  finite; two may coincide
SquareDirection WarpDirection(const tav::CartesianVector& source,
                              const SquareCorners& corners) noexcept;

struct PlaceInSquare {
    float x = 0.f;
    float y = 0.f;
};
/// @param azimuthDeg  [0, 360)
/// @tparam Real  double for surround, float for panr: their roundings are promises
template <class Real>
PlaceInSquare PlaceAt(Real azimuthDeg, float radius) noexcept;

/// Energies of the four corners, bilinear; they add up to 1.
std::array<float, 4> CornerShares(PlaceInSquare place) noexcept;

/// Two energies on three loudspeakers in a row: what both have in common goes to the middle one.
/// None is negative, because rounding keeps the order of a + b and |a - b|.
struct SplitShares {
    float left;
    float right;
    float middle;

    SplitShares(float a, float b) noexcept;
};

}  // namespace Quilo
