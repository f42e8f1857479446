// SPDX-License-Identifier: MIT
// What a panner costs: the control side per moved source, the audio side per block.
#include "pan/QuiloPan.h"

#include "pan/QuiloPanDefaults.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

namespace {

tav::CartesianArray Positions(unsigned count, unsigned seed) {
    std::mt19937 generator(seed);
    std::normal_distribution<float> normal;
    tav::CartesianArray positions(count);
    for (auto& p : positions) p = {normal(generator), normal(generator), normal(generator)};
    return positions;
}

std::unique_ptr<Quilo::Pan> Make(const char* type, unsigned inputs, unsigned outputs) {
    auto pan = Quilo::Pan::Create(inputs, outputs, type, "direct");
    pan->SetSpeakersPositions(Quilo::DefaultSpeakersFor(pan->GetType(), outputs));
    return pan;
}

/// One source that jumps about: law, gain row, hand-over.
void MoveSource(benchmark::State& state, const char* type) {
    const auto pan = Make(type, 1, static_cast<unsigned>(state.range(0)));
    const tav::CartesianArray positions = Positions(1024, 1);
    std::size_t next = 0;
    for (auto _ : state) pan->SetSourcePosition(0, positions[next++ % 1024], false, false);
    state.SetItemsProcessed(state.iterations());
}

/// Blocks of audio while a sixteenth of the sources moves before each.
void Process(benchmark::State& state, const char* type) {
    const auto inputs = static_cast<unsigned>(state.range(0));
    const auto outputs = static_cast<unsigned>(state.range(1));
    const auto frames = static_cast<unsigned>(state.range(2));
    constexpr float kRate = 48000.f;
    const auto pan = Make(type, inputs, outputs);
    pan->SetSampleRate(kRate);
    pan->SetBufferSize(frames);
    const std::vector<double> input(frames, 0.5);
    std::vector<std::vector<double>> output(outputs, std::vector<double>(frames));
    const std::vector<const double*> inputPointers(inputs, input.data());
    std::vector<double*> outputPointers;
    for (auto& o : output) outputPointers.push_back(o.data());
    const tav::CartesianArray positions = Positions(1024, 2);
    unsigned next = 0;
    for (auto _ : state) {
        for (unsigned k = 0; k < inputs; k += 16, ++next) {
            pan->SetSourcePosition(next % inputs, positions[next % 1024], false, false);
        }
        pan->Process(outputPointers.data(), inputPointers.data(), frames);
        benchmark::DoNotOptimize(output[0].data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames) * inputs);
    state.counters["x_realtime"] =
        benchmark::Counter(static_cast<double>(frames) / static_cast<double>(kRate),
                           benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK_CAPTURE(MoveSource, angular, "angular")->ArgName("speakers")->Arg(8)->Arg(250);
BENCHMARK_CAPTURE(MoveSource, surround, "surround")->ArgName("speakers")->Arg(4);
BENCHMARK_CAPTURE(MoveSource, vbap2d, "vbap2d")->ArgName("speakers")->Arg(8)->Arg(250);

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"in", "out", "frames"})->Args({16, 16, 64})->Args({250, 250, 64});
}
BENCHMARK_CAPTURE(Process, angular, "angular")->Apply(Sizes);
BENCHMARK_CAPTURE(Process, vbap2d, "vbap2d")->Apply(Sizes);
BENCHMARK_CAPTURE(Process, subwoofers, "subwoofers")
    ->ArgNames({"in", "out", "frames"})
    ->Args({16, 4, 64})
    ->Args({250, 8, 64});
BENCHMARK_CAPTURE(Process, ab, "ab")
    ->ArgNames({"in", "out", "frames"})
    ->Args({16, 2, 64})
    ->Args({250, 2, 64});

}  // namespace
