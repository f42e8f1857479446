// SPDX-License-Identifier: MIT
// Triangulating a layout, beside the plain procedure and beside a convex hull of the same points.
#include "laws/QuiloTriangulation.h"

#include "laws/QuiloDefaultLayouts.h"
#include "reference/PlainTriangulation.h"
#include "reference/RandomPoints.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <libqhull_r/libqhull_r.h>
#include <random>
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

void Run(benchmark::State& state, const tav::CartesianArray& speakers) {
    std::size_t numTriplets = 0;
    for (auto _ : state) {
        const auto triplets = Quilo::Triangulate(speakers);
        numTriplets = triplets.Size();
        benchmark::DoNotOptimize(triplets.Data());
    }
    CountTriplets(state, numTriplets);
}

void Triangulate(benchmark::State& state) { Run(state, Speakers(state)); }

/// All loudspeakers within two degrees of each other: hardly an arc goes.
void TriangulateCluster(benchmark::State& state) {
    std::mt19937 generator(1);
    auto speakers = Tests::RandomLayout(generator, Speakers(state).Size(), 0.0175f);
    for (auto& speaker : speakers) speaker = {speaker.x, 1.f, speaker.z + 0.3f};
    Run(state, speakers);
}

/// A straight row of loudspeakers, and three behind: nearly all arcs in one plane.
void TriangulateLine(benchmark::State& state) {
    auto speakers = Speakers(state);
    for (std::size_t i = 3; i < speakers.Size(); ++i) {
        const float along = static_cast<float>(i) / static_cast<float>(speakers.Size());
        speakers[i] = {6.f * along - 3.f, 2.f, 0.5f};
    }
    speakers[0] = {0.f, 0.f, 2.f};
    speakers[1] = {-2.f, -2.f, 0.4f};
    speakers[2] = {2.f, -2.f, 0.4f};
    Run(state, speakers);
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
BENCHMARK(TriangulateCluster)->ArgName("speakers")->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK(TriangulateLine)->ArgName("speakers")->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK(TriangulatePlain)->ArgName("speakers")->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(QhullHull)->ArgName("speakers")->Arg(64)->Arg(250)->Unit(benchmark::kMillisecond);

}  // namespace
