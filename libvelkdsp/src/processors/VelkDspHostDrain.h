// SPDX-License-Identifier: MIT
// The way of finished outputs into the host's buffers, for blocks that know early which are
// finished.
//
// An output that is drained right after its sum was computed still has its floats in the nearest
// cache, and its stores run beside the sums of the next one.
#pragma once

#include "kernels/VelkDspSampleKernels.h"
#include "text/VelkDspNonblocking.h"

namespace tav {

/// The host's outputs from one sample on.  Thread: audio.
class HostDrain {
public:
    HostDrain(const SampleKernels& kernels, double* const* outputs, unsigned offset) noexcept
        : kernels_(kernels),
          outputs_(outputs),
          offset_(offset) {}

    /// Samples first to first + n - 1 of `own`, the floats of that output, are finished. They are
    /// zeros afterwards.
    void Drain(unsigned output, float* own, int first, int n) const noexcept TAV_NONBLOCKING {
        kernels_.drainToHost(own + first, outputs_[output] + offset_ + first, n);
    }

private:
    const SampleKernels& kernels_;
    double* const* outputs_;
    unsigned offset_;  // samples
};

}  // namespace tav
