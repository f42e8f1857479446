// SPDX-License-Identifier: MIT
// The ramped gain matrix in its plainest form: three matrices, one thread, a loop per pair.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Plain {

/// Inputs outermost, so that each output sums its sources in input order, in floats, nothing fused.
class SignalMatrix {
public:
    SignalMatrix(unsigned numInputs, unsigned numOutputs);

    void SetSampleRate(float hz);
    void SetInterpolationTime(float ms);
    void SetRow(unsigned row, std::span<const float> gains, bool immediate);

    /// Adds into the outputs; only pairs of an active input and an active output.
    void Perform(float* const* outputs, const float* const* inputs, int frames);

    std::vector<bool> inputActive;
    std::vector<bool> outputActive;

private:
    void AddRestingGains(float* const* outputs, const float* const* inputs, int frames) const;
    void AddSegment(float* const* outputs,
                    const float* const* inputs,
                    int offset,
                    int frames) const;

    unsigned numInputs_;
    unsigned numOutputs_;
    std::vector<float> from_;
    std::vector<float> to_;
    std::vector<float> target_;
    float sampleRate_ = 44100.f;
    float interpolationTime_ = 0.f;
    std::int32_t rampPosition_ = 0;
    std::int32_t rampLength_ = 0;
    float inverseRampLength_ = 1.f;
};

}  // namespace Plain
