// SPDX-License-Identifier: MIT
#include "kernels/VelkDspTripletKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const TripletKernels& TripletKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2") return Avx2TripletKernels();
    if (name == "avx512") return Avx512TripletKernels();
#endif
    return ScalarTripletKernels();
}

const TripletKernels& BestTripletKernels() noexcept {
    return TripletKernelsNamed(BestKernels().name);
}

}  // namespace tav
