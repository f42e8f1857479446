// SPDX-License-Identifier: MIT
#include "CellFit.h"

#include "filterdesign/VelkDspFft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace SofaTool {

namespace {

constexpr double kLargestRadius = 0.985;  // of poles and zeros
constexpr double kDbPerNeper = 8.685889638065037;
constexpr double kLeastPower = 1e-14;

constexpr std::size_t kGridSize = 160;
constexpr double kGridLowestHz = 20.0, kGridHighestHz = 20000.0, kGridShareOfRate = 0.45;
constexpr double kLowestHz = 200.0, kHighestHz = 16000.0;  // of the band that is judged
constexpr double kWeightBeside = 0.5;                      // of this band

constexpr int kMostSteps = 150;
constexpr double kLeastProgress = 1e-5;  // of the cost, in one step
constexpr double kLargestUnknown = 6.0;
constexpr double kPull = 1e-5;   // of the unknowns to where they began
constexpr double kGoodDb = 0.2;  // rms; no other beginning is tried

/// Where cells begin: evenly spread between two frequencies, all of one quality.
struct Beginning {
    double lowestHz, highestHz, quality;
};
constexpr Beginning kBeginnings[] = {{1000, 16000, 3.0}, {600, 14000, 1.5}, {1500, 17000, 4.0}};

/// Equivalent rectangular bandwidths below a frequency, the frequency, and a measure of how many
/// of them there are in a hertz.
constexpr double kErbsPerDecade = 21.4, kErbPerHz = 0.00437;
double ErbOf(double hz) { return kErbsPerDecade * std::log10(1.0 + kErbPerHz * hz); }
double HzOf(double erb) { return (std::pow(10.0, erb / kErbsPerDecade) - 1.0) / kErbPerHz; }
double ErbDensity(double hz) { return 1.0 / (1.0 + kErbPerHz * hz); }

double Square(double x) { return x * x; }

/// x of A x = b, by Cholesky's factors of the lower triangle.
std::vector<double> Solved(std::vector<double> a, std::vector<double> b) {
    const std::size_t n = b.size();
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            double sum = a[i * n + j];
            for (std::size_t k = 0; k < j; ++k) sum -= a[i * n + k] * a[j * n + k];
            a[i * n + j] = i == j ? std::sqrt(std::max(sum, 1e-12)) : sum / a[j * n + j];
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t k = 0; k < i; ++k) b[i] -= a[i * n + k] * b[k];
        b[i] /= a[i * n + i];
    }
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = i + 1; k < n; ++k) b[i] -= a[k * n + i] * b[k];
        b[i] /= a[i * n + i];
    }
    return b;
}

/// The polynomial 1 + c1 / z + c2 / z^2 of two unknowns.
struct Quadratic {
    double k1, k2, c1, c2;

    Quadratic(double u1, double u2)
        : k1(std::tanh(u1)),
          k2(std::tanh(u2)),
          c1(kLargestRadius * k1 * (1.0 + k2)),
          c2(kLargestRadius * kLargestRadius * k2) {}

    /// z times the polynomial, on the unit circle.
    std::complex<double> At(const std::complex<double>& z) const {
        return {c1 + (1.0 + c2) * z.real(), (1.0 - c2) * z.imag()};
    }
    /// How its level in dB grows with both unknowns.
    std::pair<double, double> Slopes(const std::complex<double>& z) const {
        const std::complex<double> value = At(z);
        const double factor = kDbPerNeper / std::norm(value);
        const double byC1 = factor * value.real();
        const double byC2 = factor * (value.real() * z.real() - value.imag() * z.imag());
        return {kLargestRadius * (1.0 - k1 * k1) * (1.0 + k2) * byC1,
                kLargestRadius * (1.0 - k2 * k2) * (k1 * byC1 + kLargestRadius * byC2)};
    }
};

/// What unknowns stand for: the gain in dB, then two for each quadratic.
struct Cascade {
    double gainDb;
    std::vector<Quadratic> quadratics;  // numerator and denominator of the first cell, the next ...

    explicit Cascade(std::span<const double> unknowns) : gainDb(unknowns[0]) {
        for (std::size_t i = 1; i < unknowns.size(); i += 2) {
            quadratics.emplace_back(unknowns[i], unknowns[i + 1]);
        }
    }
    double LevelAt(const std::complex<double>& z) const {
        double ratio = 1.0;
        for (std::size_t q = 0; q < quadratics.size(); q += 2) {
            ratio *= std::norm(quadratics[q].At(z)) / std::norm(quadratics[q + 1].At(z));
        }
        return gainDb + 10.0 * std::log10(ratio);
    }
};

}  // namespace

/// One way down from a beginning.
class CellFitter::Descent {
public:
    Descent(const CellFitter& fitter, const Row& levels, Row start)
        : points_(fitter.points_),
          levels_(levels),
          start_(std::move(start)),
          unknowns_(start_) {}

    /// @return where it ended
    const Row& Run() {
        double damping = 0.1, cost = CostOf(unknowns_);
        for (int step = 0; step < kMostSteps; ++step) {
            Row moved = Step(damping);
            const double reached = CostOf(moved);
            if (!(reached < cost)) {
                if (damping >= 1e6) break;
                damping *= 4.0;
                continue;
            }
            const bool isDone = cost - reached < kLeastProgress * cost;
            unknowns_ = std::move(moved);
            cost = reached;
            damping = std::max(0.4 * damping, 1e-7);
            if (isDone) break;
        }
        return unknowns_;
    }

private:
    double MissAt(const Cascade& cascade, std::size_t k) const {
        return points_[k].weight * (cascade.LevelAt(points_[k].turn) - levels_[k]);
    }
    double CostOf(const Row& unknowns) const {
        const Cascade cascade(unknowns);
        double misses = 0.0, pull = 0.0;
        for (std::size_t k = 0; k < kGridSize; ++k) misses += Square(MissAt(cascade, k));
        for (std::size_t i = 1; i < unknowns.size(); ++i) pull += Square(unknowns[i] - start_[i]);
        return misses / kGridSize + kPull * pull;
    }

    /// The unknowns after a step.
    Row Step(double damping) const {
        const std::size_t n = unknowns_.size();
        const Cascade cascade(unknowns_);
        Row normal(n * n), down(n), slopes(n);
        for (std::size_t k = 0; k < kGridSize; ++k) {
            const double weight = points_[k].weight, miss = MissAt(cascade, k);
            slopes[0] = weight;
            for (std::size_t q = 0; q < cascade.quadratics.size(); ++q) {
                const auto [by1, by2] = cascade.quadratics[q].Slopes(points_[k].turn);
                const double sign = q % 2 == 0 ? weight : -weight;
                slopes[1 + 2 * q] = sign * by1;
                slopes[2 + 2 * q] = sign * by2;
            }
            for (std::size_t i = 0; i < n; ++i) {
                down[i] -= slopes[i] * miss / kGridSize;
                for (std::size_t j = 0; j <= i; ++j)
                    normal[i * n + j] += slopes[i] * slopes[j] / kGridSize;
            }
        }
        for (std::size_t i = 0; i < n; ++i) {
            double& diagonal = normal[i * n + i];
            if (i > 0) {
                diagonal += kPull;
                down[i] -= kPull * (unknowns_[i] - start_[i]);
            }
            diagonal += damping * (diagonal + 0.001) + 1e-6;
        }
        Row moved = Solved(std::move(normal), std::move(down));
        double largest = 1.0;
        for (const double part : moved) largest = std::max(largest, std::abs(part));
        for (std::size_t i = 0; i < n; ++i) {
            moved[i] = unknowns_[i] + moved[i] / largest;
            if (i > 0) moved[i] = std::clamp(moved[i], -kLargestUnknown, kLargestUnknown);
        }
        return moved;
    }

    const std::vector<Point>& points_;
    const Row& levels_;
    const Row start_;
    Row unknowns_;
};

CellFitter::CellFitter(double rateHz, std::size_t numTaps, std::size_t numCells)
    : rateHz_(rateHz),
      numCells_(numCells),
      size_(std::clamp(std::bit_ceil(2 * numTaps), std::size_t{8192}, tav::Fft::kMaxSize)) {
    const double top = std::min(kGridHighestHz, kGridShareOfRate * rateHz);
    const double perBin = rateHz / static_cast<double>(size_);
    const double lastBin = 0.5 * static_cast<double>(size_);
    for (std::size_t k = 0; k < kGridSize; ++k) {
        const double part = static_cast<double>(k) / (kGridSize - 1);
        const double hz = HzOf(std::lerp(ErbOf(kGridLowestHz), ErbOf(top), part));
        const bool isJudged = hz >= kLowestHz && hz <= kHighestHz;
        // A bell of one bandwidth, up to where nothing is left of it.
        const double heard = std::max(hz, kLowestHz), centre = ErbOf(heard);
        const auto binAt = [&](double erb) {
            return static_cast<std::size_t>(std::clamp(HzOf(erb) / perBin, 1.0, lastBin));
        };
        Band band{binAt(centre - 2.0), {}};
        double sum = 0.0;
        for (std::size_t bin = band.first; bin <= binAt(centre + 2.0); ++bin) {
            const double at = static_cast<double>(bin) * perBin;
            band.shares.push_back(std::exp(-std::numbers::pi * Square(ErbOf(at) - centre)) *
                                  ErbDensity(at));
            sum += band.shares.back();
        }
        for (double& share : band.shares) share /= sum;
        points_.push_back({hz, isJudged ? 1.0 : kWeightBeside,
                           std::polar(1.0, 2.0 * std::numbers::pi * hz / rateHz), std::move(band)});
    }
}

/// Decibels at the points of the grid.
CellFitter::Row CellFitter::LevelsOf(std::span<const float> response) const {
    tav::Fft fft(size_);
    std::vector<float> signal(size_), re(fft.NumBins()), im(fft.NumBins());
    std::copy_n(response.begin(), std::min(response.size(), size_), signal.begin());
    fft.Forward(signal, re, im);
    Row levels;
    for (const Point& point : points_) {
        double power = 0.0;
        for (std::size_t k = 0; k < point.band.shares.size(); ++k) {
            const std::size_t bin = point.band.first + k;
            power += point.band.shares[k] *
                     std::norm(std::complex<double>(static_cast<double>(re[bin]),
                                                    static_cast<double>(im[bin])));
        }
        levels.push_back(10.0 * std::log10(std::max(power, kLeastPower)));
    }
    return levels;
}

/// Zeros on poles: cells that do nothing yet.
CellFitter::Row CellFitter::StartFor(double lowestHz, double highestHz, double quality) const {
    const double top = std::min(highestHz, kGridShareOfRate * rateHz_);
    Row unknowns{0.0};
    for (std::size_t c = 0; c < numCells_; ++c) {
        const double part = static_cast<double>(c) / static_cast<double>(numCells_ - 1);
        const double hz = HzOf(std::lerp(ErbOf(lowestHz), ErbOf(top), part));
        const double radius = std::exp(-std::numbers::pi * hz / (quality * rateHz_));
        const double k2 = Square(std::min(radius / kLargestRadius, 0.97));
        const double k1 =
            -2.0 * std::sqrt(k2) * std::cos(2.0 * std::numbers::pi * hz / rateHz_) / (1.0 + k2);
        for (int twice = 0; twice < 2; ++twice) {
            unknowns.insert(unknowns.end(), {std::atanh(k1), std::atanh(k2)});
        }
    }
    return unknowns;
}

CellFit CellFitter::ResultOf(const Row& unknowns, const Row& levels) const {
    CellFit fit;
    const Cascade cascade(unknowns);
    const double gain = std::pow(10.0, cascade.gainDb / 20.0 / static_cast<double>(numCells_));
    const auto f = [](double v) { return static_cast<float>(v); };
    for (std::size_t c = 0; c < numCells_; ++c) {
        const Quadratic& zeros = cascade.quadratics[2 * c];
        const Quadratic& poles = cascade.quadratics[2 * c + 1];
        fit.cells.push_back(
            {f(gain), f(gain * zeros.c1), f(gain * zeros.c2), f(poles.c1), f(poles.c2)});
    }
    double squares = 0.0, count = 0.0;
    for (std::size_t k = 0; k < kGridSize; ++k) {
        if (points_[k].weight < 1.0) continue;
        const double miss = std::abs(cascade.LevelAt(points_[k].turn) - levels[k]);
        squares += Square(miss), ++count;
        fit.worstDb = std::max(fit.worstDb, miss);
    }
    fit.rmsDb = std::sqrt(squares / count);
    return fit;
}

CellFit CellFitter::Fit(std::span<const float> response) const {
    const Row levels = LevelsOf(response);
    double mean = 0.0;
    for (const double level : levels) mean += level / kGridSize;
    CellFit best;
    for (const Beginning& beginning : kBeginnings) {
        Row start = StartFor(beginning.lowestHz, beginning.highestHz, beginning.quality);
        start[0] = mean;
        Descent descent(*this, levels, std::move(start));
        CellFit result = ResultOf(descent.Run(), levels);
        if (best.cells.empty() || result.rmsDb < best.rmsDb) best = std::move(result);
        if (best.rmsDb <= kGoodDb) break;
    }
    return best;
}

}  // namespace SofaTool
