// SPDX-License-Identifier: MIT
// Gains of one source over loudspeakers in space, beside the plain choice of the triplet.
#include "BenchmarkInputs.h"
#include "kernels/VelkDspTripletKernels.h"
#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloTriangulation.h"
#include "laws/QuiloVbap3DLaw.h"
#include "reference/PlainTriangulation.h"

#include <benchmark/benchmark.h>

#include <cstddef>

namespace {

tav::Vector<Quilo::Triplet> Triplets(const benchmark::State& state) {
    const auto count = static_cast<unsigned>(state.range(0));
    return Quilo::Triangulate(Quilo::DefaultSpeakers(Quilo::LayoutKind::Periphonic, count));
}

template <class ComputeGains>
void Run(benchmark::State& state, ComputeGains computeGains) {
    const tav::CartesianArray sources = Sources();
    tav::Vector<float> gains(static_cast<std::size_t>(state.range(0)));
    std::size_t next = 0;
    for (auto _ : state) {
        computeGains(sources[next++ % sources.Size()], gains);
        benchmark::DoNotOptimize(gains.Data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

void VbapGains(benchmark::State& state) {
    const Quilo::TripletBank bank(Triplets(state), tav::BestTripletKernels().findPeaks);
    Run(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        Quilo::Vbap3DGains(bank, source, gains);
    });
}

void VbapGainsPlain(benchmark::State& state) {
    const auto triplets = Triplets(state);
    Run(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        Plain::VbapGains(triplets, source, gains);
    });
}

BENCHMARK(VbapGains)->ArgName("speakers")->Arg(64)->Arg(250);
BENCHMARK(VbapGainsPlain)->ArgName("speakers")->Arg(64)->Arg(250);

}  // namespace
