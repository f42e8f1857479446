// SPDX-License-Identifier: MIT
#include "reference/PlainDelay.h"

#include <cmath>
#include <cstddef>

namespace Plain {

namespace {

/// Through (0, a) and (1, b) with the slopes there.
double CubicThrough(double a, double b, double slopeA, double slopeB, double f) {
    const double bend = a - b;
    return a + f * (slopeA +
                    f * (-3.0 * bend - 2.0 * slopeA - slopeB + f * (2.0 * bend + slopeA + slopeB)));
}

/// The polynomial of least degree through four points at -1, 0, 1, 2.
double ThroughFour(const double (&y)[4], double f) {
    double sum = 0.0;
    for (int i = 0; i < 4; ++i) {
        double basis = 1.0;
        for (int j = 0; j < 4; ++j) {
            if (j != i) basis *= (f - (j - 1)) / (i - j);
        }
        sum += basis * y[i];
    }
    return sum;
}

/// The B-spline of degree 3 around 0.
double Spline(double distance) {
    const double x = std::abs(distance);
    if (x >= 2.0) return 0.0;
    if (x >= 1.0) return std::pow(2.0 - x, 3.0) / 6.0;
    return 2.0 / 3.0 - x * x + x * x * x / 2.0;
}

}  // namespace

void Delay::SetDelay(float samples, bool immediate) {
    const double target = static_cast<double>(samples);
    if (target == target_ && !immediate) return;
    start_ = PresentDelay();
    target_ = target;
    count_ = 0.0;
    length_ = immediate ? 0.0 : std::floor(interpolationMs_ * sampleRate_ / 1000.0);
}

double Delay::PresentDelay() const {
    return count_ >= length_ ? target_ : start_ + (target_ - start_) * count_ / length_;
}

/// @param position  a whole number
double Delay::At(double position) const {
    return position < 0.0 ? 0.0 : history_.at(static_cast<std::size_t>(position));
}

double Delay::Process(double sample) {
    history_.push_back(sample);
    ++count_;
    const double delay = PresentDelay();
    const double position = static_cast<double>(history_.size() - 1) - delay;
    if (code_ == 3) {
        const double here = std::floor(position);
        const double f = position - here;
        const double eta = f / (2.0 - f);
        const double next = f == 0.0 ? 0.0 : At(here + 1.0);
        return lastAllpass_ = eta * (next - lastAllpass_) + At(here);
    }
    if (delay == 0.0) return sample;
    return Curve(position, delay);
}

double Delay::Curve(double position, double delay) const {
    const double here = std::floor(position);
    const double f = position - here;
    const double y0 = At(here);
    const double y1 = At(here + 1.0);
    switch (code_) {
        case 1:
        case 2:
        case 5:
        case 6:
        case 7:
        case 8: break;
        default: return At(std::floor(position + 0.5));
    }
    const double line = y0 + f * (y1 - y0);
    if (code_ == 1 || delay < 1.0) return line;
    const double before = At(here - 1.0);
    const double after = f == 0.0 ? 0.0 : At(here + 2.0);
    const double curvature = before - y0 - y1 + after;
    switch (code_) {
        case 5: return CubicThrough(y0, y1, 0.5 * (y1 - before), 0.5 * (after - y0), f);
        case 6: return line - 0.5 * f * (1.0 - f) * curvature;
        case 7:
            return before * Spline(f + 1.0) + y0 * Spline(f) + y1 * Spline(1.0 - f) +
                   after * Spline(2.0 - f);
        case 8: return CubicThrough(y0, y1, 0.6 * (y1 - before), 0.6 * (after - y0), f);
        default: return ThroughFour({before, y0, y1, after}, f);
    }
}

}  // namespace Plain
