// SPDX-License-Identifier: MIT
#include "pan/QuiloSPCAmplitudePanning.h"

#include "kernels/VelkDspSpeakerKernels.h"

namespace Quilo {

SPCAmplitudePanning::SPCAmplitudePanning(unsigned numInputs, unsigned numOutputs)
    : AmplitudePanning(numInputs, numOutputs),
      law_(tav::BestKernels<tav::SpeakerKernels>().gainsByAngle) {}

void SPCAmplitudePanning::ApplySpeakersPositions(SpeakersLayout& layout) {
    law_.SetSpeakers(layout.Positions());
    RecomputeSources();
}

void SPCAmplitudePanning::ComputeGains(unsigned index,
                                       const tav::CartesianVector& source,
                                       std::span<float> gains) {
    law_.Gains(source, StoredSpread(index), gains);
}

}  // namespace Quilo
