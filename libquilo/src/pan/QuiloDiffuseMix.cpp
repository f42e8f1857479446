// SPDX-License-Identifier: MIT
#include "pan/QuiloDiffuseMix.h"

#include "pan/QuiloPan.h"

#include <algorithm>

namespace Quilo {

namespace {

constexpr float kHeard = 1.f;
constexpr float kMuted = 0.f;

}  // namespace

DiffuseMix::DiffuseMix(const tav::AudioProcessorWithAutoMute& owner, std::span<const float> weights)
    : sum_(owner.NumInputs(), 1),
      mono_(1, kMaxFrames),
      bank_(weights),
      inputs_(owner.NumInputs()),
      outputs_(weights.size()) {
    sum_.ShareInputActivityOf(owner);
    bank_.ShareActivityOf(owner);
    SetInterpolationTime(kDefaultInterpolationTimeMs);
    for (unsigned i = 0; i < owner.NumInputs(); ++i) sum_.SetRow(i, {&kHeard, 1}, true);
}

void DiffuseMix::SetSampleRate(float hz) {
    sum_.SetSampleRate(hz);
    bank_.SetSampleRate(hz);
}

void DiffuseMix::Reset() { bank_.Reset(); }

void DiffuseMix::SetInterpolationTime(float ms) {
    sum_.SetInterpolationTime(ms);
    bank_.SetInterpolationTime(ms);
}

void DiffuseMix::SetSourceMute(unsigned index, bool muted) {
    sum_.SetRow(index, {muted ? &kMuted : &kHeard, 1}, false);
}

void DiffuseMix::Perform(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING {
    for (unsigned offset = 0; offset < frames; offset += kMaxFrames) {
        const unsigned piece = std::min(frames - offset, kMaxFrames);
        for (std::size_t i = 0; i < inputs_.size(); ++i) inputs_[i] = inputs[i] + offset;
        for (std::size_t o = 0; o < outputs_.size(); ++o) outputs_[o] = outputs[o] + offset;
        sum_.Process(mono_.Pointers(), inputs_.data(), piece);
        bank_.Perform(outputs_.data(), mono_.Pointers(), piece);
    }
}

}  // namespace Quilo
