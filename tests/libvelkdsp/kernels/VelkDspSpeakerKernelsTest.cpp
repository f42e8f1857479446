// SPDX-License-Identifier: MIT
// The scalar twin itself is measured by the tests of the laws that use these kernels.
#include "kernels/VelkDspSpeakerKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tav {
namespace {

class SpeakerKernelsOf : public Tests::KernelsOf<SpeakerKernels> {
protected:
    template <class Fill>
    void ExpectTheTwinsGains(int count, int start, Fill fill) {
        const std::vector<float> empty(static_cast<std::size_t>(count));
        Tests::Guarded<float> gains(start, empty), expected(0, empty);
        EXPECT_EQ(fill(tested_, gains.Data()), fill(plain_, expected.Data()));
        for (int k = 0; k < count; ++k) {
            // Some roundings of their own and those of a sum of up to 67 terms.
            const float twin = expected.Data()[k];
            ASSERT_NEAR(gains.Data()[k], twin, 4e-6f * twin) << k << " of " << count;
        }
    }
};

TEST_P(SpeakerKernelsOf, GiveTheGainsOfTheScalarTwin) {
    std::mt19937 generator(5);
    const auto share = [&] { return std::fabs(Tests::Uniform(generator)); };
    Tests::ForEveryLengthAndStart(Tests::kLongestRun, [&](int count, int start) {
        if (count == 0) return;
        const std::ptrdiff_t stride = (count + 15) / 16 * 16;
        std::vector<float> rows(static_cast<std::size_t>(3 * stride)), metric(7);
        for (float& number : rows) number = 8.f * Tests::Uniform(generator);
        for (float& number : metric) number = share();
        if (start == 0) metric[6] = 0.f;
        float *const x = rows.data(), *const y = x + stride, *const weights = y + stride;
        for (std::size_t axis = 0; axis < 3; ++axis) x[stride * int(axis)] = metric[axis];
        ExpectTheTwinsGains(count, start, [&](const SpeakerKernels& kernels, float* gains) {
            kernels.gainsByDistance(x, stride, count, metric.data(), gains);
            return true;
        });
        const float source = 3.f * Tests::Uniform(generator);
        const float exponent = start < 3 ? 0.5f * static_cast<float>(start) : share();
        for (int k = 0; k < count; ++k) {
            const float angle = 3.f * Tests::Uniform(generator);
            x[k] = k == 1 ? -std::cos(source) : std::cos(angle);  // one is exactly opposite
            y[k] = k == 1 ? -std::sin(source) : std::sin(angle);
            weights[k] = 0.1f + share();
        }
        ExpectTheTwinsGains(count, start, [&](const SpeakerKernels& kernels, float* gains) {
            return kernels.gainsByAngle(x, stride, count, std::cos(source), std::sin(source),
                                        exponent, gains);
        });
    });
    const std::vector<float> opposite(48, -1.f);
    float gain = 1.f;
    EXPECT_FALSE(tested_.gainsByAngle(opposite.data(), 16, 1, 1.f, 1.f, 0.5f, &gain));
    EXPECT_EQ(gain, 0.f);
}

INSTANTIATE_FOR_ALL_SETS(SpeakerKernelsOf);

}  // namespace
}  // namespace tav
