// SPDX-License-Identifier: MIT
#include "pan/QuiloSubwoofersPanning.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Quilo {

namespace {

constexpr float kQuality = 0.7f;

}  // namespace

SubwoofersPanning::SubwoofersPanning(unsigned numInputs, unsigned numOutputs)
    : Vbap2DPanning(numInputs, numOutputs),
      equalizer_(numInputs, 1),
      filtered_(std::size_t{numInputs} * kMaxFrames),
      pieceInputs_(numInputs),
      pieceOutputs_(numOutputs) {
    equalizer_.ShareActivityOf(*this);
    for (unsigned i = 0; i < numInputs; ++i) {
        filteredPointers_.push_back(filtered_.data() + std::size_t{i} * kMaxFrames);
    }
    SetCutoff(kDefaultCutoffHz);
}

void SubwoofersPanning::Perform(float* const* outputs,
                                const float* const* inputs,
                                unsigned frames) noexcept TAV_NONBLOCKING {
    for (unsigned offset = 0; offset < frames; offset += kMaxFrames) {
        const auto shifted = [offset](auto* port) { return port + offset; };
        std::transform(inputs, inputs + NumInputs(), pieceInputs_.begin(), shifted);
        std::transform(outputs, outputs + NumOutputs(), pieceOutputs_.begin(), shifted);
        const unsigned count = std::min(frames - offset, kMaxFrames);
        equalizer_.Perform(filteredPointers_.data(), pieceInputs_.data(), count);
        Vbap2DPanning::Perform(pieceOutputs_.data(), filteredPointers_.data(), count);
    }
}

/// In two steps: the matrix of a gain panner would mix and drain inputs that are not filtered yet.
void SubwoofersPanning::ProcessToHost(const tav::HostDrain& host,
                                      float* const* outputs,
                                      const float* const* inputs,
                                      unsigned frames) noexcept TAV_NONBLOCKING {
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the base class in between is what must not run
    AudioProcessorBase::ProcessToHost(host, outputs, inputs, frames);
}

void SubwoofersPanning::SetCutoff(float hz) {
    const tav::ControlGuard guard(controlLock_);
    if (!std::isfinite(hz)) return;
    cutoffHz_ = std::clamp(hz, kMinCutoffHz, kMaxCutoffHz);
    for (unsigned i = 0; i < NumInputs(); ++i) {
        equalizer_.SetBand(i, 0, {tav::FilterKind::LowPass, cutoffHz_, kQuality, 0.f});
    }
}

float SubwoofersPanning::Cutoff() const {
    const tav::ControlGuard guard(controlLock_);
    return cutoffHz_;
}

void SubwoofersPanning::ApplySampleRate() {
    Vbap2DPanning::ApplySampleRate();
    equalizer_.SetSampleRate(SampleRate());
}

void SubwoofersPanning::ApplyReset() { equalizer_.Reset(); }

}  // namespace Quilo
