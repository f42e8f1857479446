// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSampleKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace tav {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class SampleKernelsOf : public Tests::KernelsOf<SampleKernels> {};

TEST_P(SampleKernelsOf, GiveTheBitsOfTheScalarTwin) {
    constexpr double kSamples[] = {
        0.3,      -0.0,       kNaN,       -kInfinity, -1e38,
        1e300,    1e6,        -1e-30,     9e-31,      1e-30 * (1.0 - 1e-15),
        -2e-30,   1.000001e6, 1e6 + 1e-9, 4.9e-324,   0x1p-24,
        kInfinity};
    const auto compare = [&](int start, const std::vector<double>& host) {
        const int n = static_cast<int>(std::ssize(host));
        const std::vector<float> empty(host.size(), 7.f);
        Tests::Guarded<float> own(start, empty), plainOwn(0, empty);
        Tests::Guarded<double> from(start % 8, host);
        tested_.fromHost(from.Data(), own.Data(), n);
        plain_.fromHost(host.data(), plainOwn.Data(), n);
        for (int k = 0; k < n; ++k) {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(own.Data()[k]),
                      std::bit_cast<std::uint32_t>(plainOwn.Data()[k]))
                << host[static_cast<std::size_t>(k)];
        }
        // What the blocks make of it may be anything.
        for (int k = 0; k < n; ++k)
            own.Data()[k] = plainOwn.Data()[k] =
                static_cast<float>(host[static_cast<std::size_t>(k)]);
        Tests::Guarded<double> to(start % 8, host), plainTo(0, host);
        tested_.drainToHost(own.Data(), to.Data(), n);
        plain_.drainToHost(plainOwn.Data(), plainTo.Data(), n);
        for (int k = 0; k < n; ++k) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(to.Data()[k]),
                      std::bit_cast<std::uint64_t>(plainTo.Data()[k]))
                << host[static_cast<std::size_t>(k)];
        }
        EXPECT_EQ(own.Values(), std::vector<float>(host.size()));
        EXPECT_EQ(plainOwn.Values(), own.Values());
    };
    Tests::ForEveryLengthAndStart(Tests::kLongestRun, [&](int n, int start) {
        std::vector<double> host;
        for (int k = 0; k < n; ++k) host.push_back(kSamples[(k + start) % std::ssize(kSamples)]);
        compare(start, host);
        // One special sample among ordinary ones.
        host.assign(host.size(), -0.25);
        if (n > 0)
            host[static_cast<std::size_t>(start * 7 % n)] =
                kSamples[(n + start) % std::ssize(kSamples)];
        compare(start, host);
    });
}

INSTANTIATE_FOR_ALL_SETS(SampleKernelsOf);

}  // namespace
}  // namespace tav
