// SPDX-License-Identifier: MIT
// The silent panner that stands in where a combination is unsupported.
#pragma once

#include "pan/QuiloPan.h"

namespace Quilo {

/// Accepts every operation and does nothing about it; its outputs are zeros.
class NullPanning : public Pan {
public:
    NullPanning(unsigned numInputs, unsigned numOutputs) : Pan(numInputs, numOutputs) {}

    using Pan::Process;
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    bool IsPlanar() const override { return false; }

private:
    void ComputeSource(unsigned, bool, bool) override TAV_REQUIRES(controlLock_) {}
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}
};

}  // namespace Quilo
