// SPDX-License-Identifier: MIT
#include "laws/QuiloVbapLaw.h"

#include "libquilo/RingsAndGains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace Quilo {
namespace {

using Tests::At;
using Tests::Energy;

enum class Norm { Amplitude, Intensity };

std::vector<float> Gains(const SpeakerRing& ring,
                         std::size_t count,
                         const tav::CartesianVector& source,
                         Norm norm = Norm::Amplitude) {
    std::vector<float> gains(count, 9.f);
    Vbap2DGains(ring, source, gains);
    norm == Norm::Amplitude ? NormaliseAmplitude2D(gains) : NormaliseIntensity(gains);
    return gains;
}

// On a ring wide enough to have no gap of a half turn: energy, direction, exactness.
TEST(Vbap2DGains, PointAtTheSourceOnAnyRing) {
    std::mt19937 random(20011);
    std::uniform_real_distribution<float> jitter(-15.f, 15.f), distance(0.3f, 4.f);
    for (int round = 0; round < 200; ++round) {
        std::vector<float> azimuths;
        for (float azimuth = -160.f; azimuth < 180.f; azimuth += 60.f) {
            azimuths.push_back(azimuth + jitter(random));
        }
        std::ranges::shuffle(azimuths, random);
        const auto speakers = At(azimuths, distance(random));
        const SpeakerRing ring(speakers, speakers.Size());
        const auto source = tav::FromNavigational(12.f * jitter(random), 30.f, distance(random));
        const auto gains = Gains(ring, speakers.Size(), source);
        double x = 0.0, y = 0.0;
        for (std::size_t o = 0; o < gains.size(); ++o) {
            x += static_cast<double>(gains[o] * speakers[o].x);
            y += static_cast<double>(gains[o] * speakers[o].y);
        }
        const double off = std::atan2(x, y) -
                           std::atan2(static_cast<double>(source.x), static_cast<double>(source.y));
        EXPECT_NEAR(std::sin(off), 0.0, 4e-6) << round;  // positions are rounded to a millionth
        EXPECT_GT(std::cos(off), 0.0);
        EXPECT_NEAR(Energy(gains), 1.0, 5e-7);
        for (std::size_t o = 0; o < gains.size(); ++o) {
            const auto on = Gains(ring, speakers.Size(), speakers[o], Norm::Intensity);
            EXPECT_NEAR(static_cast<double>(on[o]), 1.0, 1e-6);
        }
    }
}

TEST(Vbap2DGains, TurnIntensitiesIntoThePowersOfTheAmplitudes) {
    const SpeakerRing ring(At({-110.f, -30.f, 0.f, 30.f, 110.f}), 5);
    for (float azimuth = -180.f; azimuth < 180.f; azimuth += 0.7f) {
        const auto source = tav::FromNavigational(azimuth, 0.f, 1.f);
        const auto amplitude = Gains(ring, 5, source);
        const auto intensity = Gains(ring, 5, source, Norm::Intensity);
        ASSERT_NEAR(Energy(amplitude), 1.0, 5e-7) << azimuth;
        ASSERT_NEAR(Energy(intensity), 1.0, 5e-7) << azimuth;
        double sum = 0.0;
        for (const float g : amplitude) sum += static_cast<double>(g);
        for (std::size_t o = 0; o < 5; ++o) {
            const double power =
                static_cast<double>(intensity[o]) * static_cast<double>(intensity[o]);
            ASSERT_NEAR(power, static_cast<double>(amplitude[o]) / sum, 1e-6) << azimuth;
        }
    }
}

TEST(PlaneAzimuthDeg, IsNavigational) {
    EXPECT_NEAR(PlaneAzimuthDeg({-2.0, 0.0}), -90.0, 1e-5);
    EXPECT_NEAR(PlaneAzimuthDeg({0.0, 0.0}), 90.0, 1e-5);
}

// The slow search that the ring replaces: the first pair whose azimuths enclose the source's.
TEST(SpeakerRing, FindsTheFirstEnclosingPair) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> step(-18, 17);
    for (std::size_t count = 1; count < 40; ++count) {
        std::vector<float> azimuths(count);
        for (float& azimuth : azimuths) azimuth = 10.f * static_cast<float>(step(random));
        const auto speakers = At(azimuths);
        const SpeakerRing ring(speakers, count);
        std::vector<std::pair<double, std::uint32_t>> sorted;
        for (std::uint32_t i = 0; i < count; ++i) {
            sorted.emplace_back(PlaneAzimuthDeg({static_cast<double>(speakers[i].x),
                                                 static_cast<double>(speakers[i].y)}),
                                i);
        }
        std::ranges::stable_sort(sorted, {}, &std::pair<double, std::uint32_t>::first);
        std::vector<double> asked{-180.0, -175.0, 0.0, 3.0, 179.999};
        for (const auto& entry : sorted) asked.push_back(entry.first);
        for (const double azimuth : asked) {
            std::size_t p = 0;
            while (p + 1 < count &&
                   !(sorted[p].first <= azimuth && azimuth <= sorted[p + 1].first)) {
                ++p;
            }
            const SpeakerRing::Pair& pair = ring.PairAround(azimuth);
            EXPECT_EQ(pair.firstOutput, sorted[p].second) << count << " at " << azimuth;
            EXPECT_EQ(pair.secondOutput, sorted[(p + 1) % count].second);
        }
    }
}

// Deliberate: both loudspeakers sound when the source has no direction, or lies behind both.
TEST(VbapPairGains, NowhereMeansBoth) {
    const SpeakerPair front{{-1.0, 1.0}, {1.0, 1.0}};
    for (const PlanePoint source : {PlanePoint{0.0, 0.0}, PlanePoint{0.0, -3.0}}) {
        const PairGains g = VbapPairGains(front, source);
        EXPECT_EQ(g.first, 1.0);
        EXPECT_EQ(g.second, 1.0);
    }
}

// The squares of such gains have to fit 32 bits.
TEST(VbapPairGains, KeepTheRatioOfTheFarthestSource) {
    const SpeakerPair front{{-1.0, 1.0}, {1.0, 1.0}};
    const PairGains near = VbapPairGains(front, {1.0, 3.0}),
                    far = VbapPairGains(front, {1e30, 3e30});
    EXPECT_DOUBLE_EQ(far.first / far.second, near.first / near.second);
    EXPECT_LT(std::max(far.first, far.second), 1e16);
}

}  // namespace
}  // namespace Quilo
