// SPDX-License-Identifier: MIT
#include "pan/QuiloHOAPanning.h"

#include "libquilo/pan/PanPlayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace Quilo {
namespace {

using Mode = tav::HoaEncodingVector::Mode;
using Normalization = tav::SphericalHarmonic::Normalization;
using Tests::PanPlayer;

TEST(HOAPanning, PutsTheFrontIntoYAndTheRightIntoX) {
    HOA2DPanning flat(1, 3);
    HOA3DPanning pan(1, 4);
    PanPlayer flatPlayer(flat), player(pan);
    struct Row {
        tav::CartesianVector source;
        std::vector<double> flatGains, gains;
    };
    for (const Row& row :
         {Row{{0, 2, 0}, {1, 1, 0}, {1, 1, 0, 0}}, Row{{3, 0, 0}, {1, 0, 1}, {1, 0, 0, 1}},
          Row{{0, 0, 4}, {1, 0, 0}, {1, 0, 1, 0}}}) {
        flat.SetSourcePosition(0, row.source, true, true);
        pan.SetSourcePosition(0, row.source, true, true);
        if (row.source.z == 0.f) {
            EXPECT_EQ(flatPlayer.SteadyGains(0), row.flatGains);
        }
        EXPECT_EQ(player.SteadyGains(0), row.gains);
    }
}

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

struct Dimension {
    const char* type;
    unsigned numOutputs;
    Normalization refused, byDefault;
    const char* byDefaultName;
};

TEST(HOAPanning, DescribesItselfAndKeepsToItsDimension) {
    const Dimension dimensions[] = {{"hoa2d", 9, Normalization::SN3D, Normalization::SN2D, "SN2D"},
                                    {"hoa3d", 25, Normalization::N2D, Normalization::SN3D, "SN3D"}};
    for (const Dimension& d : dimensions) {
        const auto pan = Pan::Create(1, d.numOutputs, d.type, "direct");
        EXPECT_EQ(pan->GetNormalization(), d.byDefault);
        pan->SetNormalization(Normalization::MaxN);
        EXPECT_EQ(pan->GetNormalization(), Normalization::MaxN);
        pan->SetNormalization(d.refused);
        EXPECT_EQ(pan->GetNormalization(), d.byDefault);
        pan->SetNormalization(static_cast<Normalization>(8));
        EXPECT_EQ(pan->GetNormalization(), d.byDefault);
        pan->SetComputationMode("fast");
        pan->SetComputationMode("faster");
        EXPECT_EQ(pan->GetComputationMode(), Mode::Fast);
        std::vector<std::string> lines;
        pan->Dump(lines);
        const std::vector<std::string> expected{std::string("panning type : ") + d.type,
                                                "panning subtype : direct",
                                                "order : 4",
                                                std::string("encoding norm : ") + d.byDefaultName,
                                                "nfc compensation : false",
                                                "nfc high pass : false",
                                                "nfc speakers radius : 1 m",
                                                "computation mode : fast"};
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(pan->OutputLabel(1), "output #2 : Y(1,-1) (Y)");
        EXPECT_EQ(pan->OutputLabel(d.numOutputs - 1),
                  "output #" + std::to_string(d.numOutputs) + " : Y(4,4)");
        EXPECT_EQ(pan->OutputLabel(d.numOutputs), "dumpout");
        EXPECT_EQ(pan->IsPlanar(), d.numOutputs == 9);
    }
    const auto bformat = Pan::Create(1, 4, "bformat", "direct");
    EXPECT_EQ(bformat->OutputLabel(3), "output #4 : Z");
    EXPECT_EQ(bformat->OutputLabel(4), "dumpout");
}

}  // namespace
}  // namespace Quilo
