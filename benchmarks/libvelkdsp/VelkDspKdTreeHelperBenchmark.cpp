// SPDX-License-Identifier: MIT
// The k-d tree beside the plain scan; where the tree wins is KdTreeHelper::kTreeFrom.
#include "math/VelkDspKdTreeHelper.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace {

using tav::CartesianArray;
using tav::CartesianVector;
using tav::KdTreeHelper;

/// Directions drawn evenly, as loudspeakers on a dome or sphere stand.
CartesianArray PointsOnSphere(std::size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::normal_distribution<float> normal;
    CartesianArray points(count);
    for (CartesianVector& p : points) {
        p = {normal(generator), normal(generator), normal(generator)};
        const float length = std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z);
        p = {p.x / length, p.y / length, p.z / length};
    }
    return points;
}

void Nearest(benchmark::State& state, std::size_t treeFrom) {
    const KdTreeHelper helper(PointsOnSphere(static_cast<std::size_t>(state.range(0)), 1),
                              treeFrom);
    const auto k = static_cast<std::size_t>(state.range(1));
    const CartesianArray queries = PointsOnSphere(1024, 2);
    std::vector<std::size_t> indices;
    std::vector<float> distances;
    std::size_t next = 0;
    for (auto _ : state) {
        helper.Nearest(queries[next++ % queries.Size()], k, indices, distances);
        benchmark::DoNotOptimize(indices.data());
        benchmark::DoNotOptimize(distances.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void NearestByScan(benchmark::State& state) {
    Nearest(state, std::numeric_limits<std::size_t>::max());
}
void NearestByTree(benchmark::State& state) { Nearest(state, 0); }

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"points", "k"});
    benchmark->ArgsProduct({{8, 16, 24, 32, 48, 64, 128, 250, 1024, 4096}, {1, 4, 12}});
}

BENCHMARK(NearestByScan)->Name("KdTreeHelperScan")->Apply(Sizes);
BENCHMARK(NearestByTree)->Name("KdTreeHelperTree")->Apply(Sizes);

}  // namespace
