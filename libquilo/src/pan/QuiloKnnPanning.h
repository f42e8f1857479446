// SPDX-License-Identifier: MIT
// Nearest-neighbour panning.
#pragma once

#include "laws/QuiloKnnLaw.h"
#include "laws/QuiloSpeakerRows.h"
#include "pan/QuiloLayoutPanning.h"

namespace Quilo {

/// Loudspeakers beyond the reach of 32-bit squares count as standing at its end.
struct KnnLayout {
    KnnLayout() = default;
    explicit KnnLayout(const tav::CartesianArray& speakers) : law(WithinReach(speakers)) {}

    KnnLaw law;
};

/// Each source sounds on the loudspeakers nearest to it, on three of them until another number is
/// set. Silent until a layout comes.
class KnnPanning : public LayoutPanning<KnnLayout> {
public:
    KnnPanning(unsigned numInputs, unsigned numOutputs);

    /// 0 for an index out of range.
    unsigned NumNeighbors(unsigned index) const;
    /// Whether all loudspeakers are level with the listener.
    bool IsPlanar() const override;

private:
    void ApplyNumNeighbors(unsigned index, unsigned count) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);

    tav::Vector<unsigned> numNeighbors_ TAV_GUARDED_BY(controlLock_);  // one per source
};

}  // namespace Quilo
