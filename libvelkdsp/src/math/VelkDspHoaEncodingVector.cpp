// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaEncodingVector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

constexpr std::size_t kLanes = HoaRecurrence::kLanes;

/// The values of neighbouring degrees, as many as compilers keep in registers.
struct Lanes {
    double v[kLanes];
};

Lanes Load(const double* values) noexcept {
    Lanes lanes{};
    for (std::size_t j = 0; j < kLanes; ++j) lanes.v[j] = values[j];
    return lanes;
}

/// A unit vector in 64 bits, where squares of finite floats do not overflow.
struct UnitVector {
    double x, y, z;
};

UnitVector UnitVectorOf(const CartesianVector& v) noexcept {
    const double x = static_cast<double>(v.x);
    const double y = static_cast<double>(v.y);
    const double z = static_cast<double>(v.z);
    const double r = std::sqrt(x * x + y * y + z * z);
    if (r == 0.0) return {std::copysign(1.0, x), 0.0, 0.0};  // phi is atan2(0, x): 0 or pi
    const double scale = 1.0 / r;
    return {x * scale, y * scale, z * scale};
}

struct Complex {
    double re, im;
};

Complex operator*(Complex a, Complex b) noexcept {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

/// Real and imaginary parts of w^m for whole blocks of m.
/// Each pass doubles the number of powers, so that the chain of products is short.
void FillPowers(Complex w, std::span<double> cosines, std::span<double> sines) noexcept {
    const Complex square = w * w;
    const Complex first[kLanes] = {{1.0, 0.0}, w, square, square * w};
    for (std::size_t m = 0; m < kLanes; ++m) {
        cosines[m] = first[m].re;
        sines[m] = first[m].im;
    }
    Complex power = square * square;
    for (std::size_t known = kLanes; known < cosines.size(); known *= 2, power = power * power) {
        const std::size_t end = std::min(2 * known, cosines.size());
        for (std::size_t m = known; m < end; m += kLanes) {
            const Lanes c = Load(&cosines[m - known]);
            const Lanes s = Load(&sines[m - known]);
            for (std::size_t j = 0; j < kLanes; ++j) {
                cosines[m + j] = power.re * c.v[j] - power.im * s.v[j];
                sines[m + j] = power.re * s.v[j] + power.im * c.v[j];
            }
        }
    }
}

/// Stores the channels of one order for the first `count` degrees of a block.
/// @param sine, cosine  channels of the block's first degree; sine channels are stored downwards
template <class Real>
void StoreRow(Real* sine,
              Real* cosine,
              const Lanes& q,
              const Lanes& cosines,
              const Lanes& sines,
              std::size_t count) noexcept {
    Real c[kLanes];
    Real s[kLanes];
    for (std::size_t j = 0; j < kLanes; ++j) {
        c[j] = static_cast<Real>(q.v[j] * cosines.v[j]);
        s[j] = static_cast<Real>(q.v[j] * sines.v[j]);
    }
    for (std::size_t j = 0; j < count; ++j) *(sine - j) = s[j];
    for (std::size_t j = 0; j < count; ++j) cosine[j] = c[j];  // last, over the sine of degree 0
}

template <class Real>
void Encode2D(const HoaRecurrence& recurrence,
              std::span<const double> cosines,
              std::span<const double> sines,
              Real* gains) noexcept {
    gains[0] = static_cast<Real>(recurrence.sectoral[0]);
    for (std::size_t m = 1; m <= recurrence.order; ++m) {
        gains[2 * m - 1] = static_cast<Real>(recurrence.sectoral[m] * sines[m]);
        gains[2 * m] = static_cast<Real>(recurrence.sectoral[m] * cosines[m]);
    }
}

template <class Real>
void Encode3D(const HoaRecurrence& recurrence,
              double z,
              std::span<const double> cosines,
              std::span<const double> sines,
              Real* gains) noexcept {
    const double* toLast = recurrence.last.Data();
    const double* toBefore = recurrence.before.Data();
    for (std::size_t first = 0; first <= recurrence.order; first += kLanes) {
        const Lanes c = Load(&cosines[first]);
        const Lanes s = Load(&sines[first]);
        Lanes last = Load(&recurrence.sectoral[first]);
        Lanes before = last;
        Real* centre = gains + first * (first + 1);
        StoreRow(centre - first, centre + first, last, c, s, 1);
        const auto toOrder = [&](std::size_t n, std::size_t count) {
            Lanes next{};
            for (std::size_t j = 0; j < kLanes; ++j) {
                next.v[j] = toLast[j] * z * last.v[j] - toBefore[j] * before.v[j];
            }
            before = last;
            last = next;
            toLast += kLanes;
            toBefore += kLanes;
            centre += 2 * n;
            StoreRow(centre - first, centre + first, last, c, s, count);
        };
        std::size_t n = first + 1;
        for (; n <= recurrence.order && n < first + kLanes - 1; ++n) toOrder(n, n - first + 1);
        for (; n <= recurrence.order; ++n) toOrder(n, kLanes);
    }
}

}  // namespace

HoaEncodingVector::HoaEncodingVector(unsigned order,
                                     unsigned dimension,
                                     SphericalHarmonic::Normalization normalization,
                                     Mode mode)
    : normalization_(normalization),
      recurrence_(order, dimension, normalization),
      numChannels_(SphericalHarmonic::NumChannels(order, dimension)),
      cosines_(recurrence_.sectoral.Size()),
      sines_(recurrence_.sectoral.Size()) {
    SetMode(mode);
}

template <class Real>
void HoaEncodingVector::ComputeInto(const CartesianVector& direction,
                                    std::span<Real> gains) noexcept {
    if (!IsFinite(direction) || gains.size() < numChannels_) return;
    if (mode_ == Mode::Fast) {
        const auto tabled = table_->Gains(HoaLookupTable::IndexOf(direction));
        std::ranges::copy(tabled, gains.begin());
        return;
    }
    const UnitVector d = UnitVectorOf(direction);
    FillPowers({d.x, d.y}, cosines_, sines_);
    if (Dimension() == 3) Encode3D(recurrence_, d.z, cosines_, sines_, gains.data());
    if (Dimension() == 2) Encode2D(recurrence_, cosines_, sines_, gains.data());
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
