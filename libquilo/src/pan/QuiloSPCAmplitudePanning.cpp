// SPDX-License-Identifier: MIT
#include "pan/QuiloSPCAmplitudePanning.h"

#include "kernels/VelkDspSpeakerKernels.h"

#include <algorithm>

namespace Quilo {

SPCAmplitudePanning::SPCAmplitudePanning(unsigned numInputs, unsigned numOutputs)
    : AmplitudePanning(numInputs, numOutputs),
      law_(tav::BestKernels<tav::SpeakerKernels>().gainsByAngle) {}

void SPCAmplitudePanning::ApplySpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    const std::size_t count = std::min<std::size_t>(positions.Size(), NumOutputs());
    law_.SetSpeakers(std::span(positions.Data(), count));
    RecomputeSources();
}

void SPCAmplitudePanning::ComputeGains(unsigned index,
                                       const tav::CartesianVector& source,
                                       std::span<float> gains) {
    law_.Gains(source, SourceSpread(index), gains);
}

}  // namespace Quilo
