// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSubbandKernels.h"

#include <algorithm>

namespace tav {
namespace {

void MultiplySubbands(const SubbandProduct& product) noexcept TAV_NONBLOCKING {
    for (int row = 0; row < product.numRows; ++row) {
        float* const y = product.y + row * product.yStride;
        std::fill_n(y, product.numColumns, 0.f);
        for (int k = 0; k < product.numInner; ++k) {
            const float a = product.a[row * product.aStride + k];
            const float* const b = product.b + k * product.bStride;
            for (int column = 0; column < product.numColumns; ++column) y[column] += a * b[column];
        }
    }
}

void WindowSubbands(float* y,
                    const float* const* rows,
                    const float* weights) noexcept TAV_NONBLOCKING {
    std::fill_n(y, 16, 0.f);
    for (int tap = 0; tap < kWindowTaps; ++tap) {
        for (int k = 0; k < 16; ++k) y[k] += rows[tap][k] * weights[16 * tap + k];
    }
}

}  // namespace

const SubbandKernels& SubbandKernels::Scalar() noexcept {
    static constexpr SubbandKernels kKernels{MultiplySubbands, WindowSubbands};
    return kKernels;
}

}  // namespace tav
