// SPDX-License-Identifier: MIT
#include "pan/QuiloHoaDiffusePanning.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

using tav::SphericalHarmonic;

namespace {

/// A harmonic in N3D has 1 as its mean square over the sphere.
std::vector<float> SphereWeights(unsigned count, SphericalHarmonic::Normalization normalization) {
    std::vector<float> weights;
    for (unsigned channel = 0; channel < count; ++channel) {
        const auto degree =
            SphericalHarmonic::FromChannelIndex(channel, 3, SphericalHarmonic::Sorting::ACN);
        weights.push_back(std::fabs(SphericalHarmonic::ConversionFactor(
            degree.n, degree.m, SphericalHarmonic::Normalization::N3D, normalization)));
    }
    return weights;
}

/// Squares of the gains are trigonometric polynomials of twice the order, so this many equally
/// spaced directions give their mean exactly.
std::vector<float> CircleWeights(unsigned count, SphericalHarmonic::Normalization normalization) {
    const unsigned order = HoaOrderOf(count, 2);
    tav::HoaEncodingVector encoding(order, 2, normalization);
    const unsigned numDirections = 4 * order + 3;
    std::vector<double> powers(count);
    std::vector<float> gains(count);
    for (unsigned d = 0; d < numDirections; ++d) {
        const double angle = 2.0 * std::numbers::pi * d / numDirections;
        encoding.Compute(
            {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0.f}, gains);
        for (unsigned c = 0; c < count; ++c) {
            const double gain = static_cast<double>(gains[c]);
            powers[c] += gain * gain / numDirections;
        }
    }
    std::vector<float> weights(count);
    std::ranges::transform(powers, weights.begin(),
                           [](double power) { return static_cast<float>(std::sqrt(power)); });
    return weights;
}

}  // namespace

std::vector<float> DiffuseWeights(unsigned numOutputs,
                                  unsigned dimension,
                                  unsigned order,
                                  SphericalHarmonic::Normalization normalization) {
    const unsigned largest = HoaOrderOf(numOutputs, dimension);
    const unsigned count =
        std::min(numOutputs, SphericalHarmonic::NumChannels(std::min(order, largest), dimension));
    auto weights =
        dimension == 2 ? CircleWeights(count, normalization) : SphereWeights(count, normalization);
    weights.resize(numOutputs);
    return weights;
}

HoaDiffusePanning::HoaDiffusePanning(unsigned numInputs, unsigned numOutputs, unsigned dimension)
    : DiffusePanning(numInputs,
                     numOutputs,
                     DiffuseWeights(numOutputs,
                                    dimension,
                                    HoaOrderOf(numOutputs, dimension),
                                    DefaultNormalization(dimension))),
      dimension_(dimension),
      order_(HoaOrderOf(numOutputs, dimension)),
      normalization_(DefaultNormalization(dimension)) {}

std::string HoaDiffusePanning::OutputLabel(unsigned output) const {
    return HoaOutputLabel(output, NumOutputs(), dimension_);
}

void HoaDiffusePanning::ApplyOrder(unsigned order) {
    const unsigned possible = std::min(order, HoaOrderOf(NumOutputs(), dimension_));
    if (possible == order_) return;
    order_ = possible;
    UpdateWeights();
}

void HoaDiffusePanning::ApplyNormalization(SphericalHarmonic::Normalization normalization) {
    const auto possible = NormalizationFor(dimension_, normalization);
    if (possible == normalization_) return;
    normalization_ = possible;
    UpdateWeights();
}

void HoaDiffusePanning::UpdateWeights() {
    SetWeights(DiffuseWeights(NumOutputs(), dimension_, order_, normalization_));
}

}  // namespace Quilo
