// SPDX-License-Identifier: MIT
#include "kernels/VelkDspFilterKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const FilterKernels& FilterKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2") return Avx2FilterKernels();
    if (name == "avx512") return Avx512FilterKernels();
#endif
    return ScalarFilterKernels();
}

const FilterKernels& BestFilterKernels() noexcept { return FilterKernelsNamed(BestKernels().name); }

}  // namespace tav
