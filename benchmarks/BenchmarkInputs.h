// SPDX-License-Identifier: MIT
// What the benchmarks feed to what they measure, the same in each run.
#pragma once

#include "reference/RandomPoints.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

/// White, in [-1, 1).
inline std::vector<float> Noise(std::size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::vector<float> values(count);
    std::ranges::generate(values, [&] { return Tests::Uniform(generator); });
    return values;
}

/// 1024 positions all round the listener.
inline tav::CartesianArray Sources() {
    std::mt19937 generator(1);
    return Tests::RandomLayout(generator, 1024, 1.f);
}
