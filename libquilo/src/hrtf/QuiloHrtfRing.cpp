// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfRing.h"

#include "hrtf/QuiloHrtfResampling.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <utility>
#include <vector>

namespace Quilo {

namespace {

constexpr float kLongestLagMs = 1.5f;
constexpr float kNoDistance = 1.4f;  // metres: where the points do not say one

/// The mean distance of the points of a set.
float DistanceOf(const Hrtf& set) {
    double sum = 0.0;
    for (const tav::CartesianVector& p : set.Positions()) {
        sum += static_cast<double>(tav::Distance(p));
    }
    const auto mean = static_cast<float>(sum / static_cast<double>(set.Positions().Size()));
    return std::isfinite(mean) && mean > 0.f ? mean : kNoDistance;
}

/// Samples by which the left response is later: the peak of the correlation of both, between
/// samples by a parabola.
double LagOf(std::span<const float> left, std::span<const float> right, int longest) {
    const int count = static_cast<int>(left.size());
    std::vector<double> correlations;
    for (int lag = -longest - 1; lag <= longest + 1; ++lag) {
        double sum = 0.0;
        for (int t = std::max(lag, 0); t < std::min(count, count + lag); ++t) {
            sum += static_cast<double>(left[static_cast<std::size_t>(t)]) *
                   static_cast<double>(right[static_cast<std::size_t>(t - lag)]);
        }
        correlations.push_back(sum);
    }
    const auto peak = std::max_element(correlations.begin() + 1, correlations.end() - 1);
    const double before = peak[-1], here = peak[0], after = peak[1];
    const double bend = before - 2.0 * here + after;
    const double shift = bend < 0.0 ? 0.5 * (before - after) / bend : 0.0;
    return static_cast<double>(peak - correlations.begin()) - longest - 1 + shift;
}

// ---- Levels of a mixture, in thirds of an octave from 200 Hz to 16 kHz

constexpr std::size_t kNumBands = 20;
constexpr std::size_t kTonesPerBand = 20;
using BandTones = std::vector<std::complex<double>>;  // a value per tone
using BandLevels = std::array<double, kNumBands>;     // dB

/// The response at each tone, times the root of the part of the spectrum that the tone stands for.
BandTones TonesOf(std::span<const float> filter, Hrtfs::FilterType type, double rateHz) {
    constexpr double kHeardSeconds = 0.012;  // of finite responses; more costs much, adds little
    const auto numHeard = static_cast<std::size_t>(kHeardSeconds * rateHz);
    BandTones tones;
    for (std::size_t k = 0; k < kNumBands * kTonesPerBand; ++k) {
        const double bands = (static_cast<double>(k) + 0.5) / kTonesPerBand - 0.5;
        const double hz = std::min(200.0 * std::exp2(bands / 3.0), 0.49 * rateHz);
        const auto z = std::polar(1.0, -2.0 * std::numbers::pi * hz / rateHz);
        const auto polynomial = [&](std::span<const float> coefficients) {
            std::complex<double> sum = 0.0;
            for (std::size_t i = coefficients.size(); i-- > 0;)
                sum = sum * z + static_cast<double>(coefficients[i]);
            return sum;
        };
        if (type == Hrtfs::FilterType::Fir) {
            tones.push_back(polynomial(filter.first(std::min(filter.size(), numHeard))));
        } else {
            tones.emplace_back(1.0);
            for (std::size_t at = 0; at + 6 <= filter.size(); at += 6)
                tones.back() *=
                    polynomial(filter.subspan(at, 3)) / polynomial(filter.subspan(at + 3, 3));
        }
        tones.back() *= std::sqrt(hz);
    }
    return tones;
}

/// @param share  of the second      @param floor  power below which nothing is told apart
BandLevels LevelsOf(const BandTones& first, const BandTones& second, double share, double floor) {
    BandLevels levels{};
    for (std::size_t band = 0; band < kNumBands; ++band) {
        double power = floor;
        for (std::size_t k = band * kTonesPerBand; k < (band + 1) * kTonesPerBand; ++k)
            power += std::norm((1.0 - share) * first[k] + share * second[k]);
        levels[band] = 10.0 * std::log10(power);
    }
    return levels;
}

/// Shares of the second at equal parts of the way in decibels from the first.
void FillEvenShares(const BandTones& first, const BandTones& second, std::span<float> shares) {
    constexpr std::size_t kPlaces = 64;
    constexpr double kStep = 2.0 * std::numbers::pi / static_cast<double>(HrtfRing::kNumPoints);
    constexpr double kFloor = 1e-6;  // of the loudest tone
    double loudest = 1e-20;
    for (const BandTones* const tones : {&first, &second}) {
        for (const auto& tone : *tones) loudest = std::max(loudest, std::norm(tone));
    }
    std::vector<double> gone{0.0};  // dB, up to each place
    BandLevels before = LevelsOf(first, second, 0.0, kFloor * loudest);
    for (std::size_t place = 1; place <= kPlaces; ++place) {
        const double share = static_cast<double>(place) / kPlaces;
        const BandLevels here = LevelsOf(first, second, share, kFloor * loudest);
        double most = 1e-9;  // alike filters are mixed in straight lines
        for (std::size_t band = 0; band < kNumBands; ++band)
            most = std::max(most, std::abs(here[band] - before[band]));
        // Filters so loud that their powers overflow are mixed in straight lines, too.
        gone.push_back(gone.back() + (std::isfinite(most) ? most : 1e-9));
        before = here;
    }
    for (std::size_t step = 0; step < shares.size(); ++step) {
        // The direction that the two have with these shares by amplitude.
        const double part = static_cast<double>(step) / static_cast<double>(shares.size() - 1);
        const double angle =
            std::atan2(part * std::sin(kStep), 1.0 - part + part * std::cos(kStep));
        const double wanted = angle / kStep * gone.back();
        const auto after = std::upper_bound(gone.begin() + 1, gone.end() - 1, wanted);
        const auto place = static_cast<double>(after - gone.begin()) - 1.0;
        shares[step] = static_cast<float>((place + (wanted - after[-1]) / (*after - after[-1])) /
                                          static_cast<double>(kPlaces));
    }
}

}  // namespace

tav::CartesianVector HrtfRing::Direction(std::size_t point) {
    constexpr float kStepDeg = 360.f / static_cast<float>(kNumPoints);
    return tav::FromNavigational(kStepDeg * static_cast<float>(point), 0.f, 1.f);
}

HrtfRing::HrtfRing(const Hrtf& whole) {
    HrtfData data;
    data.filterType = whole.Data().filterType;
    data.filtersLength = whole.Data().filtersLength;
    data.numChannels = whole.Data().numChannels;
    data.samplingRate = whole.Data().samplingRate;
    data.numPoints = kNumPoints;
    const float distance = DistanceOf(whole);
    const float samplesPerMs = data.samplingRate * 0.001f;
    const int longest = static_cast<int>(std::ceil(kLongestLagMs * samplesPerMs));
    for (std::size_t k = 0; k < kNumPoints; ++k) {
        const tav::CartesianVector d = Direction(k);
        HrtfPoint point = *whole.NearestPoint({distance * d.x, distance * d.y, distance * d.z});
        point.position = d;
        point.delay = 0.f;
        if (data.filterType == Hrtfs::FilterType::Fir) {
            const double lag = LagOf(point.filters.Row(0), point.filters.Row(1), longest);
            delaysMs[k] = static_cast<float>(lag) / samplesPerMs;
            for (std::size_t ear = 0; ear < 2; ++ear) {
                std::ranges::copy(MinimumPhaseResponse(point.filters.Row(ear)),
                                  point.filters.Row(ear).begin());
            }
        }
        data.points.push_back(std::move(point));
    }
    for (std::size_t ear = 0; ear < 2; ++ear) {
        std::array<BandTones, kNumPoints> tones;
        for (std::size_t k = 0; k < kNumPoints; ++k) {
            tones[k] = TonesOf(data.points[k].filters.Row(ear), data.filterType,
                               static_cast<double>(data.samplingRate));
        }
        for (std::size_t k = 0; k < kNumPoints; ++k)
            FillEvenShares(tones[k], tones[(k + 1) % kNumPoints], evenShares_[ear][k]);
    }
    set = std::make_shared<const Hrtf>(std::move(data));
}

float HrtfRing::EvenShare(std::size_t ear, std::size_t point, float share) const noexcept {
    const Shares& shares = evenShares_[ear][point];
    const float place = std::clamp(share, 0.f, 1.f) * static_cast<float>(kNumSteps);
    const std::size_t step = std::min(static_cast<std::size_t>(place), kNumSteps - 1);
    return std::lerp(shares[step], shares[step + 1], place - static_cast<float>(step));
}

}  // namespace Quilo
