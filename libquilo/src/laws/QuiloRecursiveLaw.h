// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>
#include <span>

namespace Quilo {

/// Panning inside a square: the azimuths of four corner loudspeakers are warped onto its corners,
/// the sources are panned bilinearly between these, and the loudspeakers in between take their
/// parts from pairs of corners. Distance counts as height up to 1, where a source is on the edge;
/// near the listener it sounds everywhere.
/// In single precision, whose roundings are promises; laws are linear in energy until the last
/// step.  Thread: control.  Throws: nothing.

/// Azimuths of the corners, navigational degrees, clockwise from front left.
using SquareCorners = std::array<float, 4>;

/// 4 to 8, and 12.
bool IsRecursiveLayout(std::size_t numSpeakers) noexcept;

/// Where a layout has its corners.
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
