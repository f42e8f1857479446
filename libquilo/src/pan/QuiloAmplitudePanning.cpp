// SPDX-License-Identifier: MIT
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

AmplitudePanning::AmplitudePanning(unsigned numInputs, unsigned numOutputs)
    : Pan(numInputs, numOutputs),
      matrix_(numInputs, numOutputs),
      spreads_(numInputs),
      row_(numOutputs) {
    matrix_.ShareActivityOf(*this);
    matrix_.SetInterpolationTime(kDefaultInterpolationTimeMs);
}

void AmplitudePanning::Perform(float* const* outputs,
                               const float* const* inputs,
                               unsigned frames) noexcept TAV_NONBLOCKING {
    matrix_.Perform(outputs, inputs, frames);
}

void AmplitudePanning::ProcessToHost(const tav::HostDrain& host,
                                     float* const* outputs,
                                     const float* const* inputs,
                                     unsigned frames) noexcept TAV_NONBLOCKING {
    matrix_.ProcessToHost(host, outputs, inputs, frames);
}

void AmplitudePanning::ComputeSource(unsigned index, bool immediate, bool) {
    if (!IsMuted(index)) ComputeGains(index, StoredPosition(index), row_);
    SetGains(index, row_, immediate);
}

void AmplitudePanning::SetGains(unsigned index, std::span<const float> gains, bool immediate) {
    if (IsMuted(index)) {
        row_.Fill(0.f);
        gains = row_;
    }
    matrix_.SetRow(index, gains, immediate);
}

void AmplitudePanning::ApplySourceSpread(unsigned index, float spread) {
    if (spread == spreads_[index]) return;
    spreads_[index] = spread;
    RecomputeSource(index);
}

void AmplitudePanning::ApplySampleRate() { matrix_.SetSampleRate(SampleRate()); }

void AmplitudePanning::ApplyInterpolationTime(float ms) { matrix_.SetInterpolationTime(ms); }

}  // namespace Quilo
