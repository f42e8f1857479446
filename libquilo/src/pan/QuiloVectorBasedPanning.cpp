// SPDX-License-Identifier: MIT
#include "pan/QuiloVectorBasedPanning.h"

#include "kernels/VelkDspTripletKernels.h"

#include <algorithm>

namespace Quilo {

static_assert(TripletBank::kLanes == tav::kTripletLanes);

void VectorBasedPanning::ApplySpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    const std::size_t count = std::min<std::size_t>(positions.Size(), NumOutputs());
    tav::Vector<LoudSpeaker> speakers(count);
    for (std::size_t i = 0; i < count; ++i) {
        const tav::CartesianVector& p = positions[i];
        speakers[i] = {static_cast<std::uint32_t>(i), p.x, p.y, p.z};
    }
    speakers_ = std::move(speakers);
    needsTriangulation_ = true;
    isFlat_ = IsFlatLayout(std::span(positions.Data(), count));
    RecomputeSources();
}

void VectorBasedPanning::TriangulateIfNeeded() {
    if (!needsTriangulation_) return;
    tav::CartesianArray positions(speakers_.Size());
    for (const LoudSpeaker& s : speakers_) positions[s.index] = {s.x, s.y, s.z};
    tav::Vector<Triplet> triplets = Triangulate(positions);
    bank_ = TripletBank(triplets, tav::BestKernels<tav::TripletKernels>().findPeaks);
    triplets_ = std::move(triplets);
    needsTriangulation_ = false;  // first: the sources ask again
    RecomputeSources();
}

void VectorBasedPanning::ComputeGains(unsigned,
                                      const tav::CartesianVector& source,
                                      std::span<float> gains) {
    // Before `gains` are touched: the other sources use the same row.
    if (!isFlat_) TriangulateIfNeeded();
    std::ranges::fill(gains, 0.f);
    if (isFlat_) return;
    Vbap3DGains(bank_, source, gains);
    Normalise(gains);
}

void VectorBasedPanning::Dump(std::vector<std::string>& lines) {
    const ControlLock lock = LockControl();
    AmplitudePanning::Dump(lines);
    TriangulateIfNeeded();
    for (std::size_t t = 0; t < triplets_.Size(); ++t) {
        std::string line = "Triplet #" + std::to_string(t + 1) + " : ";
        for (const std::uint16_t speaker : triplets_[t].speakers) {
            line += std::to_string(speaker + 1) + " ";
        }
        lines.push_back(line);
    }
}

}  // namespace Quilo
