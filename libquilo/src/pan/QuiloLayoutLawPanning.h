// SPDX-License-Identifier: MIT
// Gain panners that are nothing but a law over a layout of loudspeakers.
#pragma once

#include "laws/QuiloAngularLaw.h"
#include "laws/QuiloSurroundLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// @tparam Law  SetSpeakers(positions, numOutputs) and Gains(source, gains)
template <class Law>
class LayoutLawPanning : public AmplitudePanning {
public:
    LayoutLawPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

private:
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_) {
        law_.SetSpeakers(layout.Positions(), NumOutputs());
        RecomputeSources();
    }
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_) {
        law_.Gains(source, gains);
    }

    Law law_ TAV_GUARDED_BY(controlLock_);
};

/// Pairwise sine and cosine panning over any number of loudspeakers.
/// Silent until a layout comes, unless it has a single output.
class AngularPanning : public LayoutLawPanning<AngularLaw> {
public:
    using LayoutLawPanning::LayoutLawPanning;
};

/// Three outputs (left, right, rear) or four (left, centre, right, rear).
/// It starts with front loudspeakers at 30 degrees and so sounds before a layout comes.
class SurroundPanning : public LayoutLawPanning<SurroundLaw> {
public:
    using LayoutLawPanning::LayoutLawPanning;
};

}  // namespace Quilo
