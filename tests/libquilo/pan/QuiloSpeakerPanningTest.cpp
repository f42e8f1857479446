// SPDX-License-Identifier: MIT
// What the horizontal loudspeaker panners do with a layout, heard in their outputs.
#include "libquilo/RingsAndGains.h"
#include "libquilo/pan/PanPlayer.h"
#include "support/ByName.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Quilo {
namespace {

using Tests::At;
using Tests::PanPlayer;
using Gains = std::vector<double>;

/// Gains of one source at an azimuth, in a panner that already has its layout.
Gains GainsAt(Pan& pan, float azimuthDeg) {
    PanPlayer player(pan, 8000.f);
    pan.SetSourcePosition(0, tav::FromNavigational(azimuthDeg, 0.f, 1.f), true, false);
    return player.SteadyGains(0);
}

class LayoutPanners : public testing::TestWithParam<const char*> {
protected:
    std::unique_ptr<Pan> Make(unsigned outputs) { return Pan::Create(1, outputs, GetParam(), ""); }
};

TEST_P(LayoutPanners, AreSilentBeforeALayoutAndUseWhatTheyGet) {
    const auto pan = Make(3);
    EXPECT_EQ(GainsAt(*pan, 20.f), (Gains{0, 0, 0}));
    // Two of three: a pair in front; the third output has no loudspeaker.
    pan->SetSpeakersPositions(At({-30, 30}));
    Gains gains = GainsAt(*pan, 0.f);
    EXPECT_NEAR(gains[0], std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(gains[1], std::sqrt(0.5), 1e-6);
    EXPECT_EQ(gains[2], 0.0);
    // Four for three: the fourth is ignored. The source glides by itself.
    pan->SetSpeakersPositions(At({-120, 0, 120, 10}));
    EXPECT_NEAR(PanPlayer(*pan, 8000.f).SteadyGains(0)[1], 1.0, 1e-6);
    // A layout with a number missing changes nothing; none at all is silence.
    pan->SetSpeakersPositions({{0, std::numeric_limits<float>::quiet_NaN(), 0}, {1, 0, 0}});
    EXPECT_NEAR(PanPlayer(*pan, 8000.f).SteadyGains(0)[1], 1.0, 1e-6);
    pan->SetSpeakersPositions({});
    EXPECT_EQ(GainsAt(*pan, 0.f), (Gains{0, 0, 0}));
}

TEST_P(LayoutPanners, JumpWhereTheyAreToldTo) {
    const auto pan = Make(3);
    pan->SetSpeakersPositions(At({-30, 30, 180}));
    PanPlayer player(*pan, 8000.f);
    for (const float azimuth : {-30.f, 30.f, -30.f}) {
        pan->SetSourcesPositions(At({azimuth}), true);
        EXPECT_NEAR(player.Play(64, Tests::Ones)[azimuth < 0.f ? 0 : 1].front(), 1.0, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(Types,
                         LayoutPanners,
                         testing::Values("angular", "vbap2d", "vbip2d"),
                         Tests::kByName);

TEST(Vbap2DPanning, PansOverALayoutThatItReports) {
    for (const char* type : {"vbap2d", "subwoofers"}) {
        const auto pan = Pan::Create(1, 3, type, "direct");
        try {
            pan->SetSpeakersPositions(At({-30, 0, 30}));
            ADD_FAILURE() << "a layout in front only was accepted";
        } catch (const tav::Exception& fault) {
            EXPECT_EQ(fault.Message(), "reference position must be inside the speakers setup!");
            EXPECT_EQ(fault.File(), "libquilo/src/pan/QuiloVbap2DPanning");
            EXPECT_EQ(fault.Line(), 282);
        }
        EXPECT_NEAR(GainsAt(*pan, 30.f)[2], 1.0, 1e-5) << type;
        EXPECT_NEAR(GainsAt(*pan, -15.f)[0], std::sqrt(0.5), 1e-5) << type;
        EXPECT_NO_THROW(pan->SetSpeakersPositions(At({-30, 30})));  // two surround nobody
        // The listener on the edge is inside.
        EXPECT_NO_THROW(pan->SetSpeakersPositions({{-1, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    }
}

}  // namespace
}  // namespace Quilo
