// SPDX-License-Identifier: MIT
#include "kernels/VelkDspGainKernels.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tav {
namespace {

void AddScaled(float* y, const float* x, float gain, int n) noexcept TAV_NONBLOCKING {
    if (gain == 0.f) return;
    if (gain == 1.f) {
        for (int k = 0; k < n; ++k) y[k] += x[k];
        return;
    }
    for (int k = 0; k < n; ++k) y[k] += gain * x[k];
}

void AddWeighted(float* y, const float* x, float gain, float step, const float* w, int n) noexcept
    TAV_NONBLOCKING {
    if (step == 0.f) return AddScaled(y, x, gain, n);
    for (int k = 0; k < n; ++k) y[k] += (gain + w[k] * step) * x[k];
}

void MixConstantList(float* y,
                     const float* const* inputs,
                     int offset,
                     const MixPair* pairs,
                     int numPairs,
                     int n) noexcept TAV_NONBLOCKING {
    for (int p = 0; p < numPairs; ++p) {
        AddScaled(y, inputs[pairs[p].input] + offset, pairs[p].gain, n);
    }
}

void MixRampedList(float* y,
                   const float* const* inputs,
                   int offset,
                   const MixPair* pairs,
                   int numPairs,
                   const float* w,
                   int n) noexcept TAV_NONBLOCKING {
    for (int p = 0; p < numPairs; ++p) {
        const MixPair& pair = pairs[p];
        AddWeighted(y, inputs[pair.input] + offset, pair.gain, pair.step, w, n);
    }
}

Strip FillStrip(float* space,
                int,
                const float* const* inputs,
                int offset,
                const int* indices,
                int numInputs,
                int n) noexcept TAV_NONBLOCKING {
    for (int index = 0; index < numInputs; ++index) {
        const std::ptrdiff_t input = indices[index];
        float* const samples = space + input * kStripFrames;
        for (int k = 0; k < n; ++k) samples[k] = inputs[input][offset + k];
    }
    return {space, kStripFrames, 1};
}

void MixConstantPanel(float* const* outputs,
                      const Strip& strip,
                      const Panel& panel,
                      int n) noexcept TAV_NONBLOCKING {
    for (int index = 0; index < panel.numInputs; ++index) {
        const std::ptrdiff_t input = panel.inputs[index];
        const float* gains = panel.gains + input * kTileOutputs;
        for (int o = 0; o < panel.numOutputs; ++o) {
            AddScaled(outputs[o], strip.samples + input * strip.inputStride, gains[o], n);
        }
    }
}

void MixRampedPanel(float* const* outputs,
                    const Strip& strip,
                    const Panel& panel,
                    const float* w,
                    int n) noexcept TAV_NONBLOCKING {
    for (int index = 0; index < panel.numInputs; ++index) {
        const std::ptrdiff_t input = panel.inputs[index];
        const float* gains = panel.gains + input * kTileOutputs;
        const float* steps = panel.steps + input * kTileOutputs;
        for (int o = 0; o < panel.numOutputs; ++o) {
            AddWeighted(outputs[o], strip.samples + input * strip.inputStride, gains[o], steps[o],
                        w, n);
        }
    }
}

void PlanRow(const GainLine& line, const RowPlan& plan, int numGroups) noexcept TAV_NONBLOCKING {
    for (int group = 0; group < numGroups; ++group) {
        plan.audible[group] = plan.moving[group] = 0;
        for (int bit = 0; bit < kGroupOutputs; ++bit) {
            const int o = group * kGroupOutputs + bit;
            const float difference = line.to[o] - line.from[o];
            const bool moves = std::abs(difference) > kMovingGain;
            const float resting = std::abs(line.to[o]) > line.silence ? line.to[o] : 0.f;
            plan.gains[o] = (moves ? line.from[o] : resting) * line.heard[o];
            plan.steps[o] = (moves ? difference * line.inverseLength : 0.f) * line.heard[o];
            const std::uint64_t mask = std::uint64_t{1} << bit;
            if (plan.steps[o] != 0.f) plan.moving[group] |= mask;
            if (plan.steps[o] != 0.f || plan.gains[o] != 0.f) plan.audible[group] |= mask;
        }
    }
}

constexpr GainKernels kKernels{MixConstantList,  MixRampedList,  FillStrip,
                               MixConstantPanel, MixRampedPanel, PlanRow};

}  // namespace

const GainKernels& GainKernels::Scalar() noexcept { return kKernels; }

}  // namespace tav
