// SPDX-License-Identifier: MIT
#include "pan/QuiloVectorBasedPanning.h"

#include "kernels/VelkDspTripletKernels.h"
#include "laws/QuiloTriangulation.h"

#include <algorithm>

namespace Quilo {

static_assert(TripletBank::kLanes == tav::kTripletLanes);

TripletLayout::TripletLayout(const tav::CartesianArray& speakers)
    : triplets(Triangulate(speakers), tav::BestKernels<tav::TripletKernels>().findPeaks),
      isFlat(IsFlatLayout(speakers)) {}

void TripletLayout::Gains(const tav::CartesianVector& source,
                          std::span<float> gains) const noexcept {
    if (isFlat) {
        std::ranges::fill(gains, 0.f);
    } else {
        Vbap3DGains(triplets, source, gains);
    }
}

void VectorBasedPanning::ComputeGains(unsigned,
                                      const tav::CartesianVector& source,
                                      std::span<float> gains) {
    layout_.Gains(source, gains);
    if (!layout_.isFlat) Normalise(gains);
}

void VectorBasedPanning::Describe(std::vector<std::string>& lines) const {
    AmplitudePanning::Describe(lines);
    std::size_t number = 0;
    for (const auto& triplet : layout_.triplets.Speakers()) {
        std::string line = "Triplet #" + std::to_string(++number) + " : ";
        for (const std::uint16_t speaker : triplet) line += std::to_string(speaker + 1) + " ";
        lines.push_back(line);
    }
}

}  // namespace Quilo
