// SPDX-License-Identifier: MIT
#include "pan/QuiloStereoABPanning.h"

#include <algorithm>

namespace Quilo {

StereoABPanning::StereoABPanning(unsigned numInputs, unsigned numOutputs)
    : Pan(numInputs, numOutputs),
      voices_(numInputs) {
    for (StereoABVoice& voice : voices_) voice.SetInterpolationTime(kDefaultInterpolationTimeMs);
}

void StereoABPanning::Perform(float* const* outputs,
                              const float* const* inputs,
                              unsigned frames) noexcept TAV_NONBLOCKING {
    const bool wanted[] = {OutputConnected(0), OutputConnected(1)};
    for (unsigned i = 0; i < NumInputs(); ++i) {
        const bool active = InputActive(i);
        for (unsigned offset = 0; offset < frames; offset += StereoABVoice::kMaxFrames) {
            const unsigned piece = std::min(frames - offset, StereoABVoice::kMaxFrames);
            if (active) {
                voices_[i].Add(wanted[0] ? outputs[0] + offset : nullptr,
                               wanted[1] ? outputs[1] + offset : nullptr, inputs[i] + offset, piece,
                               scratch_);
            } else {
                voices_[i].Rest(piece);
            }
        }
    }
}

void StereoABPanning::ComputeSource(unsigned index, bool, bool force) {
    const SpacedPair pair = AbPair(StoredPosition(index));
    voices_[index].SetDelays(pair, force);
    SetVoiceGains(index, pair, force);
}

void StereoABPanning::ApplySampleRate() {
    for (StereoABVoice& voice : voices_) voice.SetSampleRate(SampleRate());
}

void StereoABPanning::ApplyReset() {
    for (StereoABVoice& voice : voices_) voice.Reset();
}

void StereoABPanning::ApplyInterpolationTime(float ms) {
    for (StereoABVoice& voice : voices_) voice.SetInterpolationTime(ms);
}

void StereoABPanning::ApplySourceMute(unsigned index) {
    SetVoiceGains(index, AbPair(StoredPosition(index)), false);
}

void StereoABPanning::SetVoiceGains(unsigned index, const SpacedPair& pair, bool immediate) {
    const bool muted = IsMuted(index);
    voices_[index].SetGains(muted ? 0.f : pair.leftGain, muted ? 0.f : pair.rightGain, immediate);
}

}  // namespace Quilo
