// SPDX-License-Identifier: MIT
// Points and layouts from a seeded generator, the same on every platform.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstddef>
#include <random>

namespace Tests {

/// In [-1, 1).
inline float Uniform(std::mt19937& generator) {
    return static_cast<float>(static_cast<double>(generator()) / 2147483648.0 - 1.0);
}

/// In the cube of that half side.
inline tav::CartesianVector RandomPoint(std::mt19937& generator, float half = 1.f) {
    const float x = half * Uniform(generator);
    const float y = half * Uniform(generator);
    return {x, y, half * Uniform(generator)};
}

inline tav::CartesianArray RandomLayout(std::mt19937& generator, std::size_t count, float half) {
    tav::CartesianArray layout(count);
    for (auto& speaker : layout) speaker = RandomPoint(generator, half);
    return layout;
}

}  // namespace Tests
