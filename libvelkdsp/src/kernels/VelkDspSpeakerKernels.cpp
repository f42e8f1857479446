// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSpeakerKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const SpeakerKernels& SpeakerKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2") return Avx2SpeakerKernels();
    if (name == "avx512") return Avx512SpeakerKernels();
#endif
    return ScalarSpeakerKernels();
}

const SpeakerKernels& BestSpeakerKernels() noexcept {
    return SpeakerKernelsNamed(BestKernels().name);
}

}  // namespace tav
