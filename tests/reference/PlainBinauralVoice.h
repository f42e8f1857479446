// SPDX-License-Identifier: MIT
// One source for two ears, from the blocks that do one thing each.
#pragma once

#include "processors/VelkDspCrossfadedCascade.h"
#include "processors/VelkDspDelay.h"

#include <array>
#include <cstddef>
#include <optional>

namespace Tests {

/// A delay and a cascade an ear; what panners do with many sources at a time, with one.
class PlainBinauralVoice {
public:
    PlainBinauralVoice(std::size_t maxCells, float rateHz, float glideMs) {
        for (Ear& ear : ears_) {
            ear.delay.SetSampleRate(rateHz);
            ear.delay.SetMaximumDelay(20.f);
            ear.delay.SetInterpolationTime(glideMs);
            ear.filter.emplace(maxCells, rateHz);
        }
    }

    /// Thread: control and audio, one after the other.
    void Set(std::size_t ear, const tav::BiquadCells& cells, float delayMs, bool immediate) {
        ears_[ear].delay.SetDelay(delayMs, immediate);
        ears_[ear].filter->SetFade(immediate ? 0.f : 5.f, tav::FadeShape::SquareCosine);
        ears_[ear].filter->Load(&cells);
    }

    /// Adds `frames` samples, at most 512.
    void Perform(float* const* outputs, const float* input, unsigned frames) {
        for (std::size_t e = 0; e < ears_.size(); ++e) {
            float delayed[512];
            unsigned starts = 1;
            ears_[e].delay.Perform(delayed, input, frames);
            ears_[e].filter->Perform(delayed, delayed, frames, starts);
            for (unsigned k = 0; k < frames; ++k) outputs[e][k] += delayed[k];
        }
    }

private:
    struct Ear {
        tav::Delay delay;
        std::optional<tav::CrossfadedCascade> filter;
    };
    std::array<Ear, 2> ears_;
};

}  // namespace Tests
