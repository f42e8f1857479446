// SPDX-License-Identifier: MIT
#pragma once

#include "laws/QuiloSpeakerRows.h"

#include <span>

namespace Quilo {

/// Speaker-placement correction amplitude panning: a cardioid round the source's azimuth, less
/// where loudspeakers are dense, with unit energy. Heights and distances do not matter.
/// Thread: control.  Throws: nothing but for lack of memory.
/// @see "A novel multichannel panning method for standard and arbitrary loudspeaker
///      configurations", AES 117th Convention, 2004
class SpcapLaw {
public:
    /// A kernel that computes the gains of one source: (1 + cos d)^exponent * weight, d the angle
    /// between the source and the loudspeaker, then scaled to a sum of squares of 1. Where 1 + cos
    /// d is below the resolution of 32-bit cosines the base is 0.
    /// @param rows, stride, count  x and y of the loudspeakers' unit vectors and their weights
    /// @param x, y      the source's unit vector      @param exponent  0 .. 1; 0 to the 0 is 1
    /// @param gains     count numbers, overwritten
    /// @return false: all are 0
    using Kernel = bool (*)(const float* rows,
                            std::ptrdiff_t stride,
                            int count,
                            float x,
                            float y,
                            float exponent,
                            float* gains) noexcept;

    explicit SpcapLaw(Kernel kernel) : kernel_(kernel) {}

    /// @param speakers  finite
    void SetSpeakers(std::span<const tav::CartesianVector> speakers);

    /// @param source  any finite point
    /// @param spread  0 .. 100; at 100 the direction does not matter
    /// @param gains   overwritten; 0 without loudspeakers and beyond them
    void Gains(const tav::CartesianVector& source,
               float spread,
               std::span<float> gains) const noexcept;

private:
    Kernel kernel_;
    SpeakerRows speakers_;  // x and y of unit vectors, weight
};

}  // namespace Quilo
