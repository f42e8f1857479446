// SPDX-License-Identifier: MIT
// Speaker-placement correction amplitude panning.
#pragma once

#include "laws/QuiloSpcapLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Every loudspeaker plays a source by its azimuth, as a cardioid microphone would that points at
/// it; spread opens the cardioid. Silent until a layout comes.
class SPCAmplitudePanning : public AmplitudePanning {
public:
    SPCAmplitudePanning(unsigned numInputs, unsigned numOutputs);

private:
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);

    SpcapLaw law_ TAV_GUARDED_BY(controlLock_);
};

}  // namespace Quilo
