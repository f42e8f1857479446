// SPDX-License-Identifier: MIT
// Samples on their way from the host's doubles to our floats and back, once per instruction set.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

namespace tav {

inline constexpr double kLargestInput = 1e6;     // +120 dB: no gain of ours overflows a float
inline constexpr double kSmallestInput = 1e-30;  // below, a sample would soon be denormal

/// `n` may be anything from 0, alignment is free. All sets give the same bits.  Thread: any.
struct SampleKernels {
    /// What is not finite becomes 0, what is beyond 1e6 becomes 1e6 with its sign, what is nearer
    /// to 0 than 1e-30 becomes 0.
    void (*fromHost)(const double* host, float* own, int n) noexcept TAV_NONBLOCKING;
    /// What is not finite becomes 0. `own` is all zeros afterwards, as what adds to it next wants
    /// it; its cache lines are at hand here.
    void (*drainToHost)(float* own, double* host, int n) noexcept TAV_NONBLOCKING;

    // One file each.
    static const SampleKernels& Scalar() noexcept;
    static const SampleKernels& Avx2() noexcept;
    static const SampleKernels& Avx512() noexcept;
};

}  // namespace tav
