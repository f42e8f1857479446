// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include <algorithm>

namespace tav {
namespace {

void FindPeaks(const float* elements,
               std::int32_t numBlocks,
               const float* position,
               float* best,
               std::int32_t* bestBlock) noexcept {
    const float x = position[0];
    const float y = position[1];
    const float z = position[2];
    for (std::int32_t block = 0; block < numBlocks; ++block) {
        const float* m[kTripletElements];
        for (std::ptrdiff_t e = 0; e < kTripletElements; ++e) m[e] = elements + e * kTripletLanes;
        float least[kTripletLanes];
        for (std::ptrdiff_t lane = 0; lane < kTripletLanes; ++lane) {
            const float a = m[0][lane] * x + m[1][lane] * y + m[2][lane] * z;
            const float b = m[3][lane] * x + m[4][lane] * y + m[5][lane] * z;
            const float c = m[6][lane] * x + m[7][lane] * y + m[8][lane] * z;
            least[lane] = std::min(std::min(a, b), c);
        }
        for (std::ptrdiff_t lane = 0; lane < kTripletLanes; ++lane) {
            // A mask instead of a branch, so that compilers vectorise the loop.
            const std::int32_t isHigher = -static_cast<std::int32_t>(least[lane] > best[lane]);
            bestBlock[lane] = (block & isHigher) | (bestBlock[lane] & ~isHigher);
            best[lane] = std::max(best[lane], least[lane]);
        }
        elements += kTripletElements * kTripletLanes;
    }
}

}  // namespace

const TripletKernels& TripletKernels::Scalar() noexcept {
    static constexpr TripletKernels kKernels{FindPeaks};
    return kKernels;
}

}  // namespace tav
