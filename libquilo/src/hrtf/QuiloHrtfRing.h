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
class HrtfRing {
public:
    static constexpr std::size_t kNumPoints = 36;

    /// Takes some hundredths of a second for finite responses.
    /// @param set  not empty, two channels      Thread: control.  Throws: std::bad_alloc.
    explicit HrtfRing(const Hrtf& set);

    /// On the circle that the ring is, 0 ahead, clockwise.
    static tav::CartesianVector Direction(std::size_t point);

    /// The share of the second of two neighbours with which an ear hears even steps on the way from
    /// the first. Where a band falls by 10 dB, half of each is only 3 or 4 dB down, and the rest
    /// would come in the last degrees.
    /// @param point  the first of them, clockwise
    /// @param share  that of the second by amplitude panning in the direction wanted, 0 .. 1
    /// @return 0 .. 1; equal angles change the level of the third of an octave that changes most
    /// by equal decibels      Thread: any.
    float EvenShare(std::size_t ear, std::size_t point, float share) const noexcept;

    std::shared_ptr<const Hrtf> set;  // kNumPoints
    /// Of finite responses: by how much the left ear is later, by which the measured pair fits
    /// itself best, milliseconds. 0 for cells.
    std::array<float, kNumPoints> delaysMs{};

private:
    static constexpr std::size_t kNumSteps = 20;  // of half a degree
    using Shares = std::array<float, kNumSteps + 1>;

    std::array<std::array<Shares, kNumPoints>, 2> evenShares_{};  // of each ear
};

}  // namespace Quilo
