// SPDX-License-Identifier: MIT
// The built-in set against the measurement from which it was made, by other code than the tool's
// and with the cells as they are after rounding to 32 bits.
#include "filterdesign/VelkDspFft.h"
#include "hrtf/QuiloHrtf.h"
#include "math/VelkDspSpherical.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <fstream>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace Quilo {
namespace {

constexpr std::size_t kPoints = 710;
constexpr std::size_t kTaps = 512;
constexpr std::size_t kSize = 4096;  // of the transforms
constexpr double kRate = 44100.0;
constexpr double kPi = std::numbers::pi;

using Row = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

double Erb(double f) { return 21.4 * std::log10(1.0 + 0.00437 * f); }
double ErbInverse(double e) { return (std::pow(10.0, e / 21.4) - 1.0) / 0.00437; }
double FrequencyOf(std::size_t bin) { return static_cast<double>(bin) * kRate / kSize; }

/// 200 Hz to 16 kHz, a third of an ERB apart.
const Row& Grid() {
    static const Row grid = [] {
        Row f;
        for (double e = Erb(200.0); e < Erb(16000.0); e += 1.0 / 3.0) f.push_back(ErbInverse(e));
        return f;
    }();
    return grid;
}

double RmsOfDifference(const Row& a, const Row& b) {
    double sum = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
    return std::sqrt(sum / static_cast<double>(a.size()));
}

Row Minus(Row a, const Row& b) {
    for (std::size_t k = 0; k < a.size(); ++k) a[k] -= b[k];
    return a;
}

void ExpectSpread(const char* what, Row values, double median, double most, double worst) {
    std::ranges::sort(values);
    EXPECT_LE(values[values.size() / 2], median) << what << ", median";
    EXPECT_LE(values[values.size() * 95 / 100], most) << what << ", 95 of 100";
    EXPECT_LE(values.back(), worst) << what << ", worst";
}

/// What was measured: directions, spectra of both ears, levels relative to the diffuse field.
class Measurement {
public:
    Measurement() {
        ReadDirections();
        ReadResponses();
        Equalise();
    }

    std::vector<tav::CartesianVector> positions;
    std::vector<Spectrum> spectra[2];
    std::vector<Row> levels[2];  // of each ear and direction over Grid(), smoothed over one ERB

private:
    static constexpr const char* kFolder = QUILO_SOURCE_DIR "/libquilo/data/kemar/measurement/";

    void ReadDirections() {
        std::ifstream file(std::string(kFolder) + "directions.txt");
        std::string line;
        std::getline(file, line);  // the names of the columns
        double row, azimuth, elevation, rest;
        while (file >> row >> azimuth >> elevation) {  // degrees, counter-clockwise from the front
            for (int k = 0; k < 7; ++k) file >> rest;
            const double turn = azimuth * kPi / 180.0, up = elevation * kPi / 180.0;
            positions.push_back({static_cast<float>(-std::sin(turn) * std::cos(up)),
                                 static_cast<float>(std::cos(turn) * std::cos(up)),
                                 static_cast<float>(std::sin(up))});
            elevations_.push_back(elevation);
        }
        ASSERT_EQ(positions.size(), kPoints);
    }

    void ReadResponses() {
        std::ifstream file(std::string(kFolder) + "impulses.s16", std::ios::binary);
        tav::Fft fft(kSize);
        std::vector<float> signal(kSize), re(fft.NumBins()), im(fft.NumBins());
        for (std::size_t k = 0; k < 2 * kPoints; ++k) {
            for (std::size_t tap = 0; tap < kTaps; ++tap) {
                const int low = file.get(), high = file.get();
                signal[tap] = static_cast<float>(static_cast<std::int16_t>(low | high << 8));
            }
            fft.Forward(signal, re, im);
            Spectrum spectrum;
            for (std::size_t bin = 0; bin < fft.NumBins(); ++bin)
                spectrum.emplace_back(re[bin], im[bin]);
            spectra[k % 2].push_back(std::move(spectrum));
        }
        ASSERT_TRUE(file);
    }

    /// Rings are parted half-way between their elevations; each shares its zone of the sphere
    /// evenly.
    Row Shares() const {
        std::map<double, double> rings;
        for (const double e : elevations_) rings[e] += 1.0;
        Row shares;
        for (const double e : elevations_) {
            const auto ring = rings.find(e);
            const double low = ring == rings.begin() ? -90.0 : (std::prev(ring)->first + e) / 2.0;
            const double high = e == 90.0 ? 90.0 : (std::next(ring)->first + e) / 2.0;
            const double zone = std::sin(high * kPi / 180.0) - std::sin(low * kPi / 180.0);
            shares.push_back(zone / 2.0 / ring->second);
        }
        return shares;
    }

    void Equalise() {
        Row diffuse(kSize / 2 + 1);
        const Row shares = Shares();
        for (std::size_t i = 0; i < kPoints; ++i) {
            for (std::size_t bin = 1; bin < diffuse.size(); ++bin) {
                diffuse[bin] += shares[i] * std::norm(spectra[0][i][bin]);
            }
        }
        for (auto ear : {0, 1}) levels[ear].assign(kPoints, Row(Grid().size()));
        for (std::size_t g = 0; g < Grid().size(); ++g) {
            std::vector<std::pair<std::size_t, double>> window;
            double sum = 0.0;
            for (std::size_t bin = 1; bin < diffuse.size(); ++bin) {
                const double apart = Erb(FrequencyOf(bin)) - Erb(Grid()[g]);
                if (std::abs(apart) > 2.5) continue;  // 85 dB down
                const double weight =
                    std::exp(-kPi * apart * apart) / (1.0 + 0.00437 * FrequencyOf(bin));
                window.emplace_back(bin, weight / diffuse[bin]);
                sum += weight;
            }
            for (auto ear : {0, 1}) {
                for (std::size_t i = 0; i < kPoints; ++i) {
                    double power = 0.0;
                    for (const auto& [bin, weight] : window)
                        power += weight * std::norm(spectra[ear][i][bin]);
                    levels[ear][i][g] = 10.0 * std::log10(power / sum);
                }
            }
        }
    }

    Row elevations_;
};

const Measurement& Measured() {
    static const Measurement measurement;
    return measurement;
}

const Hrtf& Set() {
    static const Hrtf set("kemar");
    return set;
}

std::span<const float> Filter(std::size_t point, std::size_t ear) {
    return Set().Data().points[point].filters.Row(ear);
}

/// Of the first `numCells` cells, b0 b1 b2 a0 a1 a2 each.
std::complex<double> Response(std::span<const float> cells,
                              double frequency,
                              std::size_t numCells = 6) {
    const std::complex<double> z = std::polar(1.0, -2.0 * kPi * frequency / kRate);
    std::complex<double> response = 1.0;
    for (std::size_t c = 0; c < 6 * numCells; c += 6) {
        const auto value = [&](std::size_t k) { return static_cast<double>(cells[c + k]); };
        response *=
            (value(0) + z * (value(1) + z * value(2))) / (value(3) + z * (value(4) + z * value(5)));
    }
    return response;
}

Row Levels(std::span<const float> cells) {
    Row levels;
    for (const double f : Grid()) levels.push_back(20.0 * std::log10(std::abs(Response(cells, f))));
    return levels;
}

/// Of both roots of 1 + c1 / z + c2 / z^2.
double LargestRoot(double c1, double c2) {
    const std::complex<double> root = std::sqrt(std::complex<double>(c1 * c1 - 4.0 * c2));
    return std::max(std::abs(-c1 + root), std::abs(-c1 - root)) / 2.0;
}

TEST(BuiltInHrtf, IsItsOwnMirrorImageBitForBit) {
    for (const HrtfPoint& point : Set().Data().points) {
        const tav::CartesianVector p = point.position;
        const HrtfPoint& mirror = *Set().NearestPoint({-p.x, p.y, p.z});
        EXPECT_EQ(mirror.position, (tav::CartesianVector{-p.x, p.y, p.z}));
        EXPECT_EQ(mirror.delay, -point.delay);
        EXPECT_TRUE(std::ranges::equal(Filter(point.index, 0), Filter(mirror.index, 1)));
        EXPECT_TRUE(p.x != 0.f || point.delay == 0.f);
    }
}

TEST(BuiltInHrtf, EveryCellIsStableAndOfMinimumPhaseAndNoneOverloads) {
    double root = 0.0, level = 0.0;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const std::span<const float> cells = Filter(i, 0);
        for (std::size_t c = 0; c < 36; c += 6) {
            const auto value = [&](std::size_t k) { return static_cast<double>(cells[c + k]); };
            ASSERT_GT(value(0), 0.0);
            ASSERT_EQ(value(3), 1.0);
            root = std::max({root, LargestRoot(value(4), value(5)),
                             LargestRoot(value(1) / value(0), value(2) / value(0))});
        }
        for (double f = 0.0; f <= kRate / 2.0; f += 50.0) {
            for (std::size_t n = 1; n <= 6; ++n)
                level = std::max(level, std::abs(Response(cells, f, n)));
        }
    }
    EXPECT_LE(root, 0.9905);
    EXPECT_LE(20.0 * std::log10(level), 20.0);
}

TEST(BuiltInHrtf, HasTheLevelsAndTheTimesOfTheMeasurement) {
    Row level, difference, phase;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const HrtfPoint& point = Set().Data().points[i];
        const tav::CartesianVector& p = Measured().positions[i];
        ASSERT_LT(
            std::hypot(p.x - point.position.x, p.y - point.position.y, p.z - point.position.z),
            1e-6f);
        const Row left = Levels(Filter(i, 0)), right = Levels(Filter(i, 1));
        level.push_back(RmsOfDifference(left, Measured().levels[0][i]));
        difference.push_back(RmsOfDifference(
            Minus(left, right), Minus(Measured().levels[0][i], Measured().levels[1][i])));
        double sum = 0.0, weights = 0.0;
        for (std::size_t bin = 19; FrequencyOf(bin) <= 1500.0; ++bin) {
            const double f = FrequencyOf(bin);
            const auto rendered =
                Response(Filter(i, 0), f) * std::conj(Response(Filter(i, 1), f)) *
                std::polar(1.0, -2e-3 * kPi * f * static_cast<double>(point.delay));
            const auto measured =
                Measured().spectra[0][i][bin] * std::conj(Measured().spectra[1][i][bin]);
            const double weight = 1.0 / (1.0 + 0.00437 * f);
            sum += weight * std::norm(std::arg(rendered * std::conj(measured)));
            weights += weight;
        }
        phase.push_back(std::sqrt(sum / weights));
    }
    ExpectSpread("level of the left ear, dB", level, 0.35, 0.55, 0.85);
    ExpectSpread("level difference of the ears, dB", difference, 0.50, 0.80, 1.10);
    ExpectSpread("phase between the ears, 200 Hz to 1.5 kHz, radians", phase, 0.12, 0.17, 0.22);
}

TEST(Hrtf, TheNearestPointIsTheNearestDirectionFromHereToAfar) {
    for (const HrtfPoint& point : Set().Data().points) {
        const tav::CartesianVector p = point.position;
        for (const float metres : {0.5f, 2.f, 1e3f, 1e9f, 1e30f}) {
            ASSERT_EQ(Set().NearestPoint({metres * p.x, metres * p.y, metres * p.z}), &point)
                << metres;
        }
    }
    EXPECT_EQ(Hrtf().NearestPoint({0.f, 1.f, 0.f}), nullptr);
    EXPECT_EQ(Hrtf().NearestPoint({0.f, 1.f, 0.f}, 0), nullptr);
}

// At the points, some of which coincide in the second set, and on a spiral through the centre.
TEST(Hrtf, AGuessChangesNothingOfTheNearestPoint) {
    HrtfData uneven;
    for (unsigned k = 0; k < 50; ++k) {
        const auto part = static_cast<float>(k % 45);
        uneven.points.emplace_back().position =
            tav::FromNavigational(77.f * part, 2.f * part - 45.f, 1.f + 0.01f * part);
    }
    const Hrtf unevenSet(uneven);
    for (const Hrtf* const set : {&Set(), &unevenSet}) {
        for (std::uint32_t k = 0; k < 20000; ++k) {
            const auto part = static_cast<float>(k) * 1e-4f - 1.f;
            const bool isPoint = k < set->Positions().Size();
            const auto p = isPoint ? set->Positions()[k]
                                   : tav::FromNavigational(7200.f * part, 80.f * part, 2.f * part);
            const HrtfPoint* const nearest = set->NearestPoint(p);
            for (const std::uint32_t off : {0u, 1u, 45u, 70u, 709u, ~0u})
                ASSERT_EQ(set->NearestPoint(p, nearest->index + off), nearest) << k;
        }
    }
}

}  // namespace
}  // namespace Quilo
