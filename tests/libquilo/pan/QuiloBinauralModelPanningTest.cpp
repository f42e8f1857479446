// SPDX-License-Identifier: MIT
// Two ears by models: against the wave around a rigid sphere, symmetries and signals in motion.
#include "pan/QuiloBinauralModelPanning.h"

#include "laws/QuiloHeadShadow.h"
#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainSphere.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace Quilo {
namespace {

using Tests::PanPlayer;

constexpr double kDegree = std::numbers::pi / 180.0;

tav::CartesianVector Towards(double azimuthDeg, double elevationDeg = 0.0, float distance = 2.f) {
    return tav::FromNavigational(static_cast<float>(azimuthDeg), static_cast<float>(elevationDeg),
                                 distance);
}

double Decibels(double ratio) { return 20.0 * std::log10(ratio); }

/// The response of an ear at one frequency.
std::complex<double> At(const std::vector<double>& response, double hz, double rate) {
    std::complex<double> sum = 0.0;
    for (std::size_t k = 0; k < response.size(); ++k) {
        sum += response[k] *
               std::polar(1.0, -2.0 * std::numbers::pi * hz * static_cast<double>(k) / rate);
    }
    return sum;
}

/// The responses of both ears to a source that rests.
PanPlayer::Audio Responses(Pan& pan, float rate, const tav::CartesianVector& position) {
    PanPlayer player(pan, rate);
    pan.SetSourcePosition(0, position, true, true);
    pan.Reset();
    return player.Play(4096, Tests::Impulse);
}

TEST(BinauralPanningSphericalHeadModel, ShadowsAsARigidSphere) {
    for (const float rate : {44100.f, 192000.f}) {
        const auto pan = Pan::Create(1, 2, "binaural", "sphericalheadmodel");
        auto& head = dynamic_cast<BinauralPanning&>(*pan);
        head.SetItdModel("NoITD");  // what delays take away between samples is not asked here
        head.SetItdLatencyMode("nolatency");
        for (double angle = 0.0; angle <= 150.0; angle += 30.0) {
            const auto ears = Responses(*pan, rate, Towards(90.0 - angle));
            double squares = 0.0, count = 0.0;
            for (double hz = 100.0; hz <= 16000.0; hz *= 1.12, ++count) {
                const double sphere =
                    std::abs(Plain::SphereResponse(0.0875, 8.75, angle * kDegree, hz));
                const double ear = std::abs(At(ears[1], hz, static_cast<double>(rate)));
                squares += std::pow(Decibels(ear / sphere), 2);
            }
            EXPECT_LE(std::sqrt(squares / count), 1.2) << angle << " " << rate;
        }
    }
    EXPECT_FLOAT_EQ(HeadShadowAlpha(-1.f), 0.4f);  // no bright spot opposite to the source
}

TEST(BinauralPanningITD, DelaysAndWeighsAsItSays) {
    const auto pan = Pan::Create(1, 2, "binaural", "early");
    for (const auto& [azimuth, elevation] :
         {std::pair(0.0, 0.0), {30.0, 0.0}, {90.0, 0.0}, {135.0, 20.0}, {-70.0, -45.0}}) {
        const auto ears = Responses(*pan, 48000.f, Towards(azimuth, elevation));
        const auto left = At(ears[0], 500.0, 48000.0), right = At(ears[1], 500.0, 48000.0);
        const double lateral = std::sin(azimuth * kDegree) * std::cos(elevation * kDegree);
        const double ms = 0.0875 / 343.2 * 1000.0 * (std::asin(lateral) + lateral);
        EXPECT_NEAR(std::arg(right / left) / (2.0 * std::numbers::pi * 0.5), ms, 0.005) << azimuth;
        EXPECT_NEAR(std::norm(left) + std::norm(right), 2.0, 2e-3) << azimuth;
        EXPECT_NEAR(Decibels(std::abs(right / left)), 6.0 * lateral, 0.01) << azimuth;
        EXPECT_EQ(ears[0] == ears[1], azimuth == 0.0);
    }
}

TEST(BinauralPanningSnowmanModel, HearsTheTorso) {
    const auto pan = Pan::Create(1, 2, "binaural", "snowman");
    auto& snowman = dynamic_cast<BinauralPanningSnowmanModel&>(*pan);
    const auto level = [](const std::vector<double>& ear, double hz) {
        return std::abs(At(ear, hz, 48000.0));
    };
    // The reflection of a source overhead comes half a period late: the first notch of a comb.
    const auto firstNotch = [&] {
        const auto ears = Responses(*pan, 48000.f, Towards(0, 90));
        double notch = 300.0;
        for (double hz = 300.0; hz < 900.0; hz += 2.0) {
            if (level(ears[1], hz) < level(ears[1], notch)) notch = hz;
        }
        return notch;
    };
    // A search for the shortest path says 0.862 ms, which alone would be 580 Hz; the shadow of the
    // head, deeper for what comes from below, delays the reflection a little more.
    EXPECT_NEAR(firstNotch(), 537.0, 0.01 * 537.0);
    snowman.SetHeadRadius(0.001f);  // no shadow: up and down over the torso, 14.79 cm each way
    snowman.SetNeckHeight(0.1469f);
    EXPECT_NEAR(firstNotch(), 343.2 / (4.0 * 0.1479), 0.03 * 580.0);
    snowman.SetHeadRadius(0.0875f);
    snowman.SetNeckHeight(0.053f);
    const auto above = Responses(*pan, 48000.f, Towards(0, 90));
    // One straight below loses its treble, not its bass.
    const auto below = Responses(*pan, 48000.f, Towards(0, -90));
    EXPECT_GT(Decibels(level(above[1], 6000.0) / level(below[1], 6000.0)), 6.0);
    EXPECT_NEAR(Decibels(level(below[1], 50.0)), 0.0, 1.0);
    // ... and comes later by the way around the torso, here a large one.
    snowman.SetTorsoRadius(0.5f);
    const auto onset = [](const std::vector<double>& ear) {
        const auto sounds = [](double x) { return std::abs(x) > 1e-3; };
        return static_cast<double>(std::ranges::find_if(ear, sounds) - ear.begin());
    };
    const TorsoPaths around =
        TorsoPathsTo(Ear::Right, Snowman{0.0875f, {.radius = 0.5f}}, Towards(0, -90));
    const auto large = Responses(*pan, 48000.f, Towards(0, -90));
    EXPECT_NEAR(onset(large[1]) - onset(above[1]), 48.0 * static_cast<double>(around.directDelayMs),
                2.0);
    // Without a reflection it is the head alone, down to the border of the shadow.
    const auto head = Pan::Create(1, 2, "binaural", "sphericalheadmodel");
    for (const bool hasTorso : {true, false}) {
        snowman.SetTorsoReflection(hasTorso ? 0.f : 1.f);
        snowman.SetTorsoRadius(hasTorso ? 0.2f : 0.f);
        for (const double elevation : {90.0, 20.0, -10.0, hasTorso ? 0.0 : -90.0}) {
            const auto place = Towards(40, elevation);
            EXPECT_EQ(Responses(*pan, 48000.f, place), Responses(*head, 48000.f, place))
                << elevation;
        }
    }
}

constexpr const char* kModels[] = {"early", "sphericalheadmodel", "snowmanmodel", "continuous"};

std::unique_ptr<Pan> Make(const char* subtype) {
    return Tests::OnDefaultSpeakers(1, 2, "binaural", subtype);
}

TEST(BinauralSubtypes, MirrorsLeftAndRight) {
    for (const char* subtype : kModels) {
        const auto pan = Make(subtype);
        for (const tav::CartesianVector& p :
             {tav::CartesianVector{0.7f, 0.4f, 0.3f}, {1.f, -2.f, -1.f}, {0.05f, 0.01f, 0.f}}) {
            const auto right = Responses(*pan, 48000.f, p);
            const auto left = Responses(*pan, 48000.f, {-p.x, p.y, p.z});
            for (std::size_t k = 0; k < right[0].size(); ++k) {
                // To the bit where nothing is measured.
                const double rounding = std::string(subtype) == "continuous" ? 1e-5 : 0.0;
                ASSERT_NEAR(right[0][k], left[1][k], rounding) << subtype << k;
                ASSERT_NEAR(right[1][k], left[0][k], rounding) << subtype << k;
            }
        }
    }
}

TEST(BinauralSubtypes, LeftIsLeftForAllAzimuthsAndDelays) {
    for (const char* subtype : kModels) {
        const auto pan = Make(subtype);
        auto& ears = dynamic_cast<BinauralPanning&>(*pan);
        for (const char* model : {"basic", "woodworth", "measurement", "miller", "NoITD"}) {
            for (const char* latency : {"fixedlatency", "nolatency"}) {
                ears.SetItdModel(model);
                ears.SetItdLatencyMode(latency);
                for (int azimuth = -170; azimuth < 180; azimuth += 10) {
                    const double side = std::sin(azimuth * kDegree);
                    if (std::fabs(side) < 0.15) continue;
                    const auto heard = Responses(*pan, 44100.f, Towards(azimuth, 10));
                    const std::size_t near = side > 0 ? 1 : 0;
                    const auto nearer = At(heard[near], 2500.0, 44100.0);
                    EXPECT_GT(std::abs(nearer),
                              1.05 * std::abs(At(heard[1 - near], 2500.0, 44100.0)))
                        << subtype << azimuth;
                    // Of 300 Hz a whole head is less than half a period.
                    const auto lag = std::arg(At(heard[near], 300.0, 44100.0) /
                                              At(heard[1 - near], 300.0, 44100.0));
                    EXPECT_TRUE(lag > 0.02 || std::string(model) == "NoITD") << subtype << azimuth;
                }
            }
        }
    }
}

// Ahead as well as next to it: there is no direction at the centre of the head.
TEST(BinauralSubtypes, HearsTheCentreOfTheHeadAhead) {
    for (const char* subtype : kModels) {
        const auto pan = Make(subtype);
        const auto centre = Responses(*pan, 48000.f, {0, 0, 0});
        const auto ahead = Responses(*pan, 48000.f, {0, 1, 0});
        EXPECT_EQ(centre, ahead) << subtype;
        EXPECT_EQ(centre[0], centre[1]) << subtype;
        EXPECT_EQ(pan->Latency(), 48u);
    }
}

TEST(BinauralSubtypes, TakesDelaysAwayAndReadsThemAsToldAtAnyRate) {
    for (const char* subtype : kModels) {
        const auto reduced = Make(subtype), bare = Make(subtype);
        dynamic_cast<BinauralPanning&>(*reduced).SetDelayReduction(100.f);
        dynamic_cast<BinauralPanning&>(*bare).SetItdModel("NoITD");
        dynamic_cast<BinauralPanning&>(*bare).SetItdLatencyMode("nolatency");
        EXPECT_EQ(Responses(*reduced, 48000.f, Towards(50)), Responses(*bare, 48000.f, Towards(50)))
            << subtype;
    }
    const auto early = Make("early");
    dynamic_cast<BinauralPanning&>(*early).SetDelayKind(0);  // the nearest sample, and no other one
    for (const float rate : {44100.f, 96000.f}) {
        for (const auto& ear : Responses(*early, rate, Towards(50))) {
            EXPECT_EQ(std::ranges::count(ear, 0.0), static_cast<int>(ear.size()) - 1) << rate;
        }
    }
}

TEST(BinauralSubtypes, TurnsWithoutANoise) {
    for (const char* subtype : kModels) {
        const auto pan = Make(subtype);
        PanPlayer player(*pan, 48000.f);
        const auto sine = Tests::Sine(300.0);
        std::vector<double> ears[2];
        for (unsigned block = 0; block < 750; ++block) {  // 360 degrees in a second
            pan->SetSourcePosition(0, Towards(block * 0.48), block == 0, false);
            const auto audio = player.Play(
                64, [&](unsigned input, std::size_t k) { return sine(input, block * 64 + k); });
            for (std::size_t e = 0; e < 2; ++e) {
                ears[e].insert(ears[e].end(), audio[e].begin(), audio[e].end());
            }
        }
        for (auto& ear : ears) {
            ear.erase(ear.begin(), ear.begin() + 3000);
            EXPECT_LT(Tests::LoudestAbove(2000.0, ear, 48000.0, 32768), -80.0) << subtype;
        }
    }
}

}  // namespace
}  // namespace Quilo
