// SPDX-License-Identifier: MIT
#include "pan/QuiloAmplitudePanning.h"

#include <algorithm>
#include <cmath>

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

void AmplitudePanning::SetSourcePosition(unsigned index,
                                         const tav::CartesianVector& position,
                                         bool immediate,
                                         bool force) {
    const ControlLock lock = LockControl();
    if (!StoreSourcePosition(index, position, force)) return;
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

void AmplitudePanning::ApplySpeakersPositions(const tav::CartesianArray&) {}

void AmplitudePanning::SetSourceSpread(unsigned index, float spread) {
    const ControlLock lock = LockControl();
    if (index >= NumInputs() || !std::isfinite(spread)) return;
    const float clamped = std::clamp(spread, 0.f, 100.f);
    if (clamped == spreads_[index]) return;
    spreads_[index] = clamped;
    RecomputeSource(index);
}

float AmplitudePanning::SourceSpread(unsigned index) const {
    const ControlLock lock = LockControl();
    return index < NumInputs() ? spreads_[index] : 0.f;
}

void AmplitudePanning::ApplySampleRate() { matrix_.SetSampleRate(SampleRate()); }

void AmplitudePanning::ApplyInterpolationTime(float ms) { matrix_.SetInterpolationTime(ms); }

}  // namespace Quilo
