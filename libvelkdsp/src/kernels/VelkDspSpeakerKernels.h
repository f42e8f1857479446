// SPDX-License-Identifier: MIT
// Gains of one source for all loudspeakers at once, one set of functions per instruction set.
#pragma once

#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>

namespace tav {

/// Three numbers of each loudspeaker are stored as three rows at the distance `stride`; rows must
/// be readable up to a multiple of this length.
inline constexpr std::ptrdiff_t kSpeakerLanes = 16;

/// Both overwrite `count` gains, at least 1, whose squares sum to 1. No alignment is needed.
/// Thread: any.
struct SpeakerKernels {
    /// Gains before scaling: 1 / sqrt(D), D = wx dx^2 + wy dy^2 + wz dz^2 + offset + 1e-10.
    /// @param rows    x, y, z     @param metric  x, y, z of the source, wx, wy, wz, offset;
    ///                            all squares finite
    void (*gainsByDistance)(const float* rows,
                            std::ptrdiff_t stride,
                            int count,
                            const float* metric,
                            float* gains) noexcept;
    /// Gains before scaling: (1 + cos)^exponent * weight; 1 + cos below kCosineResolution counts as
    /// 0. Otherwise it is accurate to a few epsilons, because it is computed from the sum of the
    /// unit vectors, without the cancellation in 1 + cos.
    /// @param rows  x, y of a unit vector, weight above 0     @param x, y  unit vector of the
    /// source
    /// @param exponent  0 .. 1; with 0 all bases give 1
    /// @return false: all gains are 0
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
