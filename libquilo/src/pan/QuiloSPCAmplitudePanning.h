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

    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

private:
    SpcapLaw law_;
};

}  // namespace Quilo
