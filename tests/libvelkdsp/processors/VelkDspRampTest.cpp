// SPDX-License-Identifier: MIT
#include "processors/VelkDspRamp.h"

#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace tav {
namespace {

std::vector<float> Next(Ramp& ramp, std::size_t count) {
    std::vector<float> values(count);
    ramp.Fill(values);
    return values;
}

TEST(Ramp, EndsOnTheTargetBitForBitAndLiesOnTheLine) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> mantissa(-1.f, 1.f);
    std::uniform_int_distribution<int> exponent(-40, 40);
    std::uniform_int_distribution<std::uint32_t> length(1, 300);
    std::vector<float> values(320);
    unsigned violations = 0;
    for (int round = 0; round < 100000; ++round) {
        const float start = std::ldexp(mantissa(random), exponent(random));
        const float target = std::ldexp(mantissa(random), exponent(random));
        const std::uint32_t n = length(random);
        Ramp ramp(start);
        ramp.SetOverSamples(target, n);
        violations += Tests::ViolationsOf([&] {
            ramp.Fill({values.data(), n / 2});
            ramp.Fill({values.data() + n / 2, values.size() - n / 2});
        });
        for (std::size_t k = n - 1; k < values.size(); ++k) ASSERT_EQ(values[k], target);
        const double distance = static_cast<double>(target) - static_cast<double>(start);
        const std::uint32_t k = length(random) % n;
        const double onLine = static_cast<double>(start) + (k + 1.0) * distance / n;
        ASSERT_NEAR(values[k], onLine,
                    1e-7 * static_cast<double>(std::abs(start) + std::abs(target)));
        ASSERT_TRUE(ramp.IsConstant());
    }
    EXPECT_EQ(violations, 0u);
}

TEST(Ramp, CountsTruncatedSamplesAndJumpsBelowOne) {
    Ramp ramp;
    ramp.SetSampleRate(44100.f);
    ramp.Set(1.f, 30.f);  // 1323 samples
    EXPECT_LT(Next(ramp, 1322).back(), 1.f);
    EXPECT_EQ(Next(ramp, 1).back(), 1.f);
    ramp.Set(5.f, 0.0226f);  // 0.997 samples
    EXPECT_TRUE(ramp.IsConstant());
    EXPECT_EQ(Next(ramp, 1), std::vector<float>{5.f});
    for (const float noTime : {-1.f, 0.f, std::numeric_limits<float>::quiet_NaN()}) {
        ramp.Set(noTime == 0.f ? 1.f : 2.f, noTime);
        EXPECT_TRUE(ramp.IsConstant()) << noTime;
    }
    ramp.Set(std::numeric_limits<float>::infinity(), 10.f);
    EXPECT_EQ(ramp.Target(), 2.f) << "a target that is not finite is refused";
}

TEST(Ramp, RetargetsFromThePresentValueWithTheFullLength) {
    Ramp ramp(0.f);
    ramp.SetOverSamples(8.f, 4);
    EXPECT_EQ(Next(ramp, 2), (std::vector<float>{2.f, 4.f}));
    ramp.SetOverSamples(0.f, 4);
    EXPECT_EQ(ramp.Value(), 4.f);
    ramp.Fill({});
    ramp.Skip(1);
    EXPECT_EQ(Next(ramp, 5), (std::vector<float>{2.f, 1.f, 0.f, 0.f, 0.f}));
    ramp.SetOverSamples(0.f, 4);
    EXPECT_TRUE(ramp.IsConstant()) << "it is there already";
}

TEST(Ramp, KeepsTheSecondsLeftWhenTheRateChanges) {
    Ramp ramp(0.f);
    ramp.SetSampleRate(1000.f);
    ramp.Set(10.f, 10.f);
    Next(ramp, 6);
    ramp.SetSampleRate(2000.f);  // 4 samples left become 8
    EXPECT_EQ(Next(ramp, 2), (std::vector<float>{6.5f, 7.f}));
    ramp.SetSampleRate(500.f);  // 6 left become 1
    EXPECT_EQ(Next(ramp, 1), std::vector<float>{10.f});
}

}  // namespace
}  // namespace tav
