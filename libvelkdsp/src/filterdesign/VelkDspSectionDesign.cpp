// SPDX-License-Identifier: MIT
#include "filterdesign/VelkDspSectionDesign.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tav {

double IntegratorGain(double frequencyHz, double sampleRateHz) noexcept {
    const double corner = std::clamp(frequencyHz, 1.0, 0.49 * sampleRateHz);
    return std::tan(std::numbers::pi * corner / sampleRateHz);
}

SectionDesign DesignSection(const FilterSetting& setting, double sampleRateHz) noexcept {
    const double g = IntegratorGain(static_cast<double>(setting.frequencyHz), sampleRateHz);
    const double k = 1.0 / std::clamp(static_cast<double>(setting.quality), 0.05, 50.0);
    // The amplitude at half the gain in decibels, usually called A; A and A^2 are both needed.
    const double a =
        std::pow(10.0, std::clamp(static_cast<double>(setting.gainDb), -60.0, 60.0) / 40.0);
    const double root = std::sqrt(a);
    switch (setting.kind) {
        // clang-format off
        //                                  g         k      m0      m1                    m2
        case FilterKind::LowPass:   return {g,        k,     0.0,    0.0,                  1.0};
        case FilterKind::HighPass:  return {g,        k,     1.0,    -k,                   -1.0};
        case FilterKind::BandPass:  return {g,        k,     0.0,    k,                    0.0};
        case FilterKind::Notch:     return {g,        k,     1.0,    -k,                   0.0};
        case FilterKind::Peak:      return {g,        k / a, 1.0,    k / a * (a * a - 1.0), 0.0};
        case FilterKind::LowShelf:  return {g / root, k,     1.0,    k * (a - 1.0),        a * a - 1.0};
        case FilterKind::HighShelf: return {g * root, k,     a * a,  k * (1.0 - a) * a,    1.0 - a * a};
        case FilterKind::AllPass:   return {g,        k,     1.0,    -2.0 * k,             0.0};
        case FilterKind::Off: break;
            // clang-format on
    }
    return {g, k, 1.0, 0.0, 0.0};
}

}  // namespace tav
