// SPDX-License-Identifier: MIT
#include "pan/QuiloVbap2DPanning.h"

#include "math/VelkDspConvexHull2D.h"
#include "text/VelkDspException.h"

namespace Quilo {

void VectorBased2DPanning::ApplySpeakersPositions(SpeakersLayout& layout) {
    const tav::CartesianArray& speakers = layout.Positions();
    ring_ = SpeakerRing(speakers, NumOutputs());
    RecomputeSources();
    // Deliberate: the layout is in force before it is judged.   (Vbap2DPanning, PansOver...)
    if (speakers.Size() > 2 && !tav::ConvexHull2D(speakers).Contains({0.f, 0.f})) {
        throw tav::Exception("reference position must be inside the speakers setup!",
                             tav::SourceSite{"libquilo/src/pan/QuiloVbap2DPanning", 282});
    }
}

void VectorBased2DPanning::ComputeGains(unsigned,
                                        const tav::CartesianVector& source,
                                        std::span<float> gains) {
    Vbap2DGains(ring_, source, gains);
    Normalise(gains);
}

}  // namespace Quilo
