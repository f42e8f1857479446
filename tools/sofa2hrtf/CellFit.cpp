// SPDX-License-Identifier: MIT
#include "CellFit.h"

#include "filterdesign/VelkDspFft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <utility>
#include <vector>

namespace SofaTool {

namespace {

using Complex = std::complex<double>;
using Row = std::vector<double>;

constexpr std::size_t kGridSize = 128;
constexpr double kLargestRadius = 0.985;
constexpr double kDbPerNeper = 8.685889638065037;
constexpr double kLeastPower = 1e-14;
constexpr double kLowestHz = 200.0;
constexpr double kHighestHz = 16000.0;

/// Levels of a response on the linear grid of a transform, and smoothed ones anywhere.
class Level {
public:
    Level(std::span<const float> response, double rateHz) : rateHz_(rateHz) {
        const std::size_t size =
            std::clamp(std::bit_ceil(2 * response.size()), std::size_t{4096}, tav::Fft::kMaxSize);
        tav::Fft fft(size);
        std::vector<float> signal(size), re(fft.NumBins()), im(fft.NumBins());
        std::copy_n(response.begin(), std::min(response.size(), size), signal.begin());
        fft.Forward(signal, re, im);
        sums_.push_back(0.0);
        for (std::size_t k = 0; k < re.size(); ++k) {
            const double power = static_cast<double>(re[k]) * static_cast<double>(re[k]) +
                                 static_cast<double>(im[k]) * static_cast<double>(im[k]);
            sums_.push_back(sums_.back() + power);
        }
    }

    /// Mean power of a sixth of an octave round a frequency, at least of one bin.
    double PowerAt(double hz) const {
        const double half = std::exp2(1.0 / 12.0);
        const double numBins = static_cast<double>(sums_.size() - 1);
        const double perHz = (numBins - 1.0) / (rateHz_ / 2.0);
        double low = hz / half * perHz, high = hz * half * perHz;
        if (high - low < 1.0) low = hz * perHz - 0.5, high = hz * perHz + 0.5;
        low = std::clamp(low + 0.5, 0.0, numBins - 1.0);
        high = std::clamp(high + 0.5, low + 1.0, numBins);
        return std::max((SumTo(high) - SumTo(low)) / (high - low), kLeastPower);
    }

private:
    double SumTo(double bins) const {
        const auto whole = std::min(static_cast<std::size_t>(bins), sums_.size() - 2);
        return std::lerp(sums_[whole], sums_[whole + 1], bins - static_cast<double>(whole));
    }

    double rateHz_;
    Row sums_;  // of the powers before each bin
};

/// Frequencies in equal steps of hearing, after Traunmueller (1990).
Row PointsOfHearing(double lowestHz, double highestHz) {
    const auto bark = [](double hz) { return 26.81 * hz / (1960.0 + hz) - 0.53; };
    const auto back = [](double z) { return 1960.0 * (z + 0.53) / (26.28 - z); };
    Row points(kGridSize);
    for (std::size_t k = 0; k < kGridSize; ++k) {
        const double part = static_cast<double>(k) / (kGridSize - 1);
        points[k] = back(std::lerp(bark(lowestHz), bark(highestHz), part));
    }
    return points;
}

/// The roots of 1 + c1 x + .. + cn x^n turned over: those of x^n + c1 x^(n - 1) + .., by Aberth's
/// simultaneous iteration.
std::vector<Complex> RootsOf(const Row& c) {
    const std::size_t n = c.size() - 1;
    std::vector<Complex> roots(n);
    for (std::size_t i = 0; i < n; ++i) {
        roots[i] = std::polar(
            0.9, 2.0 * std::numbers::pi * (static_cast<double>(i) + 0.25) / static_cast<double>(n));
    }
    for (int round = 0; round < 100; ++round) {
        double largest = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            Complex value = c[0], slope = 0.0, crowd = 0.0;
            for (std::size_t k = 1; k <= n; ++k) {
                slope = slope * roots[i] + value;
                value = value * roots[i] + c[k];
            }
            if (std::abs(value) < 1e-14) continue;
            const Complex newton = value / slope;
            for (std::size_t j = 0; j < n; ++j) {
                if (j != i) crowd += 1.0 / (roots[i] - roots[j]);
            }
            const Complex step = newton / (1.0 - newton * crowd);
            if (!std::isfinite(std::abs(step))) continue;
            roots[i] -= step;
            largest = std::max(largest, std::abs(step));
        }
        if (largest < 1e-12) break;
    }
    return roots;
}

/// A pair of poles or zeros.
struct Pair {
    double radius = 0.5;
    double angle = 1.0;
};

/// Where an all-pole model of a power spectrum has its poles, on an axis on which the frequencies
/// that hearing tells apart lie further apart.
std::vector<Pair> StartOf(const Level& level,
                          double rateHz,
                          std::size_t numPairs,
                          double exponent) {
    const double warp = std::clamp(
        1.0674 * std::sqrt(2.0 / std::numbers::pi * std::atan(0.06583 * rateHz / 1000.0)) - 0.1916,
        0.0, 0.9);
    constexpr std::size_t kGrid = 512;
    const std::size_t order = 2 * numPairs;
    Row correlation(order + 1);
    for (std::size_t k = 0; k < kGrid; ++k) {
        const double turn = std::numbers::pi * (static_cast<double>(k) + 0.5) / kGrid;
        const double real =
            turn - 2.0 * std::atan2(warp * std::sin(turn), 1.0 + warp * std::cos(turn));
        const double hz = real / (2.0 * std::numbers::pi) * rateHz;
        const double power = std::pow(level.PowerAt(std::max(hz, 50.0)), exponent);
        for (std::size_t lag = 0; lag <= order; ++lag) {
            correlation[lag] += power * std::cos(turn * static_cast<double>(lag));
        }
    }
    correlation[0] *= 1.0 + 1e-6;
    Row model{1.0};  // Levinson's recursion
    double error = correlation[0];
    for (std::size_t m = 1; m <= order; ++m) {
        double reflection = 0.0;
        for (std::size_t k = 0; k < m; ++k) reflection -= model[k] * correlation[m - k];
        reflection /= error;
        model.push_back(0.0);
        Row next = model;
        for (std::size_t k = 0; k <= m; ++k) next[k] += reflection * model[m - k];
        model = std::move(next);
        error *= 1.0 - reflection * reflection;
    }
    std::vector<Pair> pairs;
    Row real;  // roots without a partner
    for (const Complex& root : RootsOf(model)) {
        const Complex place = (root + warp) / (1.0 + warp * root);
        if (std::abs(place.imag()) < 1e-7) {
            real.push_back(place.real());
        } else if (place.imag() > 0.0) {
            pairs.push_back({std::abs(place), std::arg(place)});
        }
    }
    std::ranges::sort(real);
    for (std::size_t k = 0; k + 1 < real.size(); k += 2) {
        pairs.push_back({std::sqrt(std::abs(real[k] * real[k + 1])),
                         real[k] + real[k + 1] > 0.0 ? 0.05 : std::numbers::pi - 0.05});
    }
    pairs.resize(numPairs, Pair{});
    std::ranges::sort(pairs, {}, &Pair::angle);
    return pairs;
}

/// The parameters of a fit: the level in dB, then radius and angle of every zero and every pole.
class Fit {
public:
    Fit(const Level& level, double rateHz, std::size_t numCells, double share)
        : numCells_(numCells),
          hz_(PointsOfHearing(kLowestHz, std::min(kHighestHz, 0.45 * rateHz))) {
        for (const double hz : hz_) {
            turns_.push_back(2.0 * std::numbers::pi * hz / rateHz);
            target_.push_back(10.0 * std::log10(level.PowerAt(hz)));
        }
        parameters_.push_back(0.0);
        // Half of the level each: its peaks to the poles, its notches to the zeros.
        for (const double exponent : {share - 1.0, share}) {
            for (const Pair& pair : StartOf(level, rateHz, numCells, exponent)) {
                parameters_.push_back(std::min(pair.radius, 0.97));
                parameters_.push_back(pair.angle);
            }
        }
        const Row misses = MissesOf(parameters_);
        for (const double miss : misses) parameters_[0] += miss / kGridSize;
    }

    void Run() {
        double damping = 1e-2;
        Row misses = MissesOf(parameters_);
        double error = SumOfSquares(misses);
        for (int step = 0; step < 120 && damping < 1e7; ++step) {
            const Row candidate = Step(misses, damping);
            Row next = MissesOf(candidate);
            const double reached = SumOfSquares(next);
            if (reached < error) {
                const bool isDone = error - reached < 1e-5 * error;
                parameters_ = candidate;
                misses = std::move(next);
                error = reached;
                damping *= 0.3;
                if (isDone) break;
            } else {
                damping *= 4.0;
            }
        }
    }

    CellFit Result() const {
        CellFit fit;
        const double gain = std::pow(10.0, parameters_[0] / 20.0 / static_cast<double>(numCells_));
        for (std::size_t c = 0; c < numCells_; ++c) {
            const Pair zero = PairAt(c), pole = PairAt(numCells_ + c);
            const auto f = [](double v) { return static_cast<float>(v); };
            fit.cells.push_back({f(gain), f(-2.0 * gain * zero.radius * std::cos(zero.angle)),
                                 f(gain * zero.radius * zero.radius),
                                 f(-2.0 * pole.radius * std::cos(pole.angle)),
                                 f(pole.radius * pole.radius)});
        }
        const Row misses = MissesOf(parameters_);
        fit.rmsDb = std::sqrt(SumOfSquares(misses) / kGridSize);
        for (const double miss : misses) fit.worstDb = std::max(fit.worstDb, std::abs(miss));
        return fit;
    }

private:
    Pair PairAt(std::size_t index) const {
        return {parameters_[1 + 2 * index], parameters_[2 + 2 * index]};
    }
    static double SumOfSquares(const Row& row) {
        double sum = 0.0;
        for (const double v : row) sum += v * v;
        return sum;
    }

    /// Squared distances from a point of the unit circle to both of a pair, and their slopes.
    struct Distances {
        double near, far, nearSine, farSine, cosNear, cosFar;
        Distances(double radius, double angle, double turn)
            : near(0.0),
              far(0.0),
              nearSine(std::sin(turn - angle)),
              farSine(std::sin(turn + angle)),
              cosNear(std::cos(turn - angle)),
              cosFar(std::cos(turn + angle)) {
            near = 1.0 + radius * radius - 2.0 * radius * cosNear;
            far = 1.0 + radius * radius - 2.0 * radius * cosFar;
        }
    };

    Row MissesOf(const Row& p) const {
        Row misses(kGridSize);
        for (std::size_t k = 0; k < kGridSize; ++k) {
            double numerator = 1.0, denominator = 1.0;
            for (std::size_t i = 0; i < 2 * numCells_; ++i) {
                const Distances d(p[1 + 2 * i], p[2 + 2 * i], turns_[k]);
                (i < numCells_ ? numerator : denominator) *= d.near * d.far;
            }
            misses[k] = target_[k] - p[0] - 10.0 * std::log10(numerator / denominator);
        }
        return misses;
    }

    /// The parameters after a damped step.
    Row Step(const Row& misses, double damping) const {
        const std::size_t n = parameters_.size();
        Row normal(n * n), right(n), slopes(n);
        for (std::size_t k = 0; k < kGridSize; ++k) {
            slopes[0] = 1.0;
            for (std::size_t i = 0; i < 2 * numCells_; ++i) {
                const double r = parameters_[1 + 2 * i];
                const Distances d(r, parameters_[2 + 2 * i], turns_[k]);
                const double sign = i < numCells_ ? 1.0 : -1.0;
                slopes[1 + 2 * i] =
                    sign * kDbPerNeper * ((r - d.cosNear) / d.near + (r - d.cosFar) / d.far);
                slopes[2 + 2 * i] =
                    sign * kDbPerNeper * r * (-d.nearSine / d.near + d.farSine / d.far);
            }
            for (std::size_t i = 0; i < n; ++i) {
                right[i] += slopes[i] * misses[k];
                for (std::size_t j = 0; j <= i; ++j) normal[i * n + j] += slopes[i] * slopes[j];
            }
        }
        for (std::size_t i = 0; i < n; ++i) normal[i * n + i] *= 1.0 + damping;
        for (std::size_t i = 0; i < n; ++i) normal[i * n + i] += 1e-6;
        Row moved = Solved(std::move(normal), std::move(right));
        for (std::size_t i = 0; i < n; ++i) moved[i] += parameters_[i];
        for (std::size_t i = 1; i < n; i += 2) {
            moved[i] = std::clamp(moved[i], 0.0, kLargestRadius);
            moved[i + 1] = std::clamp(moved[i + 1], 0.0, std::numbers::pi);
        }
        return moved;
    }

    /// By Cholesky's factors of the lower triangle.
    static Row Solved(Row a, Row b) {
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

    std::size_t numCells_;
    Row hz_, turns_, target_;
    Row parameters_;
};

}  // namespace

CellFit FitCells(std::span<const float> response, double rateHz, std::size_t numCells) {
    const Level level(response, rateHz);
    CellFit best;
    for (const double share : {0.5, 0.7, 0.3}) {
        Fit fit(level, rateHz, numCells, share);
        fit.Run();
        CellFit result = fit.Result();
        if (best.cells.empty() || result.rmsDb < best.rmsDb) best = std::move(result);
    }
    return best;
}

}  // namespace SofaTool
