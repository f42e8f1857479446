// SPDX-License-Identifier: MIT
// Gains of one source on all loudspeakers at once, one set per instruction set.
#pragma once

#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>

namespace tav {

/// Three numbers of each loudspeaker are three rows, `stride` apart, that can be read up to a
/// multiple of this many numbers.
inline constexpr std::ptrdiff_t kSpeakerLanes = 16;

/// `count` from 1; gains: count numbers, overwritten, with a sum of squares of 1. Alignment is
/// free.  Thread: any.
struct SpeakerKernels {
    /// 1 / sqrt(D), D = wx dx^2 + wy dy^2 + wz dz^2 + offset + 1e-10, before they are scaled.
    /// @param rows    x, y, z     @param metric  x, y, z of the source, wx, wy, wz, offset;
    ///                            all squares finite
    void (*gainsByDistance)(const float* rows,
                            std::ptrdiff_t stride,
                            int count,
                            const float* metric,
                            float* gains) noexcept;
    /// (1 + cos)^exponent * weight before they are scaled; where 1 + cos is below
    /// kCosineResolution it counts as 0. Right to some epsilons where it is not, since it is taken
    /// from the sum of the unit vectors, which does not cancel as 1 + cos does.
    /// @param rows  x, y of a unit vector, weight above 0     @param x, y  unit vector of the
    /// source
    /// @param exponent  0 .. 1; with 0 all bases give 1
    /// @return false: there is nothing to scale, all are 0
    bool (*gainsByAngle)(const float* rows,
                         std::ptrdiff_t stride,
                         int count,
                         float x,
                         float y,
                         float exponent,
                         float* gains) noexcept;

    // One file each.
    static const SpeakerKernels& Scalar() noexcept;
    static const SpeakerKernels& Avx2() noexcept;
    static const SpeakerKernels& Avx512() noexcept;
};

/// Half the distance between 1 and the number below: 1 + c is 0 for a rounded c nearer to -1.
inline constexpr float kCosineResolution = 0x1p-25f;

}  // namespace tav
