// SPDX-License-Identifier: MIT
// The horizontal plane of an HRTF set, without its delays.
#pragma once

#include "hrtf/QuiloHrtf.h"

#include <array>
#include <cstddef>
#include <memory>

namespace Quilo {

/// Directions in equal steps, each with the filters of the point of the set that is nearest to it.
/// Filters may be mixed between neighbours, because nothing in them is delayed: cells are as they
/// stand, finite responses have become minimum-phase ones of the same magnitude.
struct HrtfRing {
    static constexpr std::size_t kNumPoints = 36;

    /// Takes some hundredths of a second for finite responses.
    /// @param set  not empty, two channels      Thread: control.  Throws: std::bad_alloc.
    explicit HrtfRing(const Hrtf& set);

    /// On the circle that the ring is, 0 ahead, clockwise.
    static tav::CartesianVector Direction(std::size_t point);

    std::shared_ptr<const Hrtf> set;  // kNumPoints
    /// Of finite responses: by how much the left ear is later, by which the measured pair fits
    /// itself best, milliseconds. 0 for cells.
    std::array<float, kNumPoints> delaysMs{};
};

}  // namespace Quilo
