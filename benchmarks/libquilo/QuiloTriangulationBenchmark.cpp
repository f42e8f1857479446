// SPDX-License-Identifier: MIT
// Triangulating a layout, beside the plain procedure and beside a convex hull of the same points.
#include "laws/QuiloTriangulation.h"

#include "laws/QuiloDefaultLayouts.h"
#include "reference/PlainTriangulation.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <libqhull_r/libqhull_r.h>
#include <vector>

namespace {

using Quilo::DefaultSpeakers;
using Quilo::LayoutKind;

tav::CartesianArray Speakers(const benchmark::State& state) {
    return DefaultSpeakers(LayoutKind::Periphonic, static_cast<unsigned>(state.range(0)));
}

void CountTriplets(benchmark::State& state, std::size_t numTriplets) {
    state.SetItemsProcessed(state.iterations());
    state.counters["triplets"] = static_cast<double>(numTriplets);
}

void Triangulate(benchmark::State& state) {
    const tav::CartesianArray speakers = Speakers(state);
    std::size_t numTriplets = 0;
    for (auto _ : state) {
        const auto triplets = Quilo::Triangulate(speakers);
        numTriplets = triplets.Size();
        benchmark::DoNotOptimize(triplets.Data());
    }
    CountTriplets(state, numTriplets);
}

void TriangulatePlain(benchmark::State& state) {
    const tav::CartesianArray speakers = Speakers(state);
    std::size_t numTriplets = 0;
    for (auto _ : state) {
        const auto triplets = Plain::Triangulate(speakers);
        numTriplets = triplets.Size();
        benchmark::DoNotOptimize(triplets.Data());
    }
    CountTriplets(state, numTriplets);
}

/// What a triangulation by the convex hull would cost.
void QhullHull(benchmark::State& state) {
    const tav::CartesianArray speakers = Speakers(state);
    std::vector<coordT> coordinates;
    for (const tav::CartesianVector& s : speakers) {
        for (const float v : {s.x, s.y, s.z}) coordinates.push_back(static_cast<coordT>(v));
    }
    char command[] = "qhull Qt";
    std::size_t numFacets = 0;
    for (auto _ : state) {
        qhT hull;
        qh_zero(&hull, stderr);
        const int status = qh_new_qhull(&hull, 3, static_cast<int>(speakers.Size()),
                                        coordinates.data(), False, command, nullptr, stderr);
        if (status != 0) state.SkipWithError("qhull failed");
        numFacets = static_cast<std::size_t>(hull.num_facets);
        qh_freeqhull(&hull, True);
    }
    CountTriplets(state, numFacets);
}

BENCHMARK(Triangulate)->ArgName("speakers")->Arg(64)->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK(TriangulatePlain)->ArgName("speakers")->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(QhullHull)->ArgName("speakers")->Arg(64)->Arg(250)->Unit(benchmark::kMillisecond);

}  // namespace
