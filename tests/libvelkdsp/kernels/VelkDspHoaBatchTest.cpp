// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaBatch.h"

#include "kernels/VelkDspInstructionSet.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace tav {
namespace {

constexpr float kUntouched = 42.f;

/// With the origin, axes and positions whose squares are beyond 32 bits among them.
CartesianArray Directions(std::size_t count) {
    std::mt19937 generator(3);
    CartesianArray directions = Tests::RandomLayout(generator, count, 3.f);
    const CartesianVector special[] = {{0, 0, 0}, {-0.f, 0, 0}, {0, 0, -1}, {2e25f, 1e25f, -3e25f}};
    for (std::size_t i = 0; i < 4 && i < count; ++i) directions[i * count / 4] = special[i];
    return directions;
}

// The batch rounds its two factors and their product, the other way rounds once: four halves of an
// epsilon; and where products of 64 bits cancel, some of their roundings are left.
TEST(HoaBatch, GivesEveryDirectionTheGainsThatItHasAlone) {
    constexpr float kRelative = 2.f * std::numeric_limits<float>::epsilon();
    for (const InstructionSet set : RunnableInstructionSets()) {
        for (const unsigned order : {0u, 1u, 2u, 3u, 4u, 7u, 14u, 20u}) {
            for (const std::size_t count : {0u, 1u, 5u, 15u, 16u, 17u, 32u, 40u}) {
                HoaEncodingVector encoding(order, 3, SphericalHarmonic::Normalization::N3D);
                const CartesianArray directions = Directions(count);
                const std::size_t numChannels = encoding.NumChannels();
                Matrix<float> gains(count, numChannels + 3, kUntouched);
                ComputeHoaGains(encoding, directions, gains, KernelsFor<HoaKernels>(set));
                Vector<float> alone;
                for (std::size_t i = 0; i < count; ++i) {
                    encoding.Compute(directions[i], alone);
                    for (std::size_t c = 0; c < numChannels; ++c) {
                        ASSERT_NEAR(gains(i, c), alone[c], kRelative * std::abs(alone[c]) + 1e-12f)
                            << NameOf(set) << " order " << order << " channel " << c;
                    }
                    for (std::size_t c = numChannels; c < gains.Columns(); ++c) {
                        ASSERT_EQ(gains(i, c), kUntouched);
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace tav
