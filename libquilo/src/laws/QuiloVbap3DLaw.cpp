// SPDX-License-Identifier: MIT
#include "laws/QuiloVbap3DLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quilo {

namespace {

constexpr float kNegative = -0.01f;
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

void TripletBank::Weigh(const Block& block,
                        const tav::CartesianVector& source,
                        Weights& weights) noexcept {
    const auto& m = block.elements;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            weights[row][lane] = m[3 * row][lane] * source.x + m[3 * row + 1][lane] * source.y +
                                 m[3 * row + 2][lane] * source.z;
        }
    }
}

/// Compares the triplets of one block with the best so far, one by one, in their order.
void TripletBank::Challenge(Best& best,
                            const Weights& weights,
                            std::size_t firstTriplet) const noexcept {
    const std::size_t count = std::min(kLanes, speakers_.size() - firstTriplet);
    for (std::size_t lane = 0; lane < count; ++lane) {
        const std::array<float, 3> g{weights[0][lane], weights[1][lane], weights[2][lane]};
        const float minimum = Least(g[0], g[1], g[2]);
        if (!(minimum > best.minimum)) continue;
        const auto negatives =
            static_cast<int>(std::ranges::count_if(g, [](float w) { return w < kNegative; }));
        if (negatives > best.negatives) continue;
        best = {minimum,
                negatives,
                {{speakers_[firstTriplet + lane], {GainOf(g[0]), GainOf(g[1]), GainOf(g[2])}}}};
    }
}

std::optional<TripletGains> TripletBank::Choose(const tav::CartesianVector& source) const noexcept {
    Best best;
    Weights weights;
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
        Weigh(blocks_[b], source, weights);
        int above = 0;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float least = Least(weights[0][lane], weights[1][lane], weights[2][lane]);
            above |= static_cast<int>(least > best.minimum);
        }
        if (above != 0) Challenge(best, weights, b * kLanes);  // seldom, once the best is good
    }
    return best.gains;
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
