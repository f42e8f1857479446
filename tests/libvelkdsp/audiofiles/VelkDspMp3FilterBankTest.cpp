// SPDX-License-Identifier: MIT
// Forward transforms, straight from their definitions: what they take apart comes back.
#include "audiofiles/VelkDspMp3FilterBank.h"

#include "audiofiles/VelkDspMp3Window.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr double kPi = std::numbers::pi;

/// Lines of a block of 36 samples whose windows have the shape of a block type.
std::vector<double> ForwardMdct(const double* samples, unsigned type) {
    std::vector<double> lines(18);
    if (type == 2) {
        for (std::size_t k = 0; k < 18; ++k) {
            const std::size_t window = k % 3;
            for (std::size_t i = 0; i < 12; ++i) {
                const auto n = static_cast<double>(i), line = static_cast<double>(k / 3);
                lines[k] += samples[6 + 6 * window + i] * std::sin(kPi / 12 * (n + 0.5)) *
                            std::cos(kPi / 24 * (2 * n + 7) * (2 * line + 1)) / 3;
            }
        }
        return lines;
    }
    const double slopes[4][2] = {{18, 18}, {18, 6}, {0, 0}, {6, 18}};  // lengths up and down
    const auto up = [&](double n, double length) {
        const double place = n - (18 - length) / 2;
        return place < 0 ? 0 : place >= length ? 1 : std::sin(kPi / (2 * length) * (place + 0.5));
    };
    for (std::size_t k = 0; k < 18; ++k) {
        for (std::size_t i = 0; i < 36; ++i) {
            const auto n = static_cast<double>(i), line = static_cast<double>(k);
            const double window = i < 18 ? up(n, slopes[type][0]) : up(35 - n, slopes[type][1]);
            lines[k] +=
                samples[i] * window * std::cos(kPi / 72 * (2 * n + 19) * (2 * line + 1)) / 9;
        }
    }
    return lines;
}

TEST(Mp3Hybrid, GivesBackWhatTheForwardTransformTookApart) {
    const std::vector<unsigned> types = {0, 0, 1, 2, 2, 3, 0, 1, 2, 3, 0};
    const Tests::Signal noise = Tests::Noise(18 * (types.size() + 1), 1);
    const std::vector<double> samples(noise.begin(), noise.end());
    constexpr std::size_t kSubband = 4;  // even: not upside down
    tav::Mp3Hybrid hybrid;
    for (std::size_t block = 0; block < types.size(); ++block) {
        const auto lines = ForwardMdct(samples.data() + 18 * block, types[block]);
        tav::Mp3SubbandRows rows{}, slots{};
        for (std::size_t k = 0; k < 18; ++k) rows[32 * k + kSubband] = static_cast<float>(lines[k]);
        hybrid.Process(rows, kSubband + 1, types[block], false, slots);
        for (std::size_t t = 0; t < 18 && block > 0; ++t) {
            ASSERT_NEAR(slots[32 * t + kSubband], samples[18 * block + t], 2e-6) << block;
            ASSERT_EQ(slots[32 * t + kSubband + 8], 0.f);
        }
    }
}

TEST(Mp3Synthesis, GivesBackWhatTheAnalysisTookApart) {
    constexpr std::size_t kDelay = 481;  // of both filter banks
    const Tests::Signal noise = Tests::Noise(576 * 8, 2);
    tav::Mp3Synthesis synthesis;
    std::vector<float> back(noise.size());
    for (std::size_t granule = 0; granule < 8; ++granule) {
        tav::Mp3SubbandRows slots{};
        for (std::size_t t = 0; t < 18; ++t) {
            const std::size_t newest = 576 * granule + 32 * t + 31;
            for (std::size_t k = 0; k < 32; ++k) {
                double sum = 0;
                for (std::size_t n = 0; n < std::min<std::size_t>(512, newest + 1); ++n) {
                    // The analysis window is that of the synthesis, 32 times lower; its prototype
                    // has no signs of its own.
                    const double sign = n / 64 % 2 == 0 ? 1 : -1;
                    const double angle =
                        (2 * static_cast<double>(k) + 1) * (static_cast<double>(n) - 16) * kPi / 64;
                    sum += sign * static_cast<double>(tav::Mp3WindowValue(n)) / 32 *
                           static_cast<double>(noise[newest - n]) * std::cos(angle);
                }
                slots[32 * t + k] = static_cast<float>(sum);
            }
        }
        synthesis.Process(slots, back.data() + 576 * granule);
    }
    // The standard's filter bank gives back what it took apart only nearly: errors reach 1.1e-4.
    for (std::size_t k = 600; k < back.size(); ++k) {
        ASSERT_NEAR(back[k], noise[k - kDelay], 2e-4) << k;
    }
}

}  // namespace
