// SPDX-License-Identifier: MIT
#include "kernels/VelkDspConvolutionKernels.h"

#include "kernels/VelkDspKernels.h"

namespace tav {

const ConvolutionKernels& ConvolutionKernelsNamed([[maybe_unused]] std::string_view name) noexcept {
#if defined(TAV_X86_KERNELS)
    if (name == "avx2" || name == "avx512") return Avx2ConvolutionKernels();
#endif
    return ScalarConvolutionKernels();
}

const ConvolutionKernels& BestConvolutionKernels() noexcept {
    return ConvolutionKernelsNamed(BestKernels().name);
}

}  // namespace tav
