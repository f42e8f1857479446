// SPDX-License-Identifier: MIT
#include "laws/QuiloSpeakerRows.h"

namespace Quilo {

SpeakerRows::SpeakerRows(std::span<const tav::CartesianVector> speakers)
    : size_(speakers.size()),
      stride_((speakers.size() + kLanes - 1) / kLanes * kLanes),
      numbers_(3 * stride_) {
    for (std::size_t k = 0; k < size_; ++k) {
        numbers_[k] = speakers[k].x;
        numbers_[stride_ + k] = speakers[k].y;
        numbers_[2 * stride_ + k] = speakers[k].z;
    }
}

}  // namespace Quilo
