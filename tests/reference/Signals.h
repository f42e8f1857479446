// SPDX-License-Identifier: MIT
// Signals that many tests play, the same on every platform.
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

namespace Tests {

using Signal = std::vector<float>;

inline Signal Noise(std::size_t count, unsigned seed, float low = -1.f, float high = 1.f) {
    std::mt19937 random(seed);
    Signal noise(count);
    for (float& sample : noise) {
        const double part = static_cast<double>(random()) / 4294967296.0;
        sample = low + (high - low) * static_cast<float>(part);
    }
    return noise;
}

inline Signal Sine(double hz, double rate, std::size_t count, double amplitude = 1.0) {
    Signal sine(count);
    for (std::size_t k = 0; k < count; ++k) {
        const double turns = hz * static_cast<double>(k) / rate;
        sine[k] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * turns));
    }
    return sine;
}

inline Signal Impulse(std::size_t count) {
    Signal impulse(count);
    impulse.at(0) = 1.f;
    return impulse;
}

}  // namespace Tests
