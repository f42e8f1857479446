// SPDX-License-Identifier: MIT
// Random numbers that are the same on every machine for the same seed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Quilo::Host {

/// SplitMix64 (Steele, Lea, Flood: "Fast splittable pseudorandom number generators", 2014).
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next() {
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }
    /// A number from 0 to count - 1.  @param count  at least 1
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
    /// True with the probability 1 / count.
    bool Once(std::size_t count) { return Below(count) == 0; }
    double Between(double low, double high) {
        return low + (high - low) * static_cast<double>(Next() >> 11) * 0x1p-53;
    }

private:
    std::uint64_t state_;
};

}  // namespace Quilo::Host
