// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningContinuous.h"

#include <algorithm>
#include <utility>

namespace Quilo {

namespace {

SpeakerRing MakeRing() {
    tav::CartesianArray directions(HrtfRing::kNumPoints);
    for (std::size_t k = 0; k < directions.Size(); ++k) directions[k] = HrtfRing::Direction(k);
    return {directions, HrtfRing::kNumPoints};
}

}  // namespace

BinauralPanningContinuous::BinauralPanningContinuous(unsigned numInputs, unsigned numOutputs)
    : BinauralPanningDirect(numInputs, numOutputs),
      ring_(MakeRing()),
      shares_{std::vector<float>(HrtfRing::kNumPoints), std::vector<float>(HrtfRing::kNumPoints)},
      nearest_(numInputs) {}

std::unique_ptr<HrtfRendering> BinauralPanningContinuous::MakeRendering(
    const std::shared_ptr<const Hrtf>& set, const HrtfFormat& format) const {
    HrtfRing ring(*set);
    auto responses = HrtfResponses::Of(ring.set, format);
    return std::make_unique<HrtfRingFiltering>(set, std::move(ring), std::move(responses),
                                               NumInputs(), BufferSize());
}

void BinauralPanningContinuous::ApplySet() { Filtering()->SetInterpolationTime(GlideMs()); }

void BinauralPanningContinuous::ApplyInterpolationTime(float ms) {
    BinauralPanningDirect::ApplyInterpolationTime(ms);
    if (Filtering() != nullptr) Filtering()->SetInterpolationTime(ms);
}

void BinauralPanningContinuous::ComputeSource(unsigned index, bool immediate, bool) {
    if (Filtering() == nullptr) return;
    FreeRetired();
    const tav::CartesianVector position = HeardPosition(index);
    const auto parts = LateralRingParts(ring_, position);
    for (std::size_t ear = 0; ear < shares_.size(); ++ear) {
        std::ranges::fill(shares_[ear], 0.f);
        for (RingPart part : parts) {
            part.share = Filtering()->Ring().EvenShare(ear, part.first, part.share);
            AddRingPart(part, shares_[ear]);
        }
    }
    const EarDelays delays = Itd().Delays(position, MeasuredDelay(index, position, parts));
    const float part = DelayPart();
    Filtering()->SetSource(index, shares_, {delays.left * part, delays.right * part},
                           IsMuted(index) ? 0.f : 1.f, immediate ? 0.f : GlideMs());
}

float BinauralPanningContinuous::MeasuredDelay(unsigned index,
                                               const tav::CartesianVector& position,
                                               const std::array<RingPart, 2>& parts) {
    if (!Itd().Measures()) return 0.f;
    if (Set().Data().filterType == Hrtfs::FilterType::BiquadCells) {
        const HrtfPoint& point = *Set().NearestPoint(position, nearest_[index]);
        nearest_[index] = point.index;
        return point.delay;
    }
    // Finite responses have lost their delays to the ring.
    const auto& delaysMs = Filtering()->Ring().delaysMs;
    float delayMs = 0.f;
    for (const RingPart& part : parts)
        delayMs += part.weight * std::lerp(delaysMs[part.first], delaysMs[part.second], part.share);
    return delayMs;
}

}  // namespace Quilo
