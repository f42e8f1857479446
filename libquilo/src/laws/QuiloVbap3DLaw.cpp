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

/// A negative weight is silence, an infinite one the largest number.
float GainOf(float weight) noexcept {
    return weight > 0.f ? std::min(weight, std::numeric_limits<float>::max()) : 0.f;
}

}  // namespace

TripletBank::TripletBank(std::span<const Triplet> triplets, FindPeaks findPeaks)
    : blocks_((triplets.size() + kLanes - 1) / kLanes),
      findPeaks_(findPeaks) {
    speakers_.reserve(triplets.size());
    for (std::size_t t = 0; t < triplets.size(); ++t) {
        for (std::size_t e = 0; e < triplets[t].inverse.size(); ++e) {
            blocks_[t / kLanes].elements[e][t % kLanes] = triplets[t].inverse[e];
        }
        speakers_.push_back(triplets[t].speakers);
    }
}

TripletBank::Peaks TripletBank::FindPeaksIn(std::size_t firstBlock,
                                            std::size_t numBlocks,
                                            const tav::CartesianVector& source,
                                            float toBeat) const noexcept {
    const std::array<float, 3> position{source.x, source.y, source.z};
    Peaks peaks;
    peaks.minima.fill(toBeat);
    findPeaks_(blocks_[firstBlock].elements.front().data(), static_cast<std::int32_t>(numBlocks),
               position.data(), peaks.minima.data(), peaks.blocks.data());
    return peaks;
}

TripletBank::Peak TripletBank::FindPeak(const tav::CartesianVector& source) const noexcept {
    const Peaks peaks = FindPeaksIn(0, blocks_.size(), source, kLeastMinimum);
    // Without branches, which processors would often predict wrongly here.
    Peak peak{kLeastMinimum, std::numeric_limits<std::uint32_t>::max()};
    for (const float minimum : peaks.minima) peak.minimum = std::max(peak.minimum, minimum);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const auto triplet = static_cast<std::uint32_t>(peaks.blocks[lane]) * kLanes + lane;
        peak.triplet =
            peaks.minima[lane] == peak.minimum ? std::min(peak.triplet, triplet) : peak.triplet;
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
    if (speakers_.empty()) return std::nullopt;
    // A shortcut: the triplet with the largest minimum of all is the one that the comparison one by
    // one ends with, unless it has negative weights. (Unused lanes stand behind all triplets and do
    // not win against equal ones.)
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
    for (std::size_t first = 0; first < speakers_.size(); first += kLanes) {
        const auto minima = FindPeaksIn(first / kLanes, 1, source, bestMinimum).minima;
        const std::size_t count = std::min(kLanes, speakers_.size() - first);
        for (std::size_t lane = 0; lane < count; ++lane) {
            if (!(minima[lane] > bestMinimum)) continue;
            const Weights g = WeightsOf(first + lane, source);
            const auto negatives = std::ranges::count_if(g, [](float w) { return w < kNegative; });
            // Deliberate: both conditions, against the triplet taken last, not the best of all.
            //                                          (TripletBank, ComparesWithTheOneTakenLast)
            if (negatives > bestNegatives) continue;
            bestMinimum = minima[lane];
            bestNegatives = negatives;
            chosen = GainsOf(first + lane, g);
        }
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
