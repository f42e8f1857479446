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

    using Pan::Process;
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    void SetSampleRate(float hz) override;
    void Reset() override;

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    void SetSourcePosition(unsigned index,
                           const tav::CartesianVector& position,
                           bool immediate,
                           bool force) override;
    void ApplySpeakersPositions(const tav::CartesianArray&) override {}
    void SetInterpolationTime(float ms) override;
    bool IsPlanar() const override { return false; }
    float GetInterpolationTime() const override;

private:
    void ApplySourceMute(unsigned index) override;

    DiffuseMix mix_;
};

}  // namespace Quilo
