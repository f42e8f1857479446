// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSpeakerKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tav {
namespace {

/// Three rows of `count` numbers and the gains that are right before they are scaled.
struct Problem {
    std::vector<float> rows;
    std::ptrdiff_t stride;
    std::vector<double> gains;
};

class SpeakerKernelsOf : public Tests::KernelsOf<SpeakerKernels> {};

template <class Fill>
void ExpectUnitEnergyGains(const Problem& problem, int start, Fill fill) {
    double energy = 0.0;
    for (const double gain : problem.gains) energy += gain * gain;
    Tests::Guarded<float> gains(start, std::vector<float>(problem.gains.size()));
    fill(gains.Data());
    for (std::size_t k = 0; k < problem.gains.size(); ++k) {
        // Some roundings of its own and those of a sum of up to 67 terms.
        const double expected = problem.gains[k] / std::sqrt(energy);
        ASSERT_NEAR(static_cast<double>(gains.Data()[k]), expected, 2e-6 * expected)
            << k << " of " << problem.gains.size();
    }
}

TEST_P(SpeakerKernelsOf, GiveTheGainsOfDoublePrecision) {
    std::mt19937 generator(5);
    const auto square = [](double v) { return v * v; };
    for (int count = 1; count <= Tests::kLongestRun; ++count) {
        for (int round = 0; round < Tests::kStarts; ++round) {
            Problem problem;
            problem.stride = (count + 15) / 16 * 16;
            problem.rows.resize(static_cast<std::size_t>(3 * problem.stride));
            const auto row = [&](int r, int k) -> float& {
                return problem.rows[static_cast<std::size_t>(r * problem.stride + k)];
            };
            // 1. by distance
            std::vector<float> metric(7);
            for (float& number : metric) number = std::fabs(Tests::Uniform(generator));
            if (round == 0) metric[6] = 0.f;
            for (int k = 0; k < count; ++k) {
                double squared = 1e-10 + double{metric[6]};
                for (int axis = 0; axis < 3; ++axis) {
                    const auto a = static_cast<std::size_t>(axis);
                    row(axis, k) = k == 0 ? metric[a] : 8.f * Tests::Uniform(generator);
                    squared +=
                        double{metric[3 + a]} * square(double{row(axis, k)} - double{metric[a]});
                }
                problem.gains.push_back(1.0 / std::sqrt(squared));
            }
            ExpectUnitEnergyGains(problem, round, [&](float* gains) {
                tested_.gainsByDistance(problem.rows.data(), problem.stride, count, metric.data(),
                                        gains);
            });
            // 2. by angle; one loudspeaker is exactly opposite
            const float exponents[] = {1.f, 0.f, 0.5f, 0.01f};
            const float exponent =
                round < 4 ? exponents[round] : std::fabs(Tests::Uniform(generator));
            const float source = 3.f * Tests::Uniform(generator);
            const float x = std::cos(source), y = std::sin(source);
            problem.gains.clear();
            for (int k = 0; k < count; ++k) {
                const float angle = 3.f * Tests::Uniform(generator);
                const bool isOpposite = k == 1;
                row(0, k) = isOpposite ? -x : std::cos(angle);
                row(1, k) = isOpposite ? -y : std::sin(angle);
                row(2, k) = 0.1f + std::fabs(Tests::Uniform(generator));
                const double base = 0.5 * (square(double{row(0, k)} + double{x}) +
                                           square(double{row(1, k)} + double{y}));
                const double resolved = base < double{kCosineResolution} ? 0.0 : base;
                problem.gains.push_back(std::pow(resolved, double{exponent}) * double{row(2, k)});
            }
            ExpectUnitEnergyGains(problem, round, [&](float* gains) {
                EXPECT_TRUE(tested_.gainsByAngle(problem.rows.data(), problem.stride, count, x, y,
                                                 exponent, gains));
            });
        }
    }
    const std::vector<float> opposite(48, -1.f);
    float gain = 1.f;
    EXPECT_FALSE(tested_.gainsByAngle(opposite.data(), 16, 1, 1.f, 1.f, 0.5f, &gain));
    EXPECT_EQ(gain, 0.f);
}

INSTANTIATE_FOR_ALL_SETS(SpeakerKernelsOf);

}  // namespace
}  // namespace tav
