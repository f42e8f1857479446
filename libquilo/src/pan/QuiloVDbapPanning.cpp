// SPDX-License-Identifier: MIT
#include "pan/QuiloVDbapPanning.h"

#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloVectorBasedPanning.h"
#include "text/VelkDspException.h"

#include <cmath>
#include <string_view>

namespace Quilo {

namespace {

/// A panner that lends its law. One source is enough for that: every source asks it in turn.
template <class Panner>
std::unique_ptr<Panner> MakeLaw(unsigned numOutputs, std::string_view type) {
    std::unique_ptr<Pan> pan = Pan::Create(1, numOutputs, type, "direct");
    if (dynamic_cast<Panner*>(pan.get()) == nullptr) {
        throw tav::Exception("cannot make the inner panner");
    }
    return std::unique_ptr<Panner>(static_cast<Panner*>(pan.release()));
}

}  // namespace

VDbapPanning::VDbapPanning(unsigned numInputs, unsigned numOutputs)
    : AmplitudePanning(numInputs, numOutputs),
      distanceBased_(MakeLaw<DbapPanning3D>(numOutputs, "dbap3d")),
      vectorBased_(MakeLaw<VectorBasedPanning>(numOutputs, "vbap3d")),
      vectorGains_(numOutputs) {}

VDbapPanning::~VDbapPanning() = default;

void VDbapPanning::ApplySpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    const tav::CartesianArray speakers = WithinReach(positions, NumOutputs());
    cloud_ = SpeakerCloud(speakers);
    distanceBased_->SetSpeakersPositions(speakers);
    vectorBased_->SetSpeakersPositions(speakers);
    RecomputeSources();
}

void VDbapPanning::ComputeGains(unsigned,
                                const tav::CartesianVector& source,
                                std::span<float> gains) {
    const float distance = std::sqrt(SquaredDistance(WithinReach(source), cloud_.centroid));
    const VdbapWeights weights = VdbapWeightsAt(distance, cloud_.radius);
    AmplitudePanning& vectorBased = *vectorBased_;
    if (weights.distanceBased == 0.f) return vectorBased.ComputeGains(0, source, gains);
    distanceBased_->ComputeGains(0, source, gains);
    if (weights.vectorBase == 0.f) return;
    vectorBased.ComputeGains(0, source, vectorGains_);
    for (std::size_t k = 0; k < gains.size(); ++k) {
        gains[k] = weights.vectorBase * vectorGains_[k] + weights.distanceBased * gains[k];
    }
}

}  // namespace Quilo
