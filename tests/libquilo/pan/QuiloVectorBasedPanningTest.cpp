// SPDX-License-Identifier: MIT
// Panning over loudspeakers in space, heard in the outputs and read in the report.
#include "libquilo/RingsAndGains.h"
#include "libquilo/pan/PanPlayer.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace Quilo {
namespace {

using Gains = std::vector<double>;
using tav::CartesianArray;
using tav::FromNavigational;
using Tests::Energy;

constexpr float kRateHz = 8000.f;

/// Eight loudspeakers round the listener, and a ninth.
CartesianArray RingAnd(const tav::CartesianVector& ninth) {
    CartesianArray layout = Tests::At({0, 45, 90, 135, 180, 225, 270, 315, 0});
    layout[8] = ninth;
    return layout;
}

CartesianArray Octahedron() {
    return {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
}

class VectorBasedPanners : public testing::TestWithParam<const char*> {
protected:
    static std::unique_ptr<Pan> Make(unsigned inputs, unsigned outputs) {
        return Pan::Create(inputs, outputs, GetParam(), "");
    }
    static Gains GainsAt(Pan& pan, const tav::CartesianVector& position) {
        pan.SetSourcePosition(0, position, true, false);
        return Tests::PanPlayer(pan, kRateHz).SteadyGains(0);
    }
};

TEST_P(VectorBasedPanners, AreSilentOnFlatLayouts) {
    const auto pan = Make(1, 9);
    const tav::CartesianVector source{0.1f, 1.f, 0.01f};
    EXPECT_EQ(Energy(GainsAt(*pan, source)), 0.0);  // no layout at all
    for (const float elevationDeg : {0.f, 0.99f, -60.f}) {
        pan->SetSpeakersPositions(RingAnd(FromNavigational(20.f, elevationDeg, 1.f)));
        EXPECT_EQ(Energy(GainsAt(*pan, source)), 0.0) << elevationDeg;
    }
    pan->SetSpeakersPositions(RingAnd(FromNavigational(20.f, 1.01f, 3.f)));
    EXPECT_NEAR(Energy(GainsAt(*pan, source)), 1.0, 1e-6);
}

TEST_P(VectorBasedPanners, KeepTheLayoutThatWasBegunLast) {
    const auto pan = Make(1, 6);
    const auto stranger = Make(1, 6);
    CartesianArray turned = Octahedron();
    std::swap(turned[4], turned[5]);
    auto first = pan->PrepareSpeakers(Octahedron());
    auto second = pan->PrepareSpeakers(turned);
    EXPECT_EQ(Energy(GainsAt(*pan, {0, 0, 1})), 0.0);  // nothing is installed yet
    pan->InstallSpeakers(std::move(second));
    const Gains newest{0, 0, 0, 0, 0, 1};
    EXPECT_EQ(GainsAt(*pan, {0, 0, 1}), newest);
    pan->InstallSpeakers(std::move(first));  // it took longer and was overtaken
    pan->InstallSpeakers(stranger->PrepareSpeakers(Octahedron()));
    pan->InstallSpeakers(pan->PrepareSpeakers({{1, 0, 0}, {0, NAN, 0}, {0, 0, 1}}));
    EXPECT_EQ(Tests::PanPlayer(*pan, kRateHz).SteadyGains(0), newest);
}

TEST_P(VectorBasedPanners, UseTheLoudspeakersThatHaveAnOutput) {
    const auto pan = Make(1, 4);
    CartesianArray layout{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    pan->SetSpeakersPositions(layout);
    EXPECT_EQ(GainsAt(*pan, {0, 0, 2}), (Gains{0, 0, 1, 0}));
    EXPECT_EQ(Energy(GainsAt(*pan, {-1, -1, -1})), 0.0);  // outside every triplet
    layout = Octahedron();
    std::swap(layout[3], layout[4]);
    pan->SetSpeakersPositions(layout);  // two too many
    EXPECT_EQ(GainsAt(*pan, {0, 0, 2}), (Gains{0, 0, 0, 1}));
}

TEST_P(VectorBasedPanners, AreNeverSilentByTheirDefaultLayout) {
    for (unsigned outputs = 3; outputs <= 64; ++outputs) {
        const auto pan = Tests::OnDefaultSpeakers(1, outputs, GetParam());
        EXPECT_NEAR(Energy(GainsAt(*pan, {0, 1, 0})), 1.0, 1e-5) << outputs;
    }
}

INSTANTIATE_TEST_SUITE_P(Types,
                         VectorBasedPanners,
                         testing::Values("vbap", "vbip"),
                         Tests::kByName);

TEST(VectorBasedPanning, DiffersByItsNormalisation) {
    // Raw gains 1 and 3: amplitude keeps their ratio, intensity the ratio of their energies.
    for (const auto& [type, ratio] : {std::pair("vbap", 3.0), {"vbip", std::sqrt(3.0)}}) {
        const auto pan = Pan::Create(1, 6, type, "");
        pan->SetSpeakersPositions(Octahedron());
        pan->SetSourcePosition(0, {1, 3, 0}, true, false);
        const Gains gains = Tests::PanPlayer(*pan, kRateHz).SteadyGains(0);
        EXPECT_NEAR(gains[2] / gains[0], ratio, 1e-6);
        EXPECT_FALSE(pan->IsPlanar());
    }
}

}  // namespace
}  // namespace Quilo
