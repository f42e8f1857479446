// SPDX-License-Identifier: MIT
// Two ears by models: against the wave around a rigid sphere, symmetries and signals in motion.
#include "pan/QuiloBinauralModelPanning.h"

#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainFourier.h"
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
}

constexpr const char* kModels[] = {"sphericalheadmodel"};

TEST(BinauralModelPanning, MirrorsLeftAndRight) {
    for (const char* subtype : kModels) {
        const auto pan = Pan::Create(1, 2, "binaural", subtype);
        for (const tav::CartesianVector& p :
             {tav::CartesianVector{0.7f, 0.4f, 0.3f}, {1.f, -2.f, -1.f}, {0.05f, 0.01f, 0.f}}) {
            const auto right = Responses(*pan, 48000.f, p);
            const auto left = Responses(*pan, 48000.f, {-p.x, p.y, p.z});
            for (std::size_t k = 0; k < right[0].size(); ++k) {
                ASSERT_EQ(right[0][k], left[1][k]) << subtype << k;
                ASSERT_EQ(right[1][k], left[0][k]) << subtype << k;
            }
        }
    }
}

double LoudestAbove(double hz, const std::vector<double>& signal, double rate) {
    // Blackman-Harris: side lobes below -92 dB.
    const std::size_t size = 32768;
    std::vector<double> windowed(size);
    for (std::size_t k = 0; k < size; ++k) {
        const double t = 2.0 * std::numbers::pi * static_cast<double>(k) / size;
        windowed[k] = signal.at(k) * (0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2 * t) -
                                      0.01168 * std::cos(3 * t));
    }
    const auto bins = Plain::Spectrum(windowed, size);
    double loudest = 0.0, all = 0.0;
    for (std::size_t b = 0; b < bins.size(); ++b) {
        all = std::max(all, std::abs(bins[b]));
        if (static_cast<double>(b) * rate / size > hz)
            loudest = std::max(loudest, std::abs(bins[b]));
    }
    return Decibels(loudest / all);
}

TEST(BinauralModelPanning, TurnsWithoutANoise) {
    for (const char* subtype : kModels) {
        const auto pan = Pan::Create(1, 2, "binaural", subtype);
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
            EXPECT_LT(LoudestAbove(2000.0, ear, 48000.0), -80.0) << subtype;
        }
    }
}

}  // namespace
}  // namespace Quilo
