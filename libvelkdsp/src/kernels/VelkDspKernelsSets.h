// SPDX-License-Identifier: MIT
// The kernel sets that only some processors can run; RunnableKernels() says which.
#pragma once

namespace tav {

struct Kernels;

const Kernels& Avx2Kernels() noexcept;    // AVX2 and FMA
const Kernels& Avx512Kernels() noexcept;  // AVX-512 F

}  // namespace tav
