// SPDX-License-Identifier: MIT
// Each kernel of filters once per instruction set that this machine can run, the scalar twin first.
#include "kernels/VelkDspFilterKernels.h"

#include "kernels/VelkDspInstructionSet.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr int kFrames = 64;
constexpr std::size_t kBlock = std::size_t{kFrames} * tav::kSourceLanes;

constexpr tav::NearFieldSection kSections[] = {{false, 0.1f, 1.2f, 0.9f},
                                               {false, 0.1f, 1.2f, 0.9f}};

struct Bench {
    Bench() {
        for (std::size_t i = 0; i < tav::kSourceLanes; ++i) {
            inputs.push_back(signals.data() + i * kFrames);
            outputs.push_back(signals.data() + i * kFrames);
        }
        lanes.highPassG = g.data();
        lanes.ratios = ratios.data();
        lanes.ratioStride = tav::kSourceLanes;
    }
    std::vector<float> signals = std::vector<float>(kBlock, 1e-3f);
    std::vector<float> rows = signals;
    std::vector<float> ratios = std::vector<float>(kBlock, 1.1f);
    std::vector<float> g = std::vector<float>(tav::kSourceLanes, 0.1f);
    std::vector<float> states = std::vector<float>(2 * tav::kNearFieldStates * tav::kSourceLanes);
    std::vector<const float*> inputs;
    std::vector<float*> outputs;
    tav::NearFieldLanes lanes;
};

struct Operation {
    const char* name;
    void (*run)(const tav::FilterKernels& kernels, Bench& bench);
};

// clang-format off
constexpr Operation kOperations[] = {
    {"KernelAllPass",   [](const tav::FilterKernels& k, Bench& b) { k.allPass(b.signals.data(), b.rows.data(), 0.5f, kFrames); }},
    {"KernelNearField", [](const tav::FilterKernels& k, Bench& b) { k.nearField(kSections, 2, b.lanes, b.states.data(), b.signals.data(), b.rows.data(), kFrames); }},
    {"KernelToRows",    [](const tav::FilterKernels& k, Bench& b) { k.toRows(b.inputs.data(), b.rows.data(), kFrames); }},
    {"KernelFromRows",  [](const tav::FilterKernels& k, Bench& b) { k.fromRows(b.rows.data(), b.outputs.data(), kFrames); }},
};
// clang-format on

const bool kRegistered = [] {
    for (const Operation& operation : kOperations) {
        for (const tav::InstructionSet set : tav::RunnableInstructionSets()) {
            const std::string name = std::string(operation.name) + "/" + std::string(NameOf(set));
            benchmark::RegisterBenchmark(name.c_str(), [&operation, set](benchmark::State& state) {
                Bench bench;
                const tav::FilterKernels& kernels = tav::KernelsFor<tav::FilterKernels>(set);
                for (auto _ : state) {
                    operation.run(kernels, bench);
                    benchmark::ClobberMemory();
                }
                state.SetItemsProcessed(state.iterations() * kFrames);
            });
        }
    }
    return true;
}();

}  // namespace
