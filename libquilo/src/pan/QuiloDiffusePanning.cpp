// SPDX-License-Identifier: MIT
#include "pan/QuiloDiffusePanning.h"

#include <cmath>

namespace Quilo {

namespace {

/// Equal powers that add up to that of the sum.
std::vector<float> EqualWeights(unsigned numOutputs) {
    if (numOutputs == 0) return {};
    return std::vector<float>(numOutputs, 1.f / std::sqrt(static_cast<float>(numOutputs)));
}

}  // namespace

DiffusePanning::DiffusePanning(unsigned numInputs, unsigned numOutputs)
    : Pan(numInputs, numOutputs),
      mix_(*this, EqualWeights(numOutputs)) {}

void DiffusePanning::Process(float* const* outputs,
                             const float* const* inputs,
                             unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
    Perform(outputs, inputs, frames);
}

void DiffusePanning::SetSampleRate(float hz) {
    const ControlLock lock = LockControl();
    Pan::SetSampleRate(hz);
    mix_.SetSampleRate(SampleRate());
}

void DiffusePanning::Reset() {
    const ControlLock lock = LockControl();
    Pan::Reset();
    mix_.Reset();
}

void DiffusePanning::Perform(float* const* outputs,
                             const float* const* inputs,
                             unsigned frames) noexcept TAV_NONBLOCKING {
    mix_.Perform(outputs, inputs, frames);
}

void DiffusePanning::SetSourcePosition(unsigned index,
                                       const tav::CartesianVector& position,
                                       bool,
                                       bool force) {
    const ControlLock lock = LockControl();
    StoreSourcePosition(index, position, force);
}

void DiffusePanning::SetInterpolationTime(float ms) {
    const ControlLock lock = LockControl();
    mix_.SetInterpolationTime(ms);
}

float DiffusePanning::GetInterpolationTime() const {
    const ControlLock lock = LockControl();
    return mix_.InterpolationTime();
}

void DiffusePanning::ApplySourceMute(unsigned index) { mix_.SetSourceMute(index, IsMuted(index)); }

}  // namespace Quilo
