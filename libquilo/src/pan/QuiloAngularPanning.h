// SPDX-License-Identifier: MIT
// Pairwise sine and cosine panning over any number of loudspeakers.
#pragma once

#include "laws/QuiloAngularLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Silent until a layout comes, unless it has a single output.
class AngularPanning : public AmplitudePanning {
public:
    AngularPanning(unsigned numInputs, unsigned numOutputs)
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
    AngularLaw law_;
};

}  // namespace Quilo
