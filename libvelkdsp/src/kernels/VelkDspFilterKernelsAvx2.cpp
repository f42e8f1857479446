// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx2Floats.h"
#include "kernels/VelkDspFilterKernelsEight.h"
#include "kernels/VelkDspFilterKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx2Operations : Avx2Floats {
    static Vec Least(Vec a, Vec b) { return _mm256_min_ps(a, b); }
    static Vec Largest(Vec a, Vec b) { return _mm256_max_ps(a, b); }
};

}  // namespace

const FilterKernels& FilterKernels::Avx2() noexcept {
    static constexpr FilterKernels kKernels{AllPass, VectorFilterKernels<Avx2Operations>::NearField,
                                            VectorFilterKernels<Avx2Operations>::LimitGrowth,
                                            ToRows, FromRows};
    return kKernels;
}

}  // namespace tav
