// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfResampling.h"

#include "filterdesign/VelkDspFft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <numeric>
#include <utility>

namespace Quilo {

namespace {

constexpr double kHighestHz = 21000.0;
constexpr double kLeastPower = 1e-24;
constexpr double kResponseMs = 5.3;  // the narrowest resonances of the built-in set ring as long

/// |H|^2 of a second-order polynomial on the unit circle, in the cosine of the frequency.
struct PowerOfPolynomial {
    double p0, p1, p2;

    PowerOfPolynomial(double c0, double c1, double c2)
        : p0((c0 - c2) * (c0 - c2) + c1 * c1),
          p1(2.0 * c1 * (c0 + c2)),
          p2(4.0 * c0 * c2) {}
    double At(double cosine) const { return p0 + cosine * (p1 + cosine * p2); }
};

/// The logarithms of the magnitudes on a grid from 0 Hz to half of the rate.
std::vector<float> LogMagnitudes(std::span<const tav::BiquadCell> cells,
                                 double cellsRateHz,
                                 double rateHz,
                                 std::size_t numBins) {
    const double highest = std::min(kHighestHz, cellsRateHz / 2.0);
    const double hzPerBin = rateHz / 2.0 / static_cast<double>(numBins - 1);
    std::vector<double> cosines(numBins), powers(numBins, 1.0);
    for (std::size_t k = 0; k < numBins; ++k) {
        const double hz = std::min(static_cast<double>(k) * hzPerBin, highest);
        cosines[k] = std::cos(2.0 * std::numbers::pi * hz / cellsRateHz);
    }
    const auto d = [](float v) { return static_cast<double>(v); };
    for (const tav::BiquadCell& cell : cells) {
        const PowerOfPolynomial zeros(d(cell.b0), d(cell.b1), d(cell.b2));
        const PowerOfPolynomial poles(1.0, d(cell.a1), d(cell.a2));
        for (std::size_t k = 0; k < numBins; ++k) {
            powers[k] *=
                std::max(zeros.At(cosines[k]), 0.0) / std::max(poles.At(cosines[k]), kLeastPower);
        }
    }
    std::vector<float> logs(numBins);
    std::ranges::transform(powers, logs.begin(), [](double power) {
        return static_cast<float>(0.5 * std::log(std::max(power, kLeastPower)));
    });
    return logs;
}

/// @param logs  of the magnitudes on the grid of the transform
/// @return `length` taps, at most half of the transform, the last quarter tapered
std::vector<float> MinimumPhaseOf(tav::Fft& fft, std::vector<float> logs, std::size_t length) {
    const std::size_t size = fft.Size();
    std::vector<float>& re = logs;
    std::vector<float> im(fft.NumBins());
    // The cepstrum, its negative times folded onto the positive ones: the phase of the exponential
    // is then the least there is for that magnitude.
    std::vector<float> signal(size);
    fft.Inverse(re, im, signal);
    for (std::size_t k = 1; k < size / 2; ++k) signal[k] *= 2.f;
    std::fill(signal.begin() + static_cast<std::ptrdiff_t>(size / 2 + 1), signal.end(), 0.f);
    fft.Forward(signal, re, im);
    for (std::size_t k = 0; k < fft.NumBins(); ++k) {
        const float magnitude = std::exp(re[k]);
        re[k] = magnitude * std::cos(im[k]);
        im[k] = magnitude * std::sin(im[k]);
    }
    fft.Inverse(re, im, signal);
    signal.resize(std::min(length, size / 2));
    TaperEnd(signal);
    return signal;
}

/// I0(x), the modified Bessel function.
double BesselI0(double x) {
    double sum = 1.0, term = 1.0;
    for (int k = 1; term > 1e-12 * sum; ++k) {
        term *= x * x / (4.0 * k * k);
        sum += term;
    }
    return sum;
}

}  // namespace

void TaperEnd(std::span<float> taps) {
    const std::size_t length = taps.size() / 4;
    const std::span end = taps.last(length);
    for (std::size_t k = 0; k < length; ++k) {
        const double part = static_cast<double>(k + 1) / static_cast<double>(length + 1);
        end[k] *= static_cast<float>(std::cos(0.5 * std::numbers::pi * part));
    }
}

std::vector<float> MinimumPhaseResponse(std::span<const tav::BiquadCell> cells,
                                        float cellsRateHz,
                                        float rateHz) {
    const double rate = static_cast<double>(rateHz);
    tav::Fft fft(rate > 100000.0 ? 16384 : 8192);
    const auto length = static_cast<std::size_t>(std::ceil(kResponseMs * 0.001 * rate));
    return MinimumPhaseOf(
        fft, LogMagnitudes(cells, static_cast<double>(cellsRateHz), rate, fft.NumBins()),
        (length + 7) / 8 * 8);
}

std::vector<float> MinimumPhaseResponse(std::span<const float> taps) {
    constexpr float kLeastPart = 1e-5f;
    // Eight times as long: nulls of the magnitude have long cepstra, which fold over otherwise.
    const std::size_t size = std::bit_ceil(std::max<std::size_t>(8 * taps.size(), 8192));
    tav::Fft fft(std::min(size, tav::Fft::kMaxSize));
    std::vector<float> signal(fft.Size()), re(fft.NumBins()), im(fft.NumBins());
    std::ranges::copy(taps.first(std::min(taps.size(), signal.size())), signal.begin());
    fft.Forward(signal, re, im);
    std::vector<float> magnitudes(re.size());
    std::ranges::transform(re, im, magnitudes.begin(),
                           [](float a, float b) { return std::hypot(a, b); });
    const float peak = std::ranges::max(magnitudes);
    if (peak == 0.f) return {taps.begin(), taps.end()};
    for (float& magnitude : magnitudes) {
        magnitude = std::log(std::max(magnitude, kLeastPart * peak));
    }
    std::vector<float> response = MinimumPhaseOf(fft, std::move(magnitudes), taps.size());
    response.resize(taps.size());
    return response;
}

ResponseResampler::ResponseResampler(std::size_t numTaps, float fromHz, float toHz) {
    constexpr double kCut = 2.0 * 0.46;  // of half the lower rate
    constexpr double kZeroCrossings = 64.0;
    constexpr double kBeta = 10.06;  // of the Kaiser window: 100 dB
    const double from = static_cast<double>(fromHz), to = static_cast<double>(toHz);
    const double crossingsPerSecond = std::min(from, to) * kCut;
    const double reach = kZeroCrossings / crossingsPerSecond;  // seconds
    const double norm = BesselI0(kBeta);
    const auto count =
        static_cast<std::size_t>(std::ceil(static_cast<double>(numTaps) * to / from));
    for (std::size_t n = 0; n < count; ++n) {
        const double time = static_cast<double>(n) / to;
        const double first = std::max(std::ceil((time - reach) * from), 0.0);
        Weights row{std::min(static_cast<std::size_t>(first), numTaps), {}};
        for (std::size_t m = row.firstTap; m < numTaps; ++m) {
            const double away = time - static_cast<double>(m) / from;
            if (away <= -reach) break;
            const double x = std::numbers::pi * away * crossingsPerSecond;
            const double part = std::min(std::abs(away / reach), 1.0);
            const double window = BesselI0(kBeta * std::sqrt(1.0 - part * part)) / norm;
            const double sinc = std::abs(x) < 1e-9 ? 1.0 : std::sin(x) / x;
            // Per sample of the new rate: the sum of the taps stays.
            row.weights.push_back(static_cast<float>(sinc * window * crossingsPerSecond / to));
        }
        rows_.push_back(std::move(row));
    }
}

std::vector<float> ResponseResampler::Apply(std::span<const float> taps) const {
    std::vector<float> resampled;
    resampled.reserve(rows_.size());
    for (const Weights& row : rows_) {
        const auto first = taps.begin() + static_cast<std::ptrdiff_t>(row.firstTap);
        resampled.push_back(std::inner_product(row.weights.begin(), row.weights.end(), first, 0.f));
    }
    return resampled;
}

}  // namespace Quilo
