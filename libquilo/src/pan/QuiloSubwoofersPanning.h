// SPDX-License-Identifier: MIT
// Bass for subwoofers: every source through a low-pass filter, then panned round a ring.
#pragma once

#include "pan/QuiloVbap2DPanning.h"
#include "processors/VelkDspMultiEqualizer.h"

#include <vector>

namespace Quilo {

/// A pair of subwoofers sounds for each source, chosen by its azimuth as in Vbap2DPanning.
/// Silent until a layout comes.
class SubwoofersPanning : public Pan {
public:
    static constexpr float kDefaultCutoffHz = 125.f;
    static constexpr float kMinCutoffHz = 10.f;
    static constexpr float kMaxCutoffHz = 1000.f;

    SubwoofersPanning(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    bool IsPlanar() const override;

    /// The corner of the low-pass filter of every source; it glides.  @param hz  clamped to 10 ..
    /// 1000
    void SetCutoff(float hz);
    float Cutoff() const;

private:
    static constexpr unsigned kMaxFrames = 512;

    void ComputeSource(unsigned index, bool immediate, bool) override TAV_REQUIRES(controlLock_);
    /// Throws: tav::Exception when three or more subwoofers do not surround the listener; the new
    /// layout is in force all the same.
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);
    void ApplySourceMute(unsigned index) override TAV_REQUIRES(controlLock_);

    tav::MultiEqualizer equalizer_;  // a channel per source, one band
    Vbap2DPanning ring_;             // its lock is taken under this panner's, never the other way
    float cutoffHz_ TAV_GUARDED_BY(controlLock_) = kDefaultCutoffHz;
    // audio only
    std::vector<float> filtered_;            // sources x kMaxFrames
    std::vector<float*> filteredPointers_;   // a row each
    std::vector<const float*> pieceInputs_;  // of one piece of a block
    std::vector<float*> pieceOutputs_;
};

}  // namespace Quilo
