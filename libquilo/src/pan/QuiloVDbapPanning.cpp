// SPDX-License-Identifier: MIT
#include "pan/QuiloVDbapPanning.h"

#include "kernels/VelkDspSpeakerKernels.h"

#include <cmath>

namespace Quilo {

VDbapPanning::VDbapPanning(unsigned numInputs, unsigned numOutputs)
    : LayoutPanning(numInputs, numOutputs),
      vectorGains_(numOutputs) {}

VDbapLayout::VDbapLayout(const tav::CartesianArray& speakers)
    : cloud(WithinReach(speakers)),
      triplets(WithinReach(speakers)) {}

void VDbapPanning::ComputeVectorGains(const tav::CartesianVector& source,
                                      std::span<float> gains) const {
    layout_.triplets.Gains(source, gains);
    if (!layout_.triplets.isFlat) NormaliseAmplitude3D(gains);
}

void VDbapPanning::ComputeGains(unsigned,
                                const tav::CartesianVector& source,
                                std::span<float> gains) {
    const SpeakerCloud& cloud = layout_.cloud;
    const tav::CartesianVector place = WithinReach(source);
    const float distance = std::sqrt(SquaredDistance(place, cloud.centroid));
    const VdbapWeights weights = VdbapWeightsAt(distance, cloud.radius);
    if (weights.distanceBased == 0.f) return ComputeVectorGains(source, gains);
    DbapGains(cloud.rows, place, OmniMetric(0.f, place, cloud.centroid, false),
              tav::BestKernels<tav::SpeakerKernels>().gainsByDistance, gains);
    if (weights.vectorBase == 0.f) return;
    ComputeVectorGains(source, vectorGains_);
    for (std::size_t k = 0; k < gains.size(); ++k) {
        gains[k] = weights.vectorBase * vectorGains_[k] + weights.distanceBased * gains[k];
    }
}

}  // namespace Quilo
