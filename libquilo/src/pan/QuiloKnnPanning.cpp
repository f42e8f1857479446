// SPDX-License-Identifier: MIT
#include "pan/QuiloKnnPanning.h"

#include "laws/QuiloSpeakerRows.h"

#include <algorithm>

namespace Quilo {

namespace {

constexpr unsigned kDefaultNeighbors = 3;

}  // namespace

KnnPanning::KnnPanning(unsigned numInputs, unsigned numOutputs)
    : AmplitudePanning(numInputs, numOutputs),
      numNeighbors_(numInputs, std::min(kDefaultNeighbors, numOutputs)) {}

void KnnPanning::ApplySpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    law_.SetSpeakers(WithinReach(positions, NumOutputs()));
    RecomputeSources();
}

void KnnPanning::SetNumNeighbors(unsigned index, unsigned count) {
    const ControlLock lock = LockControl();
    if (index >= NumInputs()) return;
    const unsigned limited = std::min(std::max(count, 1u), NumOutputs());
    if (limited == numNeighbors_[index]) return;
    numNeighbors_[index] = limited;
    RecomputeSource(index);
}

unsigned KnnPanning::NumNeighbors(unsigned index) const {
    const ControlLock lock = LockControl();
    return index < NumInputs() ? numNeighbors_[index] : 0;
}

bool KnnPanning::IsPlanar() const {
    const ControlLock lock = LockControl();
    return law_.IsPlanar();
}

void KnnPanning::ComputeGains(unsigned index,
                              const tav::CartesianVector& source,
                              std::span<float> gains) {
    law_.Gains(WithinReach(source), numNeighbors_[index], gains);
}

}  // namespace Quilo
