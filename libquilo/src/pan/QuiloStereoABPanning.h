// SPDX-License-Identifier: MIT
// A spaced stereo pair: level and time differences together.
#pragma once

#include "pan/QuiloPan.h"
#include "pan/QuiloStereoABVoice.h"

namespace Quilo {

/// Two outputs: left, right; loudspeaker positions do not enter. Every source is delayed by about
/// one millisecond, so that one of its outputs can be earlier than the other.
class StereoABPanning : public Pan {
public:
    StereoABPanning(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    bool IsPlanar() const override { return false; }

private:
    // Deliberate: a forced source jumps, an immediate one does not.   (StereoABPanning,
    // JumpsWhenForced)
    void ComputeSource(unsigned index, bool, bool force) override TAV_REQUIRES(controlLock_);
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);
    void ApplySourceMute(unsigned index) override TAV_REQUIRES(controlLock_);
    void SetVoiceGains(unsigned index, const SpacedPair& pair, bool immediate)
        TAV_REQUIRES(controlLock_);

    std::vector<StereoABVoice> voices_;  // one per source
    StereoABVoice::Scratch scratch_;     // audio only
};

}  // namespace Quilo
