// SPDX-License-Identifier: MIT
// Nearest-neighbour panning.
#pragma once

#include "laws/QuiloKnnLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Each source sounds on the loudspeakers nearest to it, at first on three. Silent until a layout
/// comes.
class KnnPanning : public AmplitudePanning {
public:
    KnnPanning(unsigned numInputs, unsigned numOutputs);

    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    /// @param count  clamped to 1 .. outputs
    void SetNumNeighbors(unsigned index, unsigned count) override;
    /// 0 for an index out of range.
    unsigned NumNeighbors(unsigned index) const;
    /// Whether all loudspeakers are level with the listener.
    bool IsPlanar() const override;

    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

private:
    KnnLaw law_;
    tav::Vector<unsigned> numNeighbors_;  // one per source
};

}  // namespace Quilo
