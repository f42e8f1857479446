// SPDX-License-Identifier: MIT
#include "pan/QuiloVbap2DPanning.h"

#include "math/VelkDspConvexHull2D.h"
#include "text/VelkDspException.h"

namespace Quilo {

RingLayout::RingLayout(const tav::CartesianArray& speakers)
    : ring(speakers, speakers.Size()),
      surroundsListener(speakers.Size() <= 2 || tav::ConvexHull2D(speakers).Contains({0.f, 0.f})) {}

void VectorBased2DPanning::ApplySpeakersPositions(SpeakersLayout& layout) {
    LayoutPanning::ApplySpeakersPositions(layout);
    // Deliberate: the layout is in force before it is judged.   (Vbap2DPanning, PansOver...)
    if (!layout_.surroundsListener) {
        throw tav::Exception("reference position must be inside the speakers setup!",
                             tav::SourceSite{"libquilo/src/pan/QuiloVbap2DPanning", 282});
    }
}

void VectorBased2DPanning::ComputeGains(unsigned,
                                        const tav::CartesianVector& source,
                                        std::span<float> gains) {
    Vbap2DGains(layout_.ring, source, gains);
    Normalise(gains);
}

}  // namespace Quilo
