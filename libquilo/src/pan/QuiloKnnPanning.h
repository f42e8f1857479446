// SPDX-License-Identifier: MIT
// Nearest-neighbour panning.
#pragma once

#include "laws/QuiloKnnLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Each source sounds on the loudspeakers nearest to it, on three of them until another number is
/// set. Silent until a layout comes.
class KnnPanning : public AmplitudePanning {
public:
    KnnPanning(unsigned numInputs, unsigned numOutputs);

    /// 0 for an index out of range.
    unsigned NumNeighbors(unsigned index) const;
    /// Whether all loudspeakers are level with the listener.
    bool IsPlanar() const override;

private:
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ApplyNumNeighbors(unsigned index, unsigned count) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);

    KnnLaw law_ TAV_GUARDED_BY(controlLock_);
    tav::Vector<unsigned> numNeighbors_ TAV_GUARDED_BY(controlLock_);  // one per source
};

}  // namespace Quilo
