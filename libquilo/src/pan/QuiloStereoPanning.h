// SPDX-License-Identifier: MIT
// The coincident stereo pairs; loudspeaker positions do not enter.
#pragma once

#include "laws/QuiloStereoLaws.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Two outputs: left, right.
class StereoXYPanning : public AmplitudePanning {
public:
    StereoXYPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

private:
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_) {
        XyGains(source, gains);
    }
};

/// Two outputs: mid, side.
class StereoMSPanning : public AmplitudePanning {
public:
    StereoMSPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

private:
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_) {
        MsGains(source, gains);
    }
};

}  // namespace Quilo
