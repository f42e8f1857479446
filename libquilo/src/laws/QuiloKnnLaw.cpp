// SPDX-License-Identifier: MIT
#include "laws/QuiloKnnLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

KnnLaw::KnnLaw(const tav::CartesianArray& speakers)
    : tree_(speakers),
      isPlanar_(std::ranges::all_of(speakers, [](const tav::CartesianVector& s) {
          return std::fabs(tav::ElevationDeg(s)) <= 0.1f;
      })) {
    nearest_.reserve(speakers.Size());
    distances_.reserve(speakers.Size());
}

void KnnLaw::Gains(const tav::CartesianVector& source,
                   unsigned numNeighbors,
                   std::span<float> gains) {
    std::ranges::fill(gains, 0.f);
    if (tree_.Size() == 1) {
        gains[0] = 1.f;
        return;
    }
    tree_.Nearest(source, numNeighbors, nearest_, distances_);
    float energy = 0.f;
    for (float& distance : distances_) {
        distance = 1.f / std::max(distance, 1e-10f);
        energy += distance * distance;
    }
    const float scale = 1.f / std::max(std::sqrt(energy), 1e-20f);
    for (std::size_t i = 0; i < nearest_.size(); ++i) gains[nearest_[i]] = distances_[i] * scale;
}

}  // namespace Quilo
