// SPDX-License-Identifier: MIT
// Gains of one source over all loudspeakers, beside one pass of as many distances.
#include "BenchmarkInputs.h"
#include "kernels/VelkDspInstructionSet.h"
#include "kernels/VelkDspSpeakerKernels.h"
#include "laws/QuiloDbapLaw.h"
#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloKnnLaw.h"
#include "laws/QuiloSpcapLaw.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <string>

namespace {

tav::CartesianArray Layout(const benchmark::State& state) {
    return Quilo::DefaultSpeakers(Quilo::LayoutKind::Periphonic,
                                  static_cast<unsigned>(state.range(0)));
}

void RunDbap(benchmark::State& state, const tav::SpeakerKernels& kernels) {
    const Quilo::SpeakerCloud cloud(Layout(state));
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        const auto metric = Quilo::OmniMetric(0.2f, source, cloud.centroid, false);
        Quilo::DbapGains(cloud.rows, source, metric, kernels.gainsByDistance, gains);
    });
}

void RunSpcap(benchmark::State& state, const tav::SpeakerKernels& kernels) {
    Quilo::SpcapLaw law(kernels.gainsByAngle);
    law.SetSpeakers(Layout(state));
    const auto spread = static_cast<float>(state.range(1));
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        law.Gains(source, spread, gains);
    });
}

void DbapGains(benchmark::State& state) { RunDbap(state, tav::BestKernels<tav::SpeakerKernels>()); }
void SpcapGains(benchmark::State& state) {
    RunSpcap(state, tav::BestKernels<tav::SpeakerKernels>());
}

void KnnGains(benchmark::State& state) {
    Quilo::KnnLaw law(Layout(state));
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        law.Gains(source, static_cast<unsigned>(state.range(1)), gains);
    });
}

void SquareRoots(benchmark::State& state) {
    const Quilo::SpeakerRows rows(Layout(state));
    const auto count = state.range(0);
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& distances) {
        const float* const x = rows.Data();
        const float* const y = x + rows.Stride();
        const float* const z = y + rows.Stride();
        float* const to = distances.Data();
        for (std::ptrdiff_t k = 0; k < count; ++k) {
            const float dx = x[k] - source.x;
            const float dy = y[k] - source.y;
            const float dz = z[k] - source.z;
            to[k] = std::sqrt(dx * dx + dy * dy + dz * dz);
        }
    });
}

BENCHMARK(SquareRoots)->ArgName("count")->Arg(250);
BENCHMARK(DbapGains)->ArgName("speakers")->Arg(250);
BENCHMARK(KnnGains)->ArgNames({"speakers", "neighbors"})->Args({250, 3})->Args({250, 8});
BENCHMARK(SpcapGains)->ArgNames({"speakers", "spread"})->Args({250, 0})->Args({250, 50});

/// Each set beside its scalar twin.
[[maybe_unused]] const bool kSetsAreRegistered = [] {
    for (const tav::InstructionSet set : tav::RunnableInstructionSets()) {
        const tav::SpeakerKernels& kernels = tav::KernelsFor<tav::SpeakerKernels>(set);
        const std::string suffix = "/" + std::string(NameOf(set));
        benchmark::RegisterBenchmark(("GainsByDistance" + suffix).c_str(),
                                     [&kernels](auto& state) { RunDbap(state, kernels); })
            ->ArgName("speakers")
            ->Arg(24)
            ->Arg(250);
        benchmark::RegisterBenchmark(("GainsByAngle" + suffix).c_str(),
                                     [&kernels](auto& state) { RunSpcap(state, kernels); })
            ->ArgNames({"speakers", "spread"})
            ->Args({24, 50})
            ->Args({250, 0})
            ->Args({250, 50});
    }
    return true;
}();

}  // namespace
