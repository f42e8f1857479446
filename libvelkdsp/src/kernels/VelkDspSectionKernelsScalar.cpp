// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

namespace tav {
namespace {

template <bool kMoving>
void Run(const SectionRun& run) noexcept TAV_NONBLOCKING {
    for (int lane = 0; lane < run.numLanes; ++lane) {
        const float* x = run.inputs[lane];
        float* const y = run.outputs[lane];
        for (int k = 0; k < run.n; ++k) {
            double v = static_cast<double>(x[k]);
            for (SectionBank* bank = run.banks; bank != run.banks + run.numBanks; ++bank) {
                SectionBank& b = *bank;
                if constexpr (kMoving) {
                    b.m0[lane] += b.step0[lane];
                    b.m1[lane] += b.step1[lane];
                    b.m2[lane] += b.step2[lane];
                }
                const double s1 = b.s1[lane];
                const double s2 = b.s2[lane];
                const double v3 = v - s2;
                const double band = b.a1[lane] * s1 + b.a2[lane] * v3;
                const double low = s2 + b.a2[lane] * s1 + b.a3[lane] * v3;
                b.s1[lane] = 2.0 * band - s1;
                b.s2[lane] = 2.0 * low - s2;
                v = b.m0[lane] * v + b.m1[lane] * band + b.m2[lane] * low;
            }
            y[k] = static_cast<float>(v);
        }
    }
}

}  // namespace

const SectionKernels& SectionKernels::Scalar() noexcept {
    static constexpr SectionKernels kKernels{Run<false>, Run<true>};
    return kKernels;
}

}  // namespace tav
