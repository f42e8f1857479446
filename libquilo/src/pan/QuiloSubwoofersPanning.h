// SPDX-License-Identifier: MIT
// Bass for subwoofers: every source through a low-pass filter, then panned round a ring.
#pragma once

#include "pan/QuiloVbap2DPanning.h"
#include "processors/VelkDspMultiEqualizer.h"

#include <vector>

namespace Quilo {

/// A Vbap2DPanning whose sources pass a low-pass filter first. It has no spread.
class SubwoofersPanning : public Vbap2DPanning {
public:
    static constexpr float kDefaultCutoffHz = 125.f;
    static constexpr float kMinCutoffHz = 10.f;
    static constexpr float kMaxCutoffHz = 1000.f;

    SubwoofersPanning(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    bool SupportsSpread() const override { return false; }

    /// The corner of the low-pass filter of every source; it glides.  @param hz  clamped to 10 ..
    /// 1000
    void SetCutoff(float hz);
    float Cutoff() const;

private:
    static constexpr unsigned kMaxFrames = 512;

    void ProcessToHost(const tav::HostDrain& host,
                       float* const* outputs,
                       const float* const* inputs,
                       unsigned frames) noexcept TAV_NONBLOCKING override;
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplySourceSpread(unsigned, float) override TAV_REQUIRES(controlLock_) {}

    tav::MultiEqualizer equalizer_;  // a channel per source, one band
    float cutoffHz_ TAV_GUARDED_BY(controlLock_) = kDefaultCutoffHz;
    // audio only
    std::vector<float> filtered_;            // sources x kMaxFrames
    std::vector<float*> filteredPointers_;   // a row each
    std::vector<const float*> pieceInputs_;  // of one piece of a block
    std::vector<float*> pieceOutputs_;
};

}  // namespace Quilo
