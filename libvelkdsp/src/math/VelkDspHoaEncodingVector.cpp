// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaEncodingVector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

/// A direction in 64 bits, where no square of finite floats overflows.
struct UnitVector {
    double x, y, z;
};

UnitVector Normalised(const CartesianVector& v) noexcept {
    const double x = v.x;
    const double y = v.y;
    const double z = v.z;
    const double r = std::sqrt(x * x + y * y + z * z);
    if (r == 0.0) return {std::copysign(1.0, x), 0.0, 0.0};  // atan2(0, -0) is half a turn
    return {x / r, y / r, z / r};
}

}  // namespace

HoaEncodingVector::HoaEncodingVector(unsigned order,
                                     unsigned dimension,
                                     SphericalHarmonic::Normalization normalization,
                                     Mode mode)
    : normalization_(normalization),
      recurrence_(order, dimension, normalization),
      numChannels_(SphericalHarmonic::NumChannels(order, dimension)),
      precise_(numChannels_),
      cosines_(std::size_t{order} + 1),
      sines_(std::size_t{order} + 1),
      last_(std::size_t{order} + 1),
      before_(std::size_t{order} + 1) {
    SetMode(mode);
}

void HoaEncodingVector::Evaluate(const CartesianVector& direction) noexcept {
    const auto [x, y, z] = Normalised(direction);
    const unsigned order = recurrence_.order;
    double* const out = precise_.Data();
    cosines_[0] = 1.0;
    sines_[0] = 0.0;
    for (std::size_t m = 1; m <= order; ++m) {
        cosines_[m] = x * cosines_[m - 1] - y * sines_[m - 1];
        sines_[m] = x * sines_[m - 1] + y * cosines_[m - 1];
    }
    if (recurrence_.dimension == 2) {
        out[0] = recurrence_.sectoral[0];
        for (std::size_t m = 1; m <= order; ++m) {
            out[2 * m - 1] = recurrence_.sectoral[m] * sines_[m];
            out[2 * m] = recurrence_.sectoral[m] * cosines_[m];
        }
        return;
    }
    const HoaStep* step = recurrence_.steps.Data();
    for (std::size_t n = 0; n <= order; ++n) {
        double* const centre = out + n * (n + 1);
        for (std::size_t m = 0; m < n; ++m, ++step) {
            const double next = step->last * z * last_[m] - step->before * before_[m];
            before_[m] = std::exchange(last_[m], next);
        }
        before_[n] = 0.0;
        last_[n] = recurrence_.sectoral[n];
        for (std::size_t m = 0; m <= n; ++m) {
            *(centre - m) = last_[m] * sines_[m];
            centre[m] = last_[m] * cosines_[m];
        }
    }
}

template <class Real>
void HoaEncodingVector::ComputeInto(const CartesianVector& direction,
                                    std::span<Real> gains) noexcept {
    if (!IsFinite(direction)) return;
    const std::size_t count = std::min<std::size_t>(gains.size(), numChannels_);
    if (mode_ == Mode::Fast) {
        const std::size_t index = HoaLookupTable::IndexOf(direction);
        for (std::size_t c = 0; c < count; ++c) gains[c] = table_->Gain(c, index);
        return;
    }
    Evaluate(direction);
    for (std::size_t c = 0; c < count; ++c) gains[c] = static_cast<Real>(precise_[c]);
}

void HoaEncodingVector::Compute(const CartesianVector& direction, std::span<float> gains) noexcept {
    ComputeInto(direction, gains);
}

void HoaEncodingVector::Compute(const CartesianVector& direction, Vector<float>& gains) {
    gains.Resize(numChannels_);
    ComputeInto(direction, std::span<float>(gains));
}

void HoaEncodingVector::Compute(const CartesianVector& direction, Vector<double>& gains) {
    gains.Resize(numChannels_);
    ComputeInto(direction, std::span<double>(gains));
}

void HoaEncodingVector::SetMode(Mode mode) {
    if (mode == Mode::Fast && !table_) {
        table_ = HoaLookupTable::Shared(Order(), Dimension(), normalization_);
    }
    mode_ = mode == Mode::Fast ? Mode::Fast : Mode::Precise;
}

void HoaEncodingVector::SetNormalization(SphericalHarmonic::Normalization normalization) {
    if (normalization == normalization_) return;
    HoaRecurrence recurrence(Order(), Dimension(), normalization);
    if (table_) table_ = HoaLookupTable::Shared(Order(), Dimension(), normalization);
    recurrence_ = std::move(recurrence);
    normalization_ = normalization;
}

}  // namespace tav
