// SPDX-License-Identifier: MIT
// What the benchmarks feed to what they measure, the same in each run.
#pragma once

#include "reference/RandomPoints.h"
#include "reference/Signals.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>

using Tests::Noise;

/// 1024 positions all round the listener.
inline tav::CartesianArray Sources() {
    std::mt19937 generator(1);
    return Tests::RandomLayout(generator, 1024, 1.f);
}

/// Measures `use`, which is called with one source after the other.
template <class Use>
void MeasureSources(benchmark::State& state, Use use) {
    const tav::CartesianArray sources = Sources();
    std::size_t next = 0;
    for (auto _ : state) {
        use(sources[next++ % sources.Size()]);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

/// @param computeGains  of a source into a row of as many as the first argument says
template <class ComputeGains>
void MeasureGains(benchmark::State& state, ComputeGains computeGains) {
    tav::Vector<float> gains(static_cast<std::size_t>(state.range(0)));
    MeasureSources(state, [&](const tav::CartesianVector& source) {
        computeGains(source, gains);
        benchmark::DoNotOptimize(gains.Data());
    });
}
