// SPDX-License-Identifier: MIT
#include "kernels/VelkDspKernels.h"

namespace tav {
namespace {

constexpr int kStripFrames = 16;

void AddScaled(float* y, const float* x, float gain, int n) noexcept TAV_NONBLOCKING {
    if (gain == 0.f) return;
    if (gain == 1.f) {
        for (int k = 0; k < n; ++k) y[k] += x[k];
        return;
    }
    for (int k = 0; k < n; ++k) y[k] += gain * x[k];
}

void AddRamped(float* y, const float* x, float first, float last, int n) noexcept TAV_NONBLOCKING {
    if (first == last) return AddScaled(y, x, first, n);
    if (n == 1) {
        y[0] += last * x[0];
        return;
    }
    const float step = (last - first) / static_cast<float>(n - 1);  // the last sample has `last`
    for (int k = 0; k < n; ++k) y[k] += (first + static_cast<float>(k) * step) * x[k];
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

void MixConstantPanel(float* const* outputs,
                      const float* strip,
                      const Panel& panel,
                      int n) noexcept TAV_NONBLOCKING {
    for (int index = 0; index < panel.numInputs; ++index) {
        const int input = panel.inputs[index];
        const float* gains = panel.gains + input * kTileOutputs;
        for (int o = 0; o < kTileOutputs; ++o) {
            AddScaled(outputs[o], strip + input * kStripFrames, gains[o], n);
        }
    }
}

void MixRampedPanel(float* const* outputs,
                    const float* strip,
                    const Panel& panel,
                    const float* w,
                    int n) noexcept TAV_NONBLOCKING {
    for (int index = 0; index < panel.numInputs; ++index) {
        const int input = panel.inputs[index];
        const float* gains = panel.gains + input * kTileOutputs;
        const float* steps = panel.steps + input * kTileOutputs;
        for (int o = 0; o < kTileOutputs; ++o) {
            AddWeighted(outputs[o], strip + input * kStripFrames, gains[o], steps[o], w, n);
        }
    }
}

constexpr Kernels kKernels{AddScaled,        AddRamped,      MixConstantList, MixRampedList,
                           MixConstantPanel, MixRampedPanel, kStripFrames};

}  // namespace

const Kernels& ScalarKernels() noexcept { return kKernels; }

}  // namespace tav
