// SPDX-License-Identifier: MIT
// One source on its paths to two ears, sample by sample.
#pragma once

#include "filterdesign/VelkDspSectionDesign.h"
#include "laws/QuiloEarPaths.h"
#include "processors/VelkDspDelay.h"
#include "processors/VelkDspRamp.h"
#include "processors/VelkDspSections.h"

#include <array>
#include <cstddef>

namespace Tests {

/// What a DelayAndFilterBank does with many sources at a time, with one.
class PlainPathVoice {
public:
    PlainPathVoice(float rateHz, float headHz, float torsoHz, float glideMs)
        : headG_(tav::IntegratorGain(static_cast<double>(headHz), static_cast<double>(rateHz))),
          torsoG_(tav::IntegratorGain(static_cast<double>(torsoHz), static_cast<double>(rateHz))),
          glideMs_(glideMs) {
        for (Path& path : paths_) {
            path.delay.SetSampleRate(rateHz);
            path.delay.SetMaximumDelay(20.f);
            path.delay.SetInterpolationTime(glideMs);
            for (tav::Ramp& ramp : path.mix) ramp.SetSampleRate(rateHz);
        }
    }

    /// Thread: control and audio, one after the other.
    void Set(const Quilo::EarPaths& paths, bool immediate) {
        for (std::size_t e = 0; e < 2; ++e) {
            paths_[e].Set(paths.direct[e], immediate ? 0.f : glideMs_);
            paths_[2 + e].Set(paths.reflected[e], immediate ? 0.f : glideMs_);
        }
    }

    /// Adds `frames` samples, at most 512.  @param hasTorso  false: direct paths and the head alone
    void Perform(float* const* outputs, const float* input, unsigned frames, bool hasTorso = true) {
        for (std::size_t p = 0; p < (hasTorso ? 4u : 2u); ++p) {
            float delayed[512], mix[4][512];
            paths_[p].delay.Perform(delayed, input, frames);
            for (std::size_t m = 0; m < 4; ++m) paths_[p].mix[m].Fill({mix[m], frames});
            for (unsigned k = 0; k < frames; ++k) {
                const auto at = [&](std::size_t m) { return static_cast<double>(mix[m][k]); };
                double x = static_cast<double>(delayed[k]);
                if (hasTorso) x = paths_[p].torso.Tick(x, torsoG_, {at(2), at(3)});
                x = paths_[p].head.Tick(x, headG_, {at(0), at(1)});
                outputs[p % 2][k] += static_cast<float>(x);
            }
        }
    }

private:
    struct Path {
        tav::Delay delay;
        tav::FirstOrderSection head, torso;
        std::array<tav::Ramp, 4> mix{tav::Ramp(), tav::Ramp(), tav::Ramp(), tav::Ramp()};

        void Set(const Quilo::EarPath& path, float glideMs) {
            delay.SetDelay(path.delayMs, glideMs == 0.f);
            const float values[] = {path.gain * path.headShadow,
                                    path.gain * (1.f - path.headShadow), path.torsoShadow,
                                    1.f - path.torsoShadow};
            for (std::size_t m = 0; m < 4; ++m) mix[m].Set(values[m], glideMs);
        }
    };
    std::array<Path, 4> paths_;  // direct left and right, reflected left and right
    double headG_, torsoG_;
    float glideMs_;
};

}  // namespace Tests
