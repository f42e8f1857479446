// SPDX-License-Identifier: MIT
#pragma once

#include "laws/QuiloWarpedSquare.h"
#include "math/VelkDspCartesian.h"

#include <span>

namespace Quilo {

/// Panning inside the square of QuiloWarpedSquare.h: the sources are panned bilinearly between its
/// four corners, and the loudspeakers in between take their parts from pairs of corners.
/// In single precision, whose roundings are promises; everything is linear in energy until the last
/// step.  Thread: control.  Throws: nothing.

/// Whether the law knows layouts of this size: 4 to 8, and 12.
bool IsRecursiveLayout(std::size_t numSpeakers) noexcept;

/// The corners of the square, from the layout.
/// @param speakers  clockwise from front left; IsRecursiveLayout of their number
SquareCorners RecursiveCorners(std::span<const tav::CartesianVector> speakers) noexcept;

/// @param source       any finite point      @param corners  finite
/// @param numSpeakers  gains are 0 for other numbers than those of IsRecursiveLayout
/// @param gains        at least numSpeakers, overwritten; 0 beyond them
void RecursiveGains(const tav::CartesianVector& source,
                    const SquareCorners& corners,
                    std::size_t numSpeakers,
                    std::span<float> gains) noexcept;

}  // namespace Quilo
