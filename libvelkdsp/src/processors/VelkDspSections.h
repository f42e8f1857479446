// SPDX-License-Identifier: MIT
// Single filter sections in integrator form, sample by sample.
//
// Coefficients are passed with each sample, so they may change while the section runs. For many
// channels side by side see MultiEqualizer.
#pragma once

#include "filterdesign/VelkDspSectionDesign.h"
#include "text/VelkDspNonblocking.h"

#include <cmath>

namespace tav {

/// y = m0 x + m1 lowpass; the high-pass is 1, -1 and the all-pass 1, -2.
struct FirstOrderMix {
    double m0 = 1.0;
    double m1 = 0.0;
};

/// States are doubles. A section does not check them itself: once per block its owner calls Clear()
/// if IsSane() is false, that is if a state is not a number or very large.  Thread: audio.
class FirstOrderSection {
public:
    /// @param g  IntegratorGain() of the corner, above 0
    double Tick(double x, double g, const FirstOrderMix& mix) noexcept TAV_NONBLOCKING {
        const double v = (x - s_) * (g / (1.0 + g));
        const double low = v + s_;
        s_ = low + v;
        return mix.m0 * x + mix.m1 * low;
    }
    bool IsSane() const noexcept TAV_NONBLOCKING { return std::abs(s_) <= kLargestState; }
    void Clear() noexcept TAV_NONBLOCKING { s_ = 0.0; }

    static constexpr double kLargestState = 1e12;

private:
    double s_ = 0.0;
};

class SecondOrderSection {
public:
    /// @param loop  SectionLoop::Of(design.g, design.k), which costs a division
    double Tick(double x,
                const SectionLoop& loop,
                const SectionDesign& design) noexcept TAV_NONBLOCKING {
        const double v3 = x - s2_;
        const double band = loop.a1 * s1_ + loop.a2 * v3;
        const double low = s2_ + loop.a2 * s1_ + loop.a3 * v3;
        s1_ = 2.0 * band - s1_;
        s2_ = 2.0 * low - s2_;
        return design.m0 * x + design.m1 * band + design.m2 * low;
    }
    bool IsSane() const noexcept TAV_NONBLOCKING {
        return std::abs(s1_) + std::abs(s2_) <= FirstOrderSection::kLargestState;
    }
    void Clear() noexcept TAV_NONBLOCKING { s1_ = s2_ = 0.0; }

private:
    double s1_ = 0.0;
    double s2_ = 0.0;
};

}  // namespace tav
