// SPDX-License-Identifier: MIT
#include "pan/QuiloNFCHOAFilterBank.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

namespace {}  // namespace

NFCHOAFilterBank::NFCHOAFilterBank(unsigned order) {
    for (unsigned n = 1; n <= order; ++n) {
        orders_.push_back({sections_.size()});
        for (const NearFieldPole& pole : NearFieldOrderOf(n).Poles()) {
            magnitudes_.push_back(static_cast<float>(pole.magnitude));
            sections_.push_back({pole.isReal, 0.f, static_cast<float>(pole.damping),
                                 static_cast<float>(pole.highPassDamping)});
        }
    }
    orders_.push_back({sections_.size()});
}

std::size_t NFCHOAFilterBank::NumSections(unsigned order) const noexcept TAV_NONBLOCKING {
    return orders_[order].first;
}

std::span<const tav::NearFieldSection> NFCHOAFilterBank::Sections(
    unsigned order, float scale) noexcept TAV_NONBLOCKING {
    Order& entry = orders_[order - 1];
    const std::size_t first = entry.first;
    const std::size_t end = orders_[order].first;
    if (entry.scale != scale) {
        entry.scale = scale;
        // Deliberate: g is the half angle itself, not its tangent. Correcting the frequencies of
        // the poles by the tangent, as is usual, makes the error of the whole filter larger.
        for (std::size_t s = first; s < end; ++s) sections_[s].g = magnitudes_[s] * scale;
    }
    return std::span(sections_).subspan(first, end - first);
}

void NFCHOAHighPass::Compute(const NFCHOARow& ratios,
                             const NFCHOARow& logRatios,
                             const NFCHOASettings& settings,
                             NFCHOARow& g) const noexcept TAV_NONBLOCKING {
    const float share = std::min(2.f * settings.highPass, 1.f);
    const float gPerHertz = std::numbers::pi_v<float> / settings.rateHz;
    for (std::size_t i = 0; i < g.size(); ++i) {
        const float limit = share > 0.f ? order_->LimitFrequency(logRatios[i]) : 0.f;
        // Without a tangent like the near-field filter: only so their product stays below 20 dB.
        g[i] = 2.f * std::numbers::pi_v<float> * limit * ratios[i] * settings.scale;
        if (share < 1.f && limit > 0.f) {
            g[i] = std::min(g[i], gPerHertz * std::pow(g[i] / gPerHertz, share));
        }
    }
}

float NFCHOAHighPass::LargestRatio(float highPass) const noexcept TAV_NONBLOCKING {
    const float share = std::clamp(2.f * highPass - 1.f, 0.f, 1.f);
    const auto capped = static_cast<float>(order_->CappedRatio());
    return capped * std::pow(kHighestNearFieldRatio / capped, share);
}

NFCHOAHighPassFilterBank::NFCHOAHighPassFilterBank(unsigned order) {
    for (unsigned n = 1; n <= order; ++n) orders_.emplace_back(NearFieldOrderOf(n));
}

}  // namespace Quilo
