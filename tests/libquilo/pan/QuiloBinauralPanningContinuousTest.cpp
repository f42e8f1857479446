// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningContinuous.h"

#include "hrtf/QuiloHrtfResampling.h"
#include "laws/QuiloLateralRingLaw.h"
#include "libquilo/pan/PanPlayer.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainFourier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace Quilo {
namespace {

constexpr std::size_t kBins = 2048;
constexpr float kRate = 44100.f;  // of the built-in set

tav::CartesianVector Towards(double azimuthDeg, double elevationDeg = 0.0) {
    return tav::FromNavigational(static_cast<float>(azimuthDeg), static_cast<float>(elevationDeg),
                                 1.4f);
}

using Spectra = std::array<std::vector<std::complex<double>>, 2>;

Spectra SpectraOf(Pan& pan, const tav::CartesianVector& position) {
    Tests::PanPlayer player(pan, kRate);
    pan.SetSourcePosition(0, position, true, true);
    pan.Reset();
    const auto ears = player.Play(kBins, Tests::Impulse);
    return {Plain::Spectrum(ears[0], kBins), Plain::Spectrum(ears[1], kBins)};
}

/// Of the third-octave bands from 200 Hz on, decibels.
std::vector<double> BandsOf(const std::vector<std::complex<double>>& spectrum, double highest) {
    std::vector<double> bands;
    for (double centre = 200.0; centre < 1.01 * highest; centre *= std::cbrt(2.0)) {
        double power = 0.0;
        for (std::size_t bin = 0; bin < spectrum.size(); ++bin) {
            const double hz = static_cast<double>(bin) * 44100.0 / kBins;
            if (std::fabs(std::log2(hz / centre)) <= 1.0 / 6.0) power += std::norm(spectrum[bin]);
        }
        bands.push_back(10.0 * std::log10(power));
    }
    return bands;
}

TEST(BinauralPanningContinuous, IsTheDirectOneAtItsOwnDirections) {
    const auto pan = Tests::OnDefaultSpeakers(1, 2, "binaural", "continuous");
    const auto direct = Tests::OnDefaultSpeakers(1, 2, "binaural", "direct");
    for (int azimuth = -170; azimuth <= 180; azimuth += 10) {
        const Spectra heard = SpectraOf(*pan, Towards(azimuth));
        const Spectra wanted = SpectraOf(*direct, Towards(azimuth));
        for (std::size_t ear = 0; ear < 2; ++ear) {
            for (std::size_t bin = 5; bin < 750; ++bin) {
                const auto ratio = heard[ear][bin] / wanted[ear][bin];
                ASSERT_NEAR(20.0 * std::log10(std::abs(ratio)), 0.0, 0.05) << azimuth << bin;
                ASSERT_NEAR(std::arg(ratio), 0.0, 0.01) << azimuth << " " << bin;
            }
        }
    }
}

// Half round the listener and over the poles, a degree at a time: no band of either ear makes a
// step. From one of the ring's directions to the next, ten degrees on, a band of the set changes by
// 9.9 dB, so that there could not be much less.
TEST(BinauralPanningContinuous, ChangesLittleFromDegreeToDegree) {
    const auto pan = Tests::OnDefaultSpeakers(1, 2, "binaural", "continuous");
    struct Way {
        const char* name;
        tav::CartesianVector (*at)(double);
    };
    const Way ways[] = {
        {"round", [](double deg) { return Towards(deg); }},
        {"over the head", [](double deg) { return Towards(0.0, deg); }},
        {"over the head, aside", [](double deg) { return Towards(35.0, deg); }},
        {"over one ear", [](double deg) { return Towards(90.0, deg); }},
    };
    // What a delay between samples takes from the highest octave is not that of the mixture.
    const auto walk = [&](const Way& way, double highest) {
        std::array<std::vector<double>, 2> before;
        for (int deg = 0; deg <= 180; ++deg) {
            const Spectra spectra = SpectraOf(*pan, way.at(deg));
            for (std::size_t ear = 0; ear < 2; ++ear) {
                const auto bands = BandsOf(spectra[ear], highest);
                for (std::size_t band = 0; band < before[ear].size(); ++band) {
                    EXPECT_NEAR(bands[band], before[ear][band], 1.0)
                        << way.name << " " << deg << ", band " << band;
                }
                before[ear] = bands;
            }
        }
    };
    walk(ways[0], 6300.0);
    auto& ears = dynamic_cast<BinauralPanning&>(*pan);
    ears.SetItdModel("NoITD");
    ears.SetItdLatencyMode("nolatency");
    for (const Way& way : ways) walk(way, 16000.0);
}

TEST(LateralRingParts, KeepTheSumAndTheSide) {
    tav::CartesianArray directions(HrtfRing::kNumPoints);
    for (std::size_t k = 0; k < directions.Size(); ++k) directions[k] = HrtfRing::Direction(k);
    const SpeakerRing ring(directions, HrtfRing::kNumPoints);
    for (int azimuth = -180; azimuth < 180; azimuth += 7) {
        for (int elevation = -90; elevation <= 90; elevation += 15) {
            const tav::CartesianVector p = Towards(azimuth, elevation);
            std::vector<float> gains(HrtfRing::kNumPoints);
            for (const RingPart& part : LateralRingParts(ring, p)) AddRingPart(part, gains);
            float sum = 0.f, side = 0.f, front = 0.f;
            for (std::size_t k = 0; k < gains.size(); ++k) {
                EXPECT_GE(gains[k], 0.f);
                sum += gains[k];
                side += gains[k] * directions[k].x;
                front += gains[k] * directions[k].y;
            }
            EXPECT_NEAR(sum, 1.f, 1e-5f);
            // Between two directions 10 degrees apart their mean lies 0.4 % inside the circle.
            EXPECT_NEAR(side, p.x / 1.4f, 0.005f) << azimuth << " " << elevation;
            EXPECT_NEAR(front, p.y / 1.4f, 0.005f) << azimuth << " " << elevation;
        }
    }
}

// Finite responses lose their delays, which the ring reports, and keep their magnitudes.
TEST(HrtfRing, TakesTheDelaysOutOfFiniteResponses) {
    constexpr std::size_t kTaps = 256;
    constexpr std::array<std::size_t, 2> kOnsets{33, 12};
    HrtfData data;
    data.filterType = Hrtfs::FilterType::Fir;
    data.filtersLength = kTaps;
    data.numChannels = 2;
    data.samplingRate = 48000.f;
    HrtfPoint point;
    point.position = {0.f, 1.4f, 0.f};
    point.filters = tav::Matrix<float>(2, kTaps);
    for (std::size_t ear = 0; ear < 2; ++ear) {
        // (0.2 + 0.64 / z) / (1 - 0.8 / z): of minimum phase it begins with 0.64.
        for (std::size_t t = 0; t < 100; ++t) {
            point.filters(ear, kOnsets[ear] + t) = std::pow(0.8f, static_cast<float>(t));
        }
        point.filters(ear, kOnsets[ear]) = 0.2f;
    }
    // A quarter of a sample more on the left.
    for (std::size_t t = kTaps - 1; t > 0; --t) {
        point.filters(0, t) = std::lerp(point.filters(0, t), point.filters(0, t - 1), 0.25f);
    }
    data.points = {point};
    data.numPoints = 1;
    const Hrtf set(std::move(data));
    const HrtfRing ring(set);
    ASSERT_EQ(ring.set->Data().points.size(), HrtfRing::kNumPoints);
    for (const float ms : ring.delaysMs) EXPECT_NEAR(ms, 21.25f / 48.f, 2e-3f);
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const auto spectrum = [&](const Hrtf& of) {
            const auto row = of.Data().points[0].filters.Row(ear);
            return Plain::Spectrum({row.begin(), row.end()}, 1024);
        };
        const auto before = spectrum(set), after = spectrum(*ring.set);
        for (std::size_t bin = 0; bin < before.size(); ++bin) {
            EXPECT_NEAR(std::abs(after[bin]), std::abs(before[bin]), 0.003 * std::abs(before[bin]));
        }
        EXPECT_NEAR(ring.set->Data().points[7].filters(ear, 0), ear == 0 ? 0.48f : 0.64f, 0.002f);
    }
}

// A response that has the least phase already, but for its beginning, only loses that.
TEST(MinimumPhaseResponse, KeepsTheTailOfALongOne) {
    std::vector<float> taps(40000), shifted(taps.size());
    for (const auto& [place, tap] : {std::pair(0u, 1.f), {20000u, 0.4f}, {29000u, -0.3f}}) {
        taps[place + 500] = shifted[place] = tap;
    }
    const auto response = MinimumPhaseResponse(taps);
    ASSERT_EQ(response.size(), shifted.size());
    for (std::size_t t = 0; t < shifted.size(); ++t) ASSERT_NEAR(response[t], shifted[t], 1e-3);
    taps.resize(600000);  // more than half of the longest transform
    EXPECT_EQ(MinimumPhaseResponse(taps).size(), taps.size());
}

}  // namespace
}  // namespace Quilo
