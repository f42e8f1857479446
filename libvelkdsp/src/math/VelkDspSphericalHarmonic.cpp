// SPDX-License-Identifier: MIT
#include "math/VelkDspSphericalHarmonic.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <numbers>

namespace tav {

namespace {

using Normalization = SphericalHarmonic::Normalization;
using Degree = SphericalHarmonic::Degree;

constexpr unsigned kMaxFuMaOrder = 3;

bool IsWholeFrom1(float order) { return order >= 1.f && order == std::floor(order); }

/// The largest n with n n <= value.
unsigned FloorSqrt(unsigned value) {
    return static_cast<unsigned>(std::sqrt(static_cast<double>(value)));  // exact below 2^52
}

unsigned Magnitude(int m) { return static_cast<unsigned>(std::abs(m)); }

int Signed(unsigned value) { return static_cast<int>(value); }

/// The degree of a channel among those of its order in three dimensions.
/// @param place  0 .. 2n
int DegreeAtPlace(unsigned n, unsigned place, SphericalHarmonic::Sorting sorting) {
    using Sorting = SphericalHarmonic::Sorting;
    switch (sorting) {
        case Sorting::SID: {  // n, -n, n - 1, -(n - 1), .. 1, -1, 0
            const int m = Signed(n) - Signed(place / 2);
            return place % 2 == 0 ? m : -m;
        }
        case Sorting::FMH: {  // 0, 1, -1, 2, -2, ..; the first order reads 1, -1, 0
            if (n == 1) return place == 2 ? 0 : 1 - 2 * Signed(place);
            const int m = Signed((place + 1) / 2);
            return place % 2 == 0 ? -m : m;
        }
        default: return Signed(place) - Signed(n);
    }
}

/// 1 / factor; 0 for a harmonic that the normalisation does not have.
double Reciprocal(double factor) { return factor == 0.0 ? 0.0 : 1.0 / factor; }

double N3DToFuMa(unsigned n, unsigned m) {
    // clang-format off
    static const double kFactors[kMaxFuMaOrder + 1][kMaxFuMaOrder + 1] = {
        // m = 0                 1                        2                       3
        {std::sqrt(1.0 / 2.0)},
        {std::sqrt(1.0 / 3.0),  std::sqrt(1.0 / 3.0)},
        {std::sqrt(1.0 / 5.0),  2.0 / std::sqrt(15.0),   2.0 / std::sqrt(15.0)},
        {std::sqrt(1.0 / 7.0),  std::sqrt(45.0 / 224.0), 3.0 / std::sqrt(35.0),  std::sqrt(8.0 / 35.0)},
    };
    // clang-format on
    return n > kMaxFuMaOrder || m > n ? 0.0 : kFactors[n][m];
}

double N3DToUnnormalized(unsigned m) {
    if (m == 0) return std::sqrt(1.0 / (4.0 * std::numbers::pi));
    const double factor = std::sqrt(1.0 / (8.0 * std::numbers::pi));
    return m % 2 == 1 ? -factor : factor;  // the same for m and -m
}

/// The square root of n! 2^(2n-1) n! / (2n)!, as a product: the factorials themselves overflow.
double SN3DToSN2D(unsigned n, unsigned m) {
    if (n == 0) return 1.0;
    if (n != m) return 0.0;
    double square = 0.5;
    for (unsigned k = 1; k <= n; ++k) square *= 2.0 * k / (2.0 * k - 1.0);
    return std::sqrt(square);
}

double N3DTo(Normalization to, unsigned n, unsigned m) {
    const double toSN3D = 1.0 / std::sqrt(2.0 * n + 1.0);
    const double sqrtTwoUnlessZonal = m == 0 ? 1.0 : std::numbers::sqrt2;
    switch (to) {
        case Normalization::N3D: return 1.0;
        case Normalization::SN3D: return toSN3D;
        case Normalization::SN2D: return toSN3D * SN3DToSN2D(n, m);
        case Normalization::N2D: return toSN3D * SN3DToSN2D(n, m) * sqrtTwoUnlessZonal;
        case Normalization::FuMa: return N3DToFuMa(n, m);
        case Normalization::MaxN: return N3DToFuMa(n, m) * (n == 0 ? std::numbers::sqrt2 : 1.0);
        case Normalization::Unnormalized: return N3DToUnnormalized(m);
        case Normalization::RONB: return N3DToUnnormalized(m) * sqrtTwoUnlessZonal;
    }
    return 0.0;
}

}  // namespace

unsigned SphericalHarmonic::NumChannels(unsigned order, unsigned dimension) {
    if (dimension == 3) return (order + 1) * (order + 1);
    return dimension == 2 ? 2 * order + 1 : 0;
}

bool SphericalHarmonic::IsValidChannelCount(unsigned count, unsigned dimension) {
    if (count == 1) return true;
    const auto c = static_cast<float>(count);
    if (dimension == 3) return IsWholeFrom1(std::sqrt(c) - 1.f);
    return dimension == 2 && IsWholeFrom1((c - 1.f) * 0.5f);
}

int SphericalHarmonic::OrderFromChannelCount(unsigned count, unsigned dimension) {
    if (!IsValidChannelCount(count, dimension)) return -1;
    return Signed(dimension == 2 ? (count - 1) / 2 : FloorSqrt(count) - 1);
}

Degree SphericalHarmonic::FromChannelIndex(unsigned index, unsigned dimension, Sorting sorting) {
    if (dimension == 3) {
        const unsigned n = FloorSqrt(index);
        return {n, DegreeAtPlace(n, index - n * n, sorting)};
    }
    if (dimension != 2) return {};
    const unsigned n = (index + 1) / 2;
    const bool isFirst = index % 2 == 1;
    return {n, isFirst == (sorting == Sorting::ACN) ? -Signed(n) : Signed(n)};
}

bool SphericalHarmonic::IsAllowed(Normalization normalization, unsigned dimension) {
    switch (normalization) {
        case Normalization::SN3D:
        case Normalization::N3D: return dimension == 3;
        case Normalization::SN2D:
        case Normalization::N2D: return dimension == 2;
        case Normalization::Unnormalized:
        case Normalization::FuMa:
        case Normalization::MaxN:
        case Normalization::RONB: return dimension == 2 || dimension == 3;
    }
    return false;
}

double SphericalHarmonic::ExactConversionFactor(unsigned n,
                                                int m,
                                                Normalization from,
                                                Normalization to) {
    if (from == to) return 1.0;
    const unsigned degree = Magnitude(m);
    // Deliberate: all other conversions from a factor of 0 give 0, this one infinity.
    //                                          (SphericalHarmonic, OneWayBackIsInfinite)
    const bool isUnguarded = from == Normalization::N2D && to == Normalization::SN2D;
    if (isUnguarded && n != degree) return std::numeric_limits<double>::infinity();
    return Reciprocal(N3DTo(from, n, degree)) * N3DTo(to, n, degree);
}

float SphericalHarmonic::ConversionFactor(unsigned n, int m, Normalization from, Normalization to) {
    return static_cast<float>(ExactConversionFactor(n, m, from, to));
}

std::string SphericalHarmonic::ChannelLabel(unsigned n, int m, bool withLetter) {
    std::string label = "Y(" + std::to_string(n) + "," + std::to_string(m) + ")";
    const std::string_view letter = FuMaLetter(n, m);
    if (withLetter && !letter.empty()) label.append(" (").append(letter).append(")");
    return label;
}

std::string_view SphericalHarmonic::FuMaLetter(unsigned n, int m) {
    constexpr std::string_view kLetters = "WYZXVTRSUQOMKLNP";  // n = 0 .. 3, m = -n .. n
    if (n > kMaxFuMaOrder || Magnitude(m) > n) return {};
    const int channel = Signed(n * (n + 1)) + m;
    return kLetters.substr(static_cast<std::size_t>(channel), 1);
}

float SphericalHarmonic::Legendre(unsigned n, float x) {
    if (x == 1.f) return 1.f;
    if (x == -1.f) return n % 2 == 1 ? -1.f : 1.f;
    const float x2 = x * x;
    const float fourth = (35.f * x2 * x2 - 30.f * x2 + 3.f) / 8.f;
    const float fifth = (63.f * x2 * x2 * x - 70.f * x2 * x + 15.f * x) / 8.f;
    switch (n) {
        case 0: return 1.f;
        case 1: return x;
        case 2: return 1.5f * x2 - 0.5f;
        case 3: return 2.5f * x2 * x - 1.5f * x;
        case 4: return fourth;
        case 5: return fifth;
        default: break;
    }
    float before = fourth;
    float last = fifth;
    for (unsigned k = 6; k <= n; ++k) {
        const auto degree = static_cast<float>(k);
        const float next = ((2.f * degree - 1.f) * x * last - (degree - 1.f) * before) / degree;
        before = last;
        last = next;
    }
    return last;
}

}  // namespace tav
