// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const HoaKernels* HoaKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2") return &Avx2HoaKernels();
    if (name == "avx512") return &Avx512HoaKernels();
#endif
    return nullptr;
}

const HoaKernels* BestHoaKernels() noexcept { return HoaKernelsNamed(BestKernels().name); }

}  // namespace tav
