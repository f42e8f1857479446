// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningContinuous.h"

#include "laws/QuiloLateralRingLaw.h"

#include <numeric>
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
      shares_(HrtfRing::kNumPoints) {}

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
    LateralRingGains(ring_, position, shares_);
    // Finite responses have lost their delays to the ring.
    const HrtfRing& ring = Filtering()->Ring();
    const bool areCells = Set().Data().filterType == Hrtfs::FilterType::BiquadCells;
    const float measured =
        areCells ? Set().NearestPoint(position)->delay
                 : std::inner_product(shares_.begin(), shares_.end(), ring.delaysMs.begin(), 0.f);
    const EarDelays delays = Itd().Delays(position, measured);
    const float part = DelayPart();
    Filtering()->SetSource(index, shares_, {delays.left * part, delays.right * part},
                           IsMuted(index) ? 0.f : 1.f, immediate ? 0.f : GlideMs());
}

}  // namespace Quilo
