// SPDX-License-Identifier: MIT
#include "pan/QuiloHoaDiffusePanning.h"

#include "libquilo/RingsAndGains.h"
#include "libquilo/pan/PanPlayer.h"
#include "reference/PlainFourier.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quilo {
namespace {

using Tests::Impulse;
using Tests::PanPlayer;
using Normalization = tav::SphericalHarmonic::Normalization;

std::vector<double> ChannelPowers(HoaDiffusePanning& pan) {
    PanPlayer player(pan);
    player.Play(9600, Tests::Silence);  // glides end
    std::vector<double> powers;
    for (const auto& response : player.Play(24000, Impulse)) {
        powers.push_back(Tests::Energy(response));
    }
    return powers;
}

double InDecibels(double power) { return 10.0 * std::log10(power); }

/// Mean square of a channel of order n and degree m over all directions, by its definition.
struct Convention {
    Normalization normalization;
    unsigned dimension;
    double (*power)(int n, int m);
};
constexpr Convention kConventions[] = {
    {Normalization::N3D, 3, [](int, int) { return 1.0; }},
    {Normalization::SN3D, 3, [](int n, int) { return 1.0 / (2.0 * n + 1.0); }},
    {Normalization::FuMa, 3,  // W is 3 dB down; the others reach 1 at their maximum
     [](int n, int m) {
         return n == 0 ? 0.5 : n == 1 ? 1.0 / 3.0 : m == 0 ? 0.2 : 4.0 / 15.0;
     }},
    {Normalization::N2D, 2, [](int, int) { return 1.0; }},
    {Normalization::SN2D, 2, [](int n, int) { return n == 0 ? 1.0 : 0.5; }},
};

TEST(HoaDiffusePanning, ChannelsHaveThePowerOfAFieldFromEverywhere) {
    for (const Convention& convention : kConventions) {
        const unsigned count = convention.dimension == 3 ? 9 : 7;
        HoaDiffusePanning pan(1, count, convention.dimension);
        pan.SetNormalization(convention.normalization);
        const std::vector<double> powers = ChannelPowers(pan);
        for (unsigned c = 0; c < count; ++c) {
            const auto degree = tav::SphericalHarmonic::FromChannelIndex(
                c, convention.dimension, tav::SphericalHarmonic::Sorting::ACN);
            const double expected = convention.power(static_cast<int>(degree.n), degree.m);
            EXPECT_NEAR(InDecibels(powers[c] / expected), 0.0, 0.02) << count << " channel " << c;
        }
    }
}

TEST(HoaDiffusePanning, OrderAndNormalizationAreThoseOfTheDimension) {
    HoaDiffusePanning3D pan(1, 16);
    pan.SetNormalization(Normalization::N2D);
    EXPECT_EQ(pan.GetNormalization(), Normalization::SN3D);
    pan.SetOrder(0);
    const std::vector<double> powers = ChannelPowers(pan);
    EXPECT_NEAR(powers[0], 1.0, 0.001);
    for (unsigned c = 1; c < 16; ++c) EXPECT_EQ(powers[c], 0.0);
    pan.SetOrder(1);
    EXPECT_NEAR(ChannelPowers(pan)[3], 1.0 / 3.0, 0.001);
    pan.SetInterpolationTime(0.f);
    pan.SetOrder(0);  // at once
    EXPECT_EQ(Tests::Energy(PanPlayer(pan).Play(4800, Impulse)[3]), 0.0);
    HoaDiffusePanning2D mono(2, 1);  // order 0: the sum of the sources as it is
    PanPlayer player(mono);
    EXPECT_EQ(player.Play(64, Impulse)[0][0], 2.0);
}

// The tone moves by 0.013 a sample, and no gain is above 1.
TEST(HoaPanners, OrdersComeAndGoWithoutAClick) {
    const auto tone = Tests::Cosine(100.0);
    for (const auto& [type, subtype] :
         {std::pair("hoa3d", "direct"), {"hoa3d", "diffuse"}, {"nfchoa3d", "direct"}}) {
        const auto pan = Pan::Create(1, 16, type, subtype);
        pan->SetSourcePosition(0, {1.f, 2.f, 1.5f}, true, true);
        PanPlayer player(*pan);
        PanPlayer::Audio before = player.Play(9600, tone);
        for (const unsigned order : {0u, 3u, 1u}) {
            pan->SetOrder(order);
            const PanPlayer::Audio after = player.Play(9600, tone);
            for (std::size_t c = 0; c < 16; ++c) {
                std::vector<double> joined = after[c];
                joined.insert(joined.begin(), before[c].back());
                EXPECT_LT(Tests::LargestStep(joined), 0.016) << type << subtype << order << c;
            }
            before = after;
        }
    }
}

}  // namespace
}  // namespace Quilo
