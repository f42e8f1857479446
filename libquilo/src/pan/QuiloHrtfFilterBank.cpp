// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfFilterBank.h"

#include "pan/QuiloHrtfCellBank.h"
#include "pan/QuiloHrtfFirBank.h"
#include "pan/QuiloHrtfSpectralBank.h"

namespace Quilo {

std::unique_ptr<HrtfFilterBank> HrtfFilterBank::Make(const HrtfResponses& responses,
                                                     unsigned numVoices,
                                                     unsigned blockSize,
                                                     bool earsDiffer) {
    if (responses.AreCells()) return std::make_unique<HrtfCellBank>(responses, numVoices);
    if (!earsDiffer && HrtfSpectralBank::Suits(responses, blockSize)) {
        return std::make_unique<HrtfSpectralBank>(responses, numVoices, blockSize);
    }
    return std::make_unique<HrtfFirBank>(responses, numVoices, earsDiffer);
}

}  // namespace Quilo
