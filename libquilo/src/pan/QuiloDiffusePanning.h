// SPDX-License-Identifier: MIT
// Sources that come from everywhere at once.
#pragma once

#include "pan/QuiloDiffuseMix.h"
#include "pan/QuiloPan.h"

namespace Quilo {

/// Every output carries the sum of the sources at equal power, uncoloured, and has little to do
/// with the other outputs. Positions are kept and do not matter. A transient becomes a wash of
/// 50 ms; below about 120 Hz the outputs stay alike, as they do in a room.
class DiffusePanning : public Pan {
public:
    DiffusePanning(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    bool IsPlanar() const override { return false; }

protected:
    /// @param weights  one per output, in place of equal ones
    DiffusePanning(unsigned numInputs, unsigned numOutputs, std::span<const float> weights);

    void SetWeights(std::span<const float> weights) TAV_REQUIRES(controlLock_) {
        mix_.SetWeights(weights);
    }

private:
    void ComputeSource(unsigned, bool, bool) override TAV_REQUIRES(controlLock_) {}
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);
    void ApplySourceMute(unsigned index) override TAV_REQUIRES(controlLock_);

    DiffuseMix mix_;
};

}  // namespace Quilo
