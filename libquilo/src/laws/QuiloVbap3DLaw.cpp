// SPDX-License-Identifier: MIT
#include "laws/QuiloVbap3DLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quilo {

namespace {

constexpr float kNegative = -0.01f;
constexpr float kLeastMinimum = -100000.f;
constexpr float kFlatElevationDeg = 1.f;

/// Negative weights are silent; what overflowed stays finite.
float GainOf(float weight) noexcept {
    return weight > 0.f ? std::min(weight, std::numeric_limits<float>::max()) : 0.f;
}

float Least(float a, float b, float c) noexcept {
    const float ab = b < a ? b : a;
    return c < ab ? c : ab;
}

}  // namespace

TripletBank::TripletBank(std::span<const Triplet> triplets)
    : blocks_((triplets.size() + kLanes - 1) / kLanes) {
    speakers_.reserve(triplets.size());
    for (std::size_t t = 0; t < triplets.size(); ++t) {
        for (std::size_t e = 0; e < triplets[t].inverse.size(); ++e) {
            blocks_[t / kLanes].elements[e][t % kLanes] = triplets[t].inverse[e];
        }
        speakers_.push_back(triplets[t].speakers);
    }
}

TripletBank::Peak TripletBank::FindPeak(const tav::CartesianVector& source) const noexcept {
    const auto [x, y, z] = source;
    std::array<float, kLanes> best;
    std::array<std::int32_t, kLanes> bestBlock{};
    best.fill(kLeastMinimum);
    const auto numBlocks = static_cast<std::int32_t>(blocks_.size());
    for (std::int32_t b = 0; b < numBlocks; ++b) {
        const auto& m = blocks_[static_cast<std::size_t>(b)].elements;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float minimum = Least(m[0][lane] * x + m[1][lane] * y + m[2][lane] * z,
                                        m[3][lane] * x + m[4][lane] * y + m[5][lane] * z,
                                        m[6][lane] * x + m[7][lane] * y + m[8][lane] * z);
            const std::int32_t isHigher = -static_cast<std::int32_t>(minimum > best[lane]);
            bestBlock[lane] = (b & isHigher) | (bestBlock[lane] & ~isHigher);
            best[lane] = std::max(best[lane], minimum);
        }
    }
    Peak peak{kLeastMinimum, 0};
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const std::size_t triplet = static_cast<std::size_t>(bestBlock[lane]) * kLanes + lane;
        const bool isEarlier = best[lane] == peak.minimum && triplet < peak.triplet;
        if (best[lane] > peak.minimum || isEarlier) peak = {best[lane], triplet};
    }
    return peak;
}

TripletBank::Weights TripletBank::WeightsOf(std::size_t triplet,
                                            const tav::CartesianVector& source) const noexcept {
    const auto& m = blocks_[triplet / kLanes].elements;
    const std::size_t lane = triplet % kLanes;
    Weights weights;
    for (std::size_t row = 0; row < weights.size(); ++row) {
        weights[row] = m[3 * row][lane] * source.x + m[3 * row + 1][lane] * source.y +
                       m[3 * row + 2][lane] * source.z;
    }
    return weights;
}

TripletGains TripletBank::GainsOf(std::size_t triplet, const Weights& weights) const noexcept {
    return {speakers_[triplet], {GainOf(weights[0]), GainOf(weights[1]), GainOf(weights[2])}};
}

std::optional<TripletGains> TripletBank::Choose(const tav::CartesianVector& source) const noexcept {
    // A triplet without negative weights that has the largest minimum wins the running comparison
    // whatever stands before or behind it. Surplus lanes come last, and lose against equals.
    const Peak peak = FindPeak(source);
    if (!(peak.minimum >= kNegative) || peak.triplet >= speakers_.size()) {
        return ChooseOneByOne(source);
    }
    return GainsOf(peak.triplet, WeightsOf(peak.triplet, source));
}

std::optional<TripletGains> TripletBank::ChooseOneByOne(
    const tav::CartesianVector& source) const noexcept {
    std::optional<TripletGains> chosen;
    float bestMinimum = kLeastMinimum;
    auto bestNegatives = std::ptrdiff_t{3};
    for (std::size_t t = 0; t < speakers_.size(); ++t) {
        const Weights g = WeightsOf(t, source);
        const float minimum = Least(g[0], g[1], g[2]);
        const auto negatives = std::ranges::count_if(g, [](float w) { return w < kNegative; });
        // Deliberate: both at once, against the one taken last.  (TripletBank, ComparesWithThe...)
        if (!(minimum > bestMinimum) || negatives > bestNegatives) continue;
        bestMinimum = minimum;
        bestNegatives = negatives;
        chosen = GainsOf(t, g);
    }
    return chosen;
}

void Vbap3DGains(const TripletBank& bank,
                 const tav::CartesianVector& source,
                 std::span<float> gains) noexcept {
    std::ranges::fill(gains, 0.f);
    const std::optional<TripletGains> chosen = bank.Choose(source);
    if (!chosen) return;
    for (std::size_t n = 0; n < chosen->speakers.size(); ++n) {
        const std::size_t output = chosen->speakers[n];
        if (output < gains.size()) gains[output] += chosen->gains[n];
    }
}

void NormaliseAmplitude3D(std::span<float> gains) noexcept {
    float energy = 0.f;
    for (const float g : gains) energy += g * g;
    const float factor = 1.f / (std::sqrt(energy) + 1e-20f);
    for (float& g : gains) g *= factor;
}

bool IsFlatLayout(std::span<const tav::CartesianVector> speakers) noexcept {
    return std::ranges::none_of(speakers, [](const tav::CartesianVector& speaker) {
        return tav::ElevationDeg(speaker) > kFlatElevationDeg;
    });
}

}  // namespace Quilo
