// SPDX-License-Identifier: MIT
#include "reference/PlainSignalMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Plain {
namespace {

void AddConstant(float* y, const float* x, float gain, int n) {
    for (int k = 0; k < n; ++k) {
        if (gain == 1.f) {
            y[k] += x[k];
        } else if (gain != 0.f) {
            y[k] += gain * x[k];
        }
    }
}

void AddLine(float* y, const float* x, float a, float b, int n) {
    if (a == b) {
        AddConstant(y, x, a, n);
    } else if (n == 1) {
        y[0] += b * x[0];
    } else {
        const float step = (b - a) / static_cast<float>(n - 1);
        for (int k = 0; k < n; ++k) y[k] += (a + static_cast<float>(k) * step) * x[k];
    }
}

}  // namespace

SignalMatrix::SignalMatrix(unsigned numInputs, unsigned numOutputs)
    : inputActive(numInputs, true),
      outputActive(numOutputs, true),
      numInputs_(numInputs),
      numOutputs_(numOutputs),
      from_(std::size_t{numInputs} * numOutputs),
      to_(from_),
      target_(from_) {}

void SignalMatrix::SetSampleRate(float hz) {
    sampleRate_ = hz;
    SetInterpolationTime(interpolationTime_);
}

void SignalMatrix::SetInterpolationTime(float ms) {
    interpolationTime_ = std::max(ms, 0.f);
    rampLength_ = static_cast<std::int32_t>(interpolationTime_ * 0.001f * sampleRate_);
    if (rampLength_ < 1) {
        inverseRampLength_ = 1.f;
        from_ = to_;
        to_ = target_;
    } else {
        inverseRampLength_ = 1.f / static_cast<float>(rampLength_);
    }
    rampPosition_ = 0;
}

void SignalMatrix::SetRow(unsigned row, std::span<const float> gains, bool immediate) {
    const auto at = static_cast<std::ptrdiff_t>(row) * numOutputs_;
    std::ranges::copy(gains, target_.begin() + at);
    if (!immediate && rampLength_ != 0) return;
    std::ranges::copy(gains, to_.begin() + at);
    std::ranges::copy(gains, from_.begin() + at);
}

void SignalMatrix::Perform(float* const* outputs, const float* const* inputs, int frames) {
    if (rampLength_ == 0) {
        rampPosition_ = 0;
        AddRestingGains(outputs, inputs, frames);
        return;
    }
    int offset = 0;
    for (int left = frames; left > 0;) {
        const int piece = std::min(left, rampLength_ - rampPosition_);
        AddSegment(outputs, inputs, offset, piece);
        rampPosition_ += piece;
        offset += piece;
        left -= piece;
        if (rampPosition_ >= rampLength_) {
            from_ = to_;
            to_ = target_;
            rampPosition_ = 0;
        }
    }
}

void SignalMatrix::AddRestingGains(float* const* outputs,
                                   const float* const* inputs,
                                   int frames) const {
    for (unsigned i = 0; i < numInputs_; ++i) {
        for (unsigned o = 0; o < numOutputs_; ++o) {
            const float gain = to_[std::size_t{i} * numOutputs_ + o];
            if (!inputActive[i] || !outputActive[o] || !(std::abs(gain) > 1e-4f)) continue;
            AddConstant(outputs[o], inputs[i], gain, frames);
        }
    }
}

void SignalMatrix::AddSegment(float* const* outputs,
                              const float* const* inputs,
                              int offset,
                              int frames) const {
    for (unsigned i = 0; i < numInputs_; ++i) {
        for (unsigned o = 0; o < numOutputs_; ++o) {
            if (!inputActive[i] || !outputActive[o]) continue;
            const float s = from_[std::size_t{i} * numOutputs_ + o];
            const float e = to_[std::size_t{i} * numOutputs_ + o];
            const float d = e - s;
            float* const y = outputs[o] + offset;
            const float* const x = inputs[i] + offset;
            if (std::abs(d) > 1e-6f) {
                const float step = d * inverseRampLength_;
                const float g0 = static_cast<float>(rampPosition_) * step + s;
                const float g1 = static_cast<float>(rampPosition_ + frames) * step + s;
                AddLine(y, x, g0, g1, frames);
            } else if (std::abs(e) > 1e-4f) {
                AddConstant(y, x, e, frames);
            }
        }
    }
}

}  // namespace Plain
