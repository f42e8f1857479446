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

void VbapGains(benchmark::State& state) {
    const Quilo::TripletBank bank(Triplets(state),
                                  tav::BestKernels<tav::TripletKernels>().findPeaks);
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        Quilo::Vbap3DGains(bank, source, gains);
    });
}

void VbapGainsPlain(benchmark::State& state) {
    const auto triplets = Triplets(state);
    MeasureGains(state, [&](const tav::CartesianVector& source, tav::Vector<float>& gains) {
        Plain::VbapGains(triplets, source, gains);
    });
}

BENCHMARK(VbapGains)->ArgName("speakers")->Arg(64)->Arg(250);
BENCHMARK(VbapGainsPlain)->ArgName("speakers")->Arg(64)->Arg(250);

}  // namespace
