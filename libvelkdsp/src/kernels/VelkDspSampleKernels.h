// SPDX-License-Identifier: MIT
// Conversion of samples from the host's doubles to floats and back, once per instruction set.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

namespace tav {

inline constexpr double kLargestInput = 1e6;     // +120 dB: no gain here overflows a float
inline constexpr double kSmallestInput = 1e-30;  // smaller samples would soon become denormal

/// `n` may be 0; no alignment is needed. All sets give the same bits.  Thread: any.
struct SampleKernels {
    /// Samples that are not finite become 0, magnitudes above 1e6 become 1e6, magnitudes below
    /// 1e-30 become 0.
    void (*fromHost)(const double* host, float* own, int n) noexcept TAV_NONBLOCKING;
    /// Samples that are not finite become 0. Then sets `own` to zeros for the next block, while its
    /// cache lines are loaded.
    void (*drainToHost)(float* own, double* host, int n) noexcept TAV_NONBLOCKING;

    // One file each.
    static const SampleKernels& Scalar() noexcept;
    static const SampleKernels& Avx2() noexcept;
    static const SampleKernels& Avx512() noexcept;
};

}  // namespace tav
