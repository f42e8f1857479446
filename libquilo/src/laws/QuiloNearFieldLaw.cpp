// SPDX-License-Identifier: MIT
#include "laws/QuiloNearFieldLaw.h"

#include "laws/QuiloBesselRoots.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <numbers>

namespace Quilo {

namespace {

constexpr double kMostGain = 10.0;        // 20 dB, with the high-pass
constexpr double kMostGainUncut = 100.0;  // 40 dB, without it
constexpr double kFullTurn = 2.0 * std::numbers::pi;

double Square(double x) { return x * x; }

}  // namespace

NearFieldOrder::NearFieldOrder(unsigned order)
    : cappedRatio_(std::pow(kMostGainUncut, 1.0 / order)) {
    // 1. Poles, and those of the high-pass by descending quality.
    const auto roots = ReverseBesselRoots(order);
    for (std::size_t i = 0; i < roots.size(); ++i) {
        const bool isReal = 2 * i + 1 == order;
        const double angle =
            std::numbers::pi * (2.0 * static_cast<double>(i) + 1.0) / (2.0 * order);
        poles_.push_back({isReal, std::abs(roots[i]), -2.0 * roots[i].real() / std::abs(roots[i]),
                          2.0 * std::sin(angle)});
    }
    // 2. The table of limits.
    const double first = std::log(kMostGain) / order;
    const double span = std::log(static_cast<double>(kHighestNearFieldRatio)) - first;
    firstLog_ = static_cast<float>(first);
    spanLog_ = static_cast<float>(span);
    for (std::size_t j = 1; j < kTableSize; ++j) {
        const double t = static_cast<double>(j) / (kTableSize - 1);
        limits_[j] = static_cast<float>(FindLimit(std::exp(first + span * t * t)) / kFullTurn);
    }
}

double NearFieldOrder::Magnitude(double ratio, double frequency) const {
    // A product this large stays far above every limit, whatever the factors that are left; going
    // on could overflow.
    constexpr double kFarAbove = 1e200;
    double power = 1.0;
    for (const NearFieldPole& pole : poles_) {
        const double zero = pole.magnitude, at = pole.magnitude / ratio;
        if (pole.isReal) {
            power *= (Square(zero) + Square(frequency)) / (Square(at) + Square(frequency));
        } else {
            power *=
                (Square(Square(zero) - Square(frequency)) +
                 Square(pole.damping * zero * frequency)) /
                (Square(Square(at) - Square(frequency)) + Square(pole.damping * at * frequency));
        }
        if (power > kFarAbove) break;
    }
    return std::sqrt(power);
}

double NearFieldOrder::FindLimit(double ratio) const {
    double low = 0.0;
    double high = 1.0;
    while (Magnitude(ratio, high) > kMostGain) high *= 2.0;
    for (int step = 0; step < 40; ++step) {
        const double middle = 0.5 * (low + high);
        (Magnitude(ratio, middle) > kMostGain ? low : high) = middle;
    }
    return high;
}

float NearFieldOrder::LimitFrequency(float logRatio) const noexcept {
    if (!(logRatio > firstLog_)) return 0.f;
    const float place =
        std::sqrt(std::min((logRatio - firstLog_) / spanLog_, 1.f)) * (kTableSize - 1);
    const auto before = std::min(static_cast<std::size_t>(place), kTableSize - 2);
    const float share = place - static_cast<float>(before);
    return limits_[before] + share * (limits_[before + 1] - limits_[before]);
}

const NearFieldOrder& NearFieldOrderOf(unsigned order) {
    static std::mutex mutex;
    static std::vector<std::unique_ptr<const NearFieldOrder>> orders;
    const std::lock_guard lock(mutex);
    if (orders.size() <= order) orders.resize(order + 1);
    if (!orders[order]) orders[order] = std::make_unique<const NearFieldOrder>(order);
    return *orders[order];
}

}  // namespace Quilo
