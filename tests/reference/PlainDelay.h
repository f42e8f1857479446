// SPDX-License-Identifier: MIT
// A delay line the slow way: every sample ever heard is kept, everything is computed in double.
#pragma once

#include <cstdint>
#include <vector>

namespace Plain {

/// The same setters as tav::Delay, with delays in samples; one sample at a time.
class Delay {
public:
    explicit Delay(double sampleRateHz) : sampleRate_(sampleRateHz) {}

    void SetDelay(float samples, bool immediate);
    void SetInterpolationTime(double ms) { interpolationMs_ = ms; }
    void SetKind(std::uint32_t code) { code_ = code; }

    double Process(double sample);

private:
    double At(double position) const;
    double PresentDelay() const;
    double Curve(double position, double delay) const;

    double sampleRate_;
    double interpolationMs_ = 30.0;
    std::uint32_t code_ = 2;
    std::vector<double> history_;
    double start_ = 0.0;
    double target_ = 0.0;
    double count_ = 0.0;  // whole samples of the glide
    double length_ = 0.0;
    double lastAllpass_ = 0.0;
};

}  // namespace Plain
