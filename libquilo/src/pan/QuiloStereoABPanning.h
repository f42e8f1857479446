// SPDX-License-Identifier: MIT
// A spaced stereo pair: level and time differences together.
#pragma once

#include "pan/QuiloPan.h"
#include "pan/QuiloStereoABVoice.h"

#include <atomic>

namespace Quilo {

/// Two outputs: left, right; loudspeaker positions do not enter. Every source is late by about
/// one millisecond.
class StereoABPanning : public Pan {
public:
    StereoABPanning(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    // Deliberate: force jumps and immediate does not.   (StereoABPanning, JumpsWhenForced)
    void SetSourcePosition(unsigned index,
                           const tav::CartesianVector& position,
                           bool immediate,
                           bool force) override;
    void ApplySpeakersPositions(const tav::CartesianArray&) override {}
    bool IsPlanar() const override { return false; }

private:
    void ApplySampleRate() override;
    void ApplyReset() override;
    void ApplyInterpolationTime(float ms) override;
    void ApplySourceMute(unsigned index) override;
    void SetVoiceGains(unsigned index, const SpacedPair& pair, bool immediate);

    std::vector<StereoABVoice> voices_;  // one per source
    StereoABVoice::Scratch scratch_;     // audio only
};

}  // namespace Quilo
