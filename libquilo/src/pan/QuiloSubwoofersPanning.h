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
    void SetSourcePosition(unsigned index,
                           const tav::CartesianVector& position,
                           bool immediate,
                           bool force) override;
    /// Throws: tav::Exception when three or more subwoofers do not surround the listener; the new
    /// layout is in force all the same.
    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    bool IsPlanar() const override;

    /// Of every source. Glides.  @param hz  clamped to 10 .. 1000
    void SetCutoff(float hz);
    float Cutoff() const;

private:
    static constexpr unsigned kMaxFrames = 512;

    void ApplySampleRate() override;
    void ApplyReset() override;
    void ApplyInterpolationTime(float ms) override;
    void ApplySourceMute(unsigned index) override;

    tav::MultiEqualizer equalizer_;  // a channel per source, one band
    Vbap2DPanning ring_;
    float cutoffHz_ = 0.f;
    // audio only
    std::vector<float> filtered_;            // sources x kMaxFrames
    std::vector<float*> filteredPointers_;   // a row each
    std::vector<const float*> pieceInputs_;  // of one piece of a block
    std::vector<float*> pieceOutputs_;
};

}  // namespace Quilo
