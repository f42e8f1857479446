// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const SectionKernels& SectionKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2" || name == "avx512") return Avx2SectionKernels();
#endif
    return ScalarSectionKernels();
}

const SectionKernels& BestSectionKernels() noexcept {
    return SectionKernelsNamed(BestKernels().name);
}

}  // namespace tav
