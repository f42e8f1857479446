// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const SectionKernels& SectionKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
    return ScalarSectionKernels();
}

const SectionKernels& BestSectionKernels() noexcept {
    return SectionKernelsNamed(BestKernels().name);
}

}  // namespace tav
