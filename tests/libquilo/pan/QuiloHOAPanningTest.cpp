// SPDX-License-Identifier: MIT
#include "pan/QuiloHOAPanning.h"

#include "libquilo/pan/PanPlayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <tuple>

namespace Quilo {
namespace {

using Normalization = tav::SphericalHarmonic::Normalization;
using Tests::PanPlayer;

TEST(HOAPanning, LimitsItsOrderToTheOutputs) {
    HOA2DPanning pan(1, 7);
    EXPECT_EQ(pan.GetOrder(), 3u);
    pan.SetOrder(0);
    EXPECT_EQ(pan.GetOrder(), 0u);
    pan.SetSourcePosition(0, {1, 2, 0}, true, false);
    const auto gains = PanPlayer(pan).SteadyGains(0);
    EXPECT_EQ(gains, (std::vector<double>{1, 0, 0, 0, 0, 0, 0}));
    pan.SetOrder(9);
    EXPECT_EQ(pan.GetOrder(), 3u);
    HOA3DPanning notWhole(2, 8);  // no order has eight channels
    notWhole.SetNormalization(Normalization::FuMa);
    const auto w = PanPlayer(notWhole).SteadyGains(1);
    EXPECT_NEAR(std::accumulate(w.begin(), w.end(), 0.0), std::sqrt(0.5), 1e-6);
}

TEST(HOAPanning, KeepsToTheNormalizationsOfItsDimension) {
    for (const auto& [type, refused, byDefault] :
         {std::tuple("hoa2d", Normalization::SN3D, Normalization::SN2D),
          std::tuple("hoa3d", Normalization::N2D, Normalization::SN3D)}) {
        const auto pan = Pan::Create(1, 9, type, "direct");
        for (const Normalization unknown : {refused, static_cast<Normalization>(8)}) {
            EXPECT_EQ(pan->GetNormalization(), byDefault);
            pan->SetNormalization(Normalization::MaxN);
            EXPECT_EQ(pan->GetNormalization(), Normalization::MaxN);
            pan->SetNormalization(unknown);
        }
        EXPECT_EQ(pan->GetNormalization(), byDefault);
        EXPECT_EQ(pan->IsPlanar(), byDefault == Normalization::SN2D);
    }
}

}  // namespace
}  // namespace Quilo
