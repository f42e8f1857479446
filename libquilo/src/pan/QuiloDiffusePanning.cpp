// SPDX-License-Identifier: MIT
#include "pan/QuiloDiffusePanning.h"

#include <cmath>

namespace Quilo {

namespace {

/// Equal gains whose squares add up to 1.
std::vector<float> EqualWeights(unsigned numOutputs) {
    if (numOutputs == 0) return {};
    return std::vector<float>(numOutputs, 1.f / std::sqrt(static_cast<float>(numOutputs)));
}

}  // namespace

DiffusePanning::DiffusePanning(unsigned numInputs, unsigned numOutputs)
    : DiffusePanning(numInputs, numOutputs, EqualWeights(numOutputs)) {}

DiffusePanning::DiffusePanning(unsigned numInputs,
                               unsigned numOutputs,
                               std::span<const float> weights)
    : Pan(numInputs, numOutputs),
      mix_(*this, weights) {}

void DiffusePanning::Perform(float* const* outputs,
                             const float* const* inputs,
                             unsigned frames) noexcept TAV_NONBLOCKING {
    mix_.Perform(outputs, inputs, frames);
}

void DiffusePanning::ApplySampleRate() { mix_.SetSampleRate(SampleRate()); }

void DiffusePanning::ApplyReset() { mix_.Reset(); }

void DiffusePanning::ApplyInterpolationTime(float ms) { mix_.SetInterpolationTime(ms); }

void DiffusePanning::ApplySourceMute(unsigned index) { mix_.SetSourceMute(index, IsMuted(index)); }

}  // namespace Quilo
