// SPDX-License-Identifier: MIT
#include "kernels/VelkDspAvx512Floats.h"
#include "kernels/VelkDspFilterKernelsEight.h"
#include "kernels/VelkDspFilterKernelsVector.h"

#include <immintrin.h>

namespace tav {
namespace {

struct Avx512Operations : Avx512Floats {
    static Vec Least(Vec a, Vec b) { return _mm512_maskz_min_ps(kAll, a, b); }
    static Vec Largest(Vec a, Vec b) { return _mm512_maskz_max_ps(kAll, a, b); }
};

}  // namespace

const FilterKernels& FilterKernels::Avx512() noexcept {
    static constexpr FilterKernels kKernels{
        AllPass, VectorFilterKernels<Avx512Operations>::NearField,
        VectorFilterKernels<Avx512Operations>::LimitGrowth, ToRows, FromRows};
    return kKernels;
}

}  // namespace tav
