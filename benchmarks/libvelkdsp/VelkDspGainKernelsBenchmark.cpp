// SPDX-License-Identifier: MIT
// Each kernel once per instruction set that this machine can run, the scalar twin first.
#include "kernels/VelkDspGainKernels.h"

#include "containers/VelkDspAlignedVector.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using tav::GainKernels;

constexpr int kInputs = 64;

/// Buffers for every kernel; small gains, so that sums that grow all along stay usual numbers.
struct Bench {
    explicit Bench(const benchmark::State& state)
        : frames(static_cast<int>(state.range(0))),
          weights(static_cast<std::size_t>(frames), 0.5f),
          samples(std::size_t{kInputs} * static_cast<std::size_t>(frames), 1e-3f),
          strip(samples.size()),
          sums(std::size_t{tav::kTileOutputs} * static_cast<std::size_t>(frames)),
          gains(std::size_t{kInputs} * tav::kTileOutputs, 1e-3f) {
        for (int i = 0; i < kInputs; ++i) {
            inputs[static_cast<std::size_t>(i)] = samples.data() + i * frames;
            rows[static_cast<std::size_t>(i)] = i;
            pairs[static_cast<std::size_t>(i)] = {i, 1e-3f, 1e-4f};
        }
        for (int o = 0; o < tav::kTileOutputs; ++o) {
            outputs[static_cast<std::size_t>(o)] = sums.data() + o * frames;
        }
    }

    int frames;
    tav::AlignedVector<float> weights, samples, strip, sums, gains;
    std::array<const float*, kInputs> inputs{};
    std::array<int, kInputs> rows{};
    std::array<tav::MixPair, kInputs> pairs{};
    std::array<float*, tav::kTileOutputs> outputs{};
};

struct Operation {
    const char* name;
    void (*run)(const GainKernels& kernels, Bench& bench);
};

// clang-format off
constexpr Operation kOperations[] = {
    {"KernelMixConstantList",  [](const GainKernels& k, Bench& b) { k.mixConstantList(b.sums.data(), b.inputs.data(), 0, b.pairs.data(), 3, b.frames); }},
    {"KernelMixRampedList",    [](const GainKernels& k, Bench& b) { k.mixRampedList(b.sums.data(), b.inputs.data(), 0, b.pairs.data(), 3, b.weights.data(), b.frames); }},
    {"KernelFillStrip",        [](const GainKernels& k, Bench& b) { k.fillStrip(b.strip.data(), kInputs, b.inputs.data(), 0, b.rows.data(), kInputs, b.frames); }},
    {"KernelMixConstantPanel", [](const GainKernels& k, Bench& b) { k.mixConstantPanel(b.outputs.data(), {b.samples.data(), b.frames, 1}, {b.gains.data(), b.gains.data(), b.rows.data(), kInputs, tav::kTileOutputs}, b.frames); }},
    {"KernelMixRampedPanel",   [](const GainKernels& k, Bench& b) { k.mixRampedPanel(b.outputs.data(), {b.samples.data(), b.frames, 1}, {b.gains.data(), b.gains.data(), b.rows.data(), kInputs, tav::kTileOutputs}, b.weights.data(), b.frames); }},
};
// clang-format on

void Run(benchmark::State& state, const GainKernels& kernels, const Operation& operation) {
    Bench bench(state);
    for (auto _ : state) {
        operation.run(kernels, bench);
        benchmark::DoNotOptimize(bench.sums.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

const bool registered = [] {
    for (const Operation& operation : kOperations) {
        for (const tav::InstructionSet set : tav::RunnableInstructionSets()) {
            const std::string name = std::string(operation.name) + "/" + std::string(NameOf(set));
            const GainKernels& kernels = tav::KernelsFor<GainKernels>(set);
            const auto run = [&kernels, &operation](benchmark::State& state) {
                Run(state, kernels, operation);
            };
            benchmark::RegisterBenchmark(name.c_str(), run)
                ->ArgName("frames")
                ->Arg(tav::kStripFrames);
        }
    }
    return true;
}();

}  // namespace
