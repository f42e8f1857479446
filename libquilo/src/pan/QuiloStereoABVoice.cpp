// SPDX-License-Identifier: MIT
#include "pan/QuiloStereoABVoice.h"

#include <span>

namespace Quilo {

namespace {

constexpr float kMaximumDelayMs = 2.f;

}  // namespace

StereoABVoice::StereoABVoice() {
    for (Side& side : sides_) {
        side.delay.SetMaximumDelay(kMaximumDelayMs);
        side.delay.SetInterpolationKind(tav::DelayKind::Lagrange);
    }
    SetDelays({}, true);
}

void StereoABVoice::SetSampleRate(float hz) {
    for (Side& side : sides_) side.delay.SetSampleRate(hz);
}

void StereoABVoice::SetInterpolationTime(float ms) {
    for (Side& side : sides_) side.delay.SetInterpolationTime(ms);
    newest_.glideMs = ms;
}

void StereoABVoice::SetDelays(const SpacedPair& pair, bool immediate) {
    sides_[0].delay.SetDelay(pair.leftDelayMs, immediate);
    sides_[1].delay.SetDelay(pair.rightDelayMs, immediate);
}

void StereoABVoice::SetGains(float left, float right, bool immediate) {
    newest_.target = {left, right};
    if (immediate) {
        newest_.jump = newest_.target;
        ++newest_.numJumps;
    }
    shared_.Store(newest_);
}

void StereoABVoice::Reset() {
    for (Side& side : sides_) side.delay.Reset();
}

void StereoABVoice::Add(float* left,
                        float* right,
                        const float* input,
                        unsigned frames,
                        Scratch& scratch) noexcept TAV_NONBLOCKING {
    TakeTargets();
    AddSide(sides_[0], left, input, frames, scratch);
    AddSide(sides_[1], right, input, frames, scratch);
}

void StereoABVoice::Rest(unsigned frames) noexcept TAV_NONBLOCKING {
    TakeTargets();
    for (Side& side : sides_) {
        side.delay.Rest(frames);
        side.gain.Skip(frames);
    }
}

void StereoABVoice::TakeTargets() noexcept TAV_NONBLOCKING {
    for (Side& side : sides_) side.gain.SetSampleRate(side.delay.SampleRate());
    const std::uint32_t numJumps = taken_.numJumps;
    if (!shared_.Take(taken_)) return;
    for (std::size_t s = 0; s < sides_.size(); ++s) {
        if (taken_.numJumps != numJumps) sides_[s].gain.Set(taken_.jump[s], 0.f);
        if (taken_.target[s] != sides_[s].gain.Target()) {
            sides_[s].gain.Set(taken_.target[s], taken_.glideMs);
        }
    }
}

void StereoABVoice::AddSide(Side& side,
                            float* output,
                            const float* input,
                            unsigned frames,
                            Scratch& scratch) noexcept TAV_NONBLOCKING {
    side.delay.Perform(scratch.delayed.data(), input, frames);
    side.gain.Fill(std::span(scratch.gains).first(frames));
    if (output == nullptr) return;
    for (unsigned k = 0; k < frames; ++k) output[k] += scratch.gains[k] * scratch.delayed[k];
}

}  // namespace Quilo
