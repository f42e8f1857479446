// SPDX-License-Identifier: MIT
// Filter sections in integrator form: from corner, quality and gain to coefficients.
//
// The integrator form is the bilinear transform of the analog section. Its states stay at signal
// level and its coefficients may change while it runs, so it suits filters that glide or whose
// corner is far below the sample rate.
#pragma once

#include <cstdint>

namespace tav {

/// Kinds of equaliser bands; any other code acts as Off.
enum class FilterKind : std::int32_t {
    Off,
    LowPass,
    HighPass,
    BandPass,  // 0 dB at the peak
    Notch,
    Peak,
    LowShelf,
    HighShelf,
    AllPass,
};

/// A user's setting of a band. Clamped when it is used: the frequency to 1 Hz .. 0.49 of the
/// sample rate, the quality to 0.05 .. 50, the gain to -60 .. 60 dB.
struct FilterSetting {
    FilterKind kind = FilterKind::Off;
    float frequencyHz = 1000.f;
    float quality = 0.7f;
    float gainDb = 0.f;

    bool operator==(const FilterSetting&) const = default;
};

/// A second-order section with the mix of its output: y = m0 x + m1 bandpass + m2 lowpass.
struct SectionDesign {
    double g = 1.0;  // tan(pi f / fs), above 0
    double k = 1.0;  // damping, above 0
    double m0 = 1.0;
    double m1 = 0.0;
    double m2 = 0.0;
};

/// Thread: any.
SectionDesign DesignSection(const FilterSetting& setting, double sampleRateHz) noexcept;

/// The g of a corner, clamped as in FilterSetting.
double IntegratorGain(double frequencyHz, double sampleRateHz) noexcept;

/// Coefficients of the feedback loop of a second-order section, from g and k.
struct SectionLoop {
    double a1;
    double a2;
    double a3;

    static constexpr SectionLoop Of(double g, double k) noexcept {
        const double a1 = 1.0 / (1.0 + g * (g + k));
        return {a1, g * a1, g * g * a1};
    }
};

}  // namespace tav
