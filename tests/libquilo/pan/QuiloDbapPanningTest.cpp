// SPDX-License-Identifier: MIT
// What the panners without triangulation do with their settings, heard in their outputs.
#include "pan/QuiloDbapPanning.h"

#include "libquilo/RingsAndGains.h"
#include "libquilo/pan/PanPlayer.h"
#include "pan/QuiloPanDefaults.h"
#include "pan/QuiloRecursivePanning.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Quilo {
namespace {

using tav::CartesianVector;
using Tests::Energy;
using Tests::PanPlayer;
using Gains = std::vector<double>;

/// One source 0.7 m to the front right, in the default layout.
template <class Panner = Pan>
std::unique_ptr<Panner> Make(const char* type, unsigned numOutputs = 6) {
    std::unique_ptr<Pan> pan = Tests::OnDefaultSpeakers(1, numOutputs, type);
    pan->SetSourcePosition(0, {0.5f, 0.5f, 0.f}, true, false);
    EXPECT_NE(dynamic_cast<Panner*>(pan.get()), nullptr) << type;
    return std::unique_ptr<Panner>(dynamic_cast<Panner*>(pan.release()));
}

Gains GainsOf(Pan& pan) { return PanPlayer(pan, 8000.f).SteadyGains(0); }

Gains GainsAt(Pan& pan, const CartesianVector& p) {
    pan.SetSourcePosition(0, p, true, false);
    return GainsOf(pan);
}

template <class Panner>
Panner& As(Pan& pan) {
    return dynamic_cast<Panner&>(pan);
}

/// A setting that is heard.
struct Setting {
    const char* name;
    const char* type;
    void (*set)(Pan&);
};

const float kDirections[] = {100.f, 0.f, 0.f};
const float kCorners[] = {-80.f, 10.f, 100.f, 190.f};

// clang-format off
const Setting kSettings[] = {
    {"DbapSpread",         "dbap",   [](Pan& p) { p.SetSpread(80.f); }},
    {"Dbap3DSourceSpread", "dbap3d", [](Pan& p) { p.SetSourceSpread(0, 80.f); }},
    {"DbapDirections",     "dbap",   [](Pan& p) { p.SetSpreadingMode("xyz"); p.SetSpreadsByDirection(kDirections); }},
    {"Dbap3DMode",         "dbap3d", [](Pan& p) { p.SetSpreadByDirection(0, kDirections); p.SetSpreadingMode("directional"); }},
    {"DbapMuteOutside",    "dbap",   [](Pan& p) { As<DbapPanning>(p).SetMuteOutside(true); p.SetSpeakersPositions({{9, 9, 0}, {9, 0, 0}, {8, 5, 0}}); }},
    {"SpcapSpread",        "spcap",  [](Pan& p) { p.SetSourceSpread(0, 70.f); }},
    {"KnnNeighbors",       "knn",    [](Pan& p) { p.SetNumNeighbors(0, 1); }},
    {"PanrCorners",        "panr",   [](Pan& p) { As<RecursivePanning>(p).SetCorners(kCorners); }},
    {"VdbapLayout",        "vdbap",  [](Pan& p) { p.SetSpeakersPositions({{0, 2, 0}, {2, 0, 0}, {-2, 0, 1}}); }},
};
// clang-format on

class PannerSetting : public testing::TestWithParam<Setting> {};

TEST_P(PannerSetting, Glides) {
    const auto pan = Make(GetParam().type);
    PanPlayer player(*pan, 48000.f);
    const Gains before = player.SteadyGains(0);
    GetParam().set(*pan);
    const auto audio = player.Play(9600, Tests::Ones);
    double change = 0.0;
    for (std::size_t o = 0; o < audio.size(); ++o) {
        EXPECT_NEAR(audio[o].front(), before[o], 2e-3);
        EXPECT_LE(Tests::LargestStep(audio[o]), 2e-3);  // at most 1 in 30 ms
        change += std::fabs(audio[o].back() - before[o]);
    }
    EXPECT_GT(change, 0.05);
}

INSTANTIATE_TEST_SUITE_P(Settings, PannerSetting, testing::ValuesIn(kSettings), Tests::kByName);

TEST(DbapPanning, PlaysTheLoudspeakerWhereTheSourceIs) {
    for (const char* type : {"dbap", "dbap3d", "vdbap", "knn"}) {
        const auto pan = Make(type);
        const auto layout = DefaultSpeakersFor(pan->GetType(), 6);
        for (std::size_t k = 0; k < 6; ++k) {
            const Gains gains = GainsAt(*pan, layout[k]);
            EXPECT_NEAR(Energy(gains), type == std::string("vdbap") ? gains[k] * gains[k] : 1.0,
                        1e-4);
            EXPECT_NEAR(gains[k], 1.0, 1e-4) << type;
        }
    }
}

TEST(DbapPanning2D, FadesOrMutesOutsideTheHull) {
    const auto pan = Make<DbapPanning>("dbap", 4);
    pan->SetSpeakersPositions({{-2, -2, 0}, {-2, 2, 0}, {2, 2, 0}, {2, -2, 0}});
    struct Row {
        CartesianVector source;
        double amplitude;
        bool isOutside;
    };
    const double corner = std::sqrt(8.0) + 1.0;
    for (const Row& row :
         {Row{{0, 0, 5}, 1, false}, Row{{2, 1, 0}, 1, false}, Row{{2.5f, 0, 0}, corner / 3.5, true},
          Row{{4, 4, 0}, corner / (std::sqrt(32.0) + 1.0), true},
          Row{{4, 4, 2}, corner / 7.0, true}}) {
        pan->SetMuteOutside(false);
        EXPECT_NEAR(std::sqrt(Energy(GainsAt(*pan, row.source))), row.amplitude, 1e-5);
        pan->SetMuteOutside(true);
        EXPECT_EQ(Energy(GainsOf(*pan)) == 0.0, row.isOutside);
    }
}

TEST(DbapPanning3D, MutesBeyondTheRootOfTheRadius) {
    const auto pan = Make<DbapPanning>("dbap3d", 6);
    auto layout = DefaultSpeakersFor(Pan::Type::Dbap3D, 6);
    for (auto& s : layout) s = {2.f * s.x, 2.f * s.y, 2.f * s.z};
    pan->SetSpeakersPositions(layout);
    EXPECT_NEAR(Energy(GainsAt(*pan, {0, 0, 1.5f})), 1.0, 1e-5);
    pan->SetMuteOutside(true);
    EXPECT_EQ(Energy(GainsOf(*pan)), 0.0);  // 1.5^2 > 2
    EXPECT_NEAR(Energy(GainsAt(*pan, {0, 0, 1.4f})), 1.0, 1e-5);
}

TEST(VDbapPanning, MixesTheGainsOfTwoPanners) {
    const auto mixed = Make("vdbap"), near = Make("dbap3d"), far = Make("vbap");
    for (const auto& [distance, weight] : {std::pair{0.f, 0.0},
                                           {0.65f, 0.0},
                                           {0.85f, 0.25},
                                           {1.f, 0.5},
                                           {1.15f, 0.75},
                                           {1.4f, 1.0}}) {
        const CartesianVector p = tav::FromNavigational(25.f, 35.f, distance);
        const Gains gains = GainsAt(*mixed, p), n = GainsAt(*near, p), f = GainsAt(*far, p);
        for (std::size_t k = 0; k < 6; ++k) {
            EXPECT_NEAR(gains[k], weight * f[k] + (1.0 - weight) * n[k], 2e-6) << distance;
        }
    }
}

TEST(RecursivePanning, TakesItsCornersFromTheLayoutUntilTheyAreSet) {
    const auto pan = Make<RecursivePanning>("panr", 4);
    const float ring[] = {-45.f, 45.f, 135.f, -135.f};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(pan->Corners()[i], ring[i], 1e-4f);
    const float two[] = {0.f, 90.f};
    pan->SetCorners(two);
    EXPECT_NEAR(GainsAt(*pan, {1, 0, 0})[1], 1.0, 1e-3);
    EXPECT_NEAR(pan->Corners()[2], 135.f, 1e-4f);
    // Coincident and unordered corners leave every azimuth finite.
    for (const float corners : {0.f, 360.f, -720.f}) {
        const float unordered[] = {corners, 10.f, corners, corners};
        pan->SetCorners(unordered);
        for (float azimuth = -180.f; azimuth < 180.f; azimuth += 0.5f) {
            EXPECT_NEAR(Energy(GainsAt(*pan, tav::FromNavigational(azimuth, 0, 1))), 1.0, 1e-5);
        }
    }
    pan->SetSpeakersPositions({{0, 1, 0}, {1, 0, 0}, {0, -1, 0}});
    EXPECT_EQ(Energy(GainsOf(*pan)), 0.0);
}

}  // namespace
}  // namespace Quilo
