// SPDX-License-Identifier: MIT
#include "pan/QuiloKnnPanning.h"

#include <algorithm>

namespace Quilo {

namespace {

constexpr unsigned kDefaultNeighbors = 3;

}  // namespace

KnnPanning::KnnPanning(unsigned numInputs, unsigned numOutputs)
    : LayoutPanning(numInputs, numOutputs),
      numNeighbors_(numInputs, std::min(kDefaultNeighbors, numOutputs)) {}

void KnnPanning::ApplyNumNeighbors(unsigned index, unsigned count) {
    if (count == numNeighbors_[index]) return;
    numNeighbors_[index] = count;
    RecomputeSource(index);
}

unsigned KnnPanning::NumNeighbors(unsigned index) const {
    const tav::ControlGuard guard(controlLock_);
    return index < NumInputs() ? numNeighbors_[index] : 0;
}

bool KnnPanning::IsPlanar() const {
    const tav::ControlGuard guard(controlLock_);
    return layout_.law.IsPlanar();
}

void KnnPanning::ComputeGains(unsigned index,
                              const tav::CartesianVector& source,
                              std::span<float> gains) {
    layout_.law.Gains(WithinReach(source), numNeighbors_[index], gains);
}

}  // namespace Quilo
