// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfFilterBank.h"

#include "pan/QuiloHrtfCellBank.h"
#include "pan/QuiloHrtfFirBank.h"

namespace Quilo {

std::unique_ptr<HrtfFilterBank> HrtfFilterBank::Make(const HrtfResponses& responses,
                                                     unsigned numVoices,
                                                     unsigned) {
    if (responses.AreCells()) return std::make_unique<HrtfCellBank>(responses, numVoices);
    return std::make_unique<HrtfFirBank>(responses, numVoices);
}

}  // namespace Quilo
