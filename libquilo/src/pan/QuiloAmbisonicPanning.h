// SPDX-License-Identifier: MIT
// First-order B-format encoding.
#pragma once

#include "laws/QuiloBformatLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Three outputs (W, X, Y) or four (W, X, Y, Z); loudspeaker positions do not enter.
class AmbisonicPanning : public AmplitudePanning {
public:
    AmbisonicPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

    /// "output #1 : W"
    std::string OutputLabel(unsigned output) const override {
        const std::string label = AmplitudePanning::OutputLabel(output);
        return output < NumOutputs() && output < 4 ? label + " : " + "WXYZ"[output] : label;
    }
    bool IsPlanar() const override { return NumOutputs() != 4; }

private:
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_) {
        BformatGains(source, gains);
    }
};

}  // namespace Quilo
