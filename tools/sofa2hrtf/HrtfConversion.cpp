// SPDX-License-Identifier: MIT
#include "HrtfConversion.h"

#include "CellFit.h"
#include "filterdesign/VelkDspFft.h"
#include "hrtf/QuiloHrtfResampling.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace SofaTool {

namespace {

constexpr std::size_t kFiner = 8;    // of the grid on which onsets are looked for
constexpr double kOnsetShare = 0.1;  // of the peak: -20 dB
/// Samples of a response that onsets are looked for in: the finer grid has to fit a transform.
constexpr std::size_t kLongestLooked = tav::Fft::kMaxSize / kFiner - 1;
constexpr double kLargestItdMs = 1.2;
constexpr double kCorrelatedHz = 1500.0;
constexpr double kKeptEnergy = 0.9999;
constexpr std::size_t kTaperTaps = 16;

std::string NameOf(std::size_t measurement) {
    return "measurement " + std::to_string(measurement + 1);
}

/// Spectra of a response, with room for as much silence behind it.
struct Spectrum {
    explicit Spectrum(std::span<const float> response, std::size_t size) {
        tav::Fft fft(size);
        std::vector<float> signal(size);
        re.resize(fft.NumBins());
        im.resize(fft.NumBins());
        std::ranges::copy(response, signal.begin());
        fft.Forward(signal, re, im);
    }
    std::vector<float> re, im;
};

std::span<const float> Looked(std::span<const float> response) {
    return response.first(std::min(response.size(), kLongestLooked));
}

std::size_t SizeFor(std::size_t numTaps) {
    return std::max(std::bit_ceil(numTaps + 1), tav::Fft::kMinSize);
}

/// A spectrum as a signal on the finer grid.
std::vector<float> Finer(const Spectrum& spectrum, std::size_t size) {
    const std::size_t finerSize = std::min(size * kFiner, tav::Fft::kMaxSize);
    tav::Fft fft(finerSize);
    std::vector<float> re(fft.NumBins()), im(fft.NumBins()), signal(finerSize);
    const std::size_t factor = finerSize / size;
    const auto scale = static_cast<float>(factor);
    for (std::size_t k = 0; k < spectrum.re.size() - 1; ++k) {
        re[k] = scale * spectrum.re[k];
        im[k] = scale * spectrum.im[k];
    }
    fft.Inverse(re, im, signal);
    return signal;
}

/// Samples by which the bass of the left ear is behind that of the right one.
double LagOf(const Measurement& measurement, double rateHz) {
    const std::size_t length = std::min(measurement.ears[0].size(), kLongestLooked / 2);
    const std::size_t size = SizeFor(2 * length);
    const Spectrum left(std::span(measurement.ears[0]).first(length), size);
    const Spectrum right(std::span(measurement.ears[1]).first(length), size);
    Spectrum cross = left;
    for (std::size_t k = 0; k < cross.re.size(); ++k) {
        const double hz = static_cast<double>(k) * rateHz / static_cast<double>(size);
        const auto weight = static_cast<float>(1.0 / (1.0 + std::pow(hz / kCorrelatedHz, 8)));
        cross.re[k] = weight * (left.re[k] * right.re[k] + left.im[k] * right.im[k]);
        cross.im[k] = weight * (left.im[k] * right.re[k] - left.re[k] * right.im[k]);
    }
    const std::vector<float> correlation = Finer(cross, size);
    const auto peak =
        static_cast<double>(std::ranges::max_element(correlation) - correlation.begin());
    const auto period = static_cast<double>(correlation.size());
    const double lag = peak > period / 2.0 ? peak - period : peak;
    return lag * static_cast<double>(size) / period;
}

void Resample(SofaSet& set, double rateHz) {
    if (rateHz == set.rateHz) return;
    const std::size_t length = set.measurements.front().ears[0].size();
    const Quilo::ResponseResampler resampler(length, static_cast<float>(set.rateHz),
                                             static_cast<float>(rateHz));
    for (Measurement& measurement : set.measurements) {
        for (auto& ear : measurement.ears) ear = resampler.Apply(ear);
    }
    set.rateHz = rateHz;
}

/// How many taps from `first` on hold nearly all of the energy of every response.
std::size_t LengthOf(const SofaSet& set, std::size_t first) {
    std::size_t longest = 1;
    for (const Measurement& measurement : set.measurements) {
        for (const auto& ear : measurement.ears) {
            const auto energy = [](double sum, float x) {
                return sum + static_cast<double>(x) * static_cast<double>(x);
            };
            double all = 0.0;
            for (std::size_t k = first; k < ear.size(); ++k) all = energy(all, ear[k]);
            double sum = 0.0;
            std::size_t end = first;
            while (end < ear.size() && sum < kKeptEnergy * all) sum = energy(sum, ear[end++]);
            longest = std::max(longest, end - first);
        }
    }
    return (longest + 7) / 8 * 8;
}

void TaperLast(std::span<double> taps) {
    for (std::size_t k = 0; k < taps.size(); ++k) {
        const double part = static_cast<double>(k + 1) / static_cast<double>(taps.size() + 1);
        taps[k] *= 0.5 + 0.5 * std::cos(std::numbers::pi * part);
    }
}

void ConvertToTaps(const SofaSet& set,
                   const ConversionOptions& options,
                   double earliest,
                   ConvertedSet& converted) {
    const double lead = options.truncateOnset ? 0.0 : 0.001 * set.rateHz;
    const auto first = static_cast<std::size_t>(std::max(std::floor(earliest - lead), 0.0));
    const std::size_t available = set.measurements.front().ears[0].size() - first;
    std::size_t length = LengthOf(set, first);
    if (length < available) length += kTaperTaps;
    if (options.numTaps) length = *options.numTaps;
    for (std::size_t p = 0; p < set.measurements.size(); ++p) {
        for (std::size_t ear = 0; ear < 2; ++ear) {
            const auto taps = std::span(set.measurements[p].ears[ear]).subspan(first);
            auto& filter = converted.points[p].filters[ear];
            filter.assign(length, 0.0);
            std::copy_n(taps.begin(), std::min(length, taps.size()), filter.begin());
            if (length < available) TaperLast(std::span(filter).last(std::min(kTaperTaps, length)));
        }
    }
}

void ConvertToCells(const SofaSet& set, ConvertedSet& converted) {
    const CellFitter fitter(set.rateHz, set.measurements.front().ears[0].size(),
                            converted.numCells);
    double sum = 0.0;
    for (std::size_t p = 0; p < set.measurements.size(); ++p) {
        for (std::size_t ear = 0; ear < 2; ++ear) {
            const CellFit fit = fitter.Fit(set.measurements[p].ears[ear]);
            converted.points[p].filters[ear] = tav::CellsToFile(fit.cells);
            converted.worstDb = std::max(converted.worstDb, fit.worstDb);
            converted.worstRmsDb = std::max(converted.worstRmsDb, fit.rmsDb);
            sum += fit.rmsDb;
        }
    }
    converted.meanRmsDb = sum / (2.0 * static_cast<double>(set.measurements.size()));
}

}  // namespace

double OnsetOf(std::span<const float> response) {
    const auto looked = Looked(response);
    const std::size_t size = SizeFor(looked.size());
    const std::vector<float> finer = Finer(Spectrum(looked, size), size);
    const std::size_t times = finer.size() / size;
    const auto factor = static_cast<double>(times);
    float peak = 0.f;
    for (const float x : finer) peak = std::max(peak, std::abs(x));
    const double limit = kOnsetShare * static_cast<double>(peak);
    const auto reaches = [limit](float x) { return static_cast<double>(std::abs(x)) >= limit; };
    const auto at = std::ranges::find_if(finer, reaches) - finer.begin();
    return static_cast<double>(at) / factor;
}

ConvertedSet Convert(SofaSet set, const ConversionOptions& options) {
    if (options.rateHz) Resample(set, *options.rateHz);
    ConvertedSet converted;
    converted.rateHz = set.rateHz;
    converted.numCells = options.numCells;
    converted.warnings = set.warnings;
    double earliest = 1e9;
    for (std::size_t p = 0; p < set.measurements.size(); ++p) {
        const Measurement& measurement = set.measurements[p];
        for (const auto& ear : measurement.ears) {
            if (std::ranges::all_of(ear, [](float x) { return x == 0.f; })) {
                throw tav::Exception("Data.IR of " + NameOf(p) + " is silent");
            }
        }
        const double left = OnsetOf(measurement.ears[0]), right = OnsetOf(measurement.ears[1]);
        earliest = std::min({earliest, left, right});
        const double samples =
            options.itd == ItdMethod::Threshold ? left - right : LagOf(measurement, set.rateHz);
        const double ms = samples / set.rateHz * 1000.0;
        if (std::abs(ms) > kLargestItdMs) {
            converted.warnings.push_back("the ears of " + NameOf(p) + " are " + std::to_string(ms) +
                                         " ms apart");
        }
        converted.points.push_back({measurement.position, {}, ms});
    }
    if (options.numCells == 0) {
        ConvertToTaps(set, options, earliest, converted);
    } else {
        ConvertToCells(set, converted);
    }
    return converted;
}

}  // namespace SofaTool
