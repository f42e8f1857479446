// SPDX-License-Identifier: MIT
// Panning over a frontal arc and one rear loudspeaker.
#pragma once

#include "laws/QuiloSurroundLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Three outputs (left, right, rear) or four (left, centre, right, rear).
/// It starts with front loudspeakers at 30 degrees and so sounds before a layout comes.
class SurroundPanning : public AmplitudePanning {
public:
    SurroundPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

    void ApplySpeakersPositions(const tav::CartesianArray& positions) override {
        const ControlLock lock = LockControl();
        law_.SetSpeakers(positions, NumOutputs());
        RecomputeSources();
    }

protected:
    void ComputeGains(const tav::CartesianVector& source, std::span<float> gains) override {
        law_.Gains(source, gains);
    }

private:
    SurroundLaw law_;
};

}  // namespace Quilo
