// SPDX-License-Identifier: MIT
// How what the sources of a binaural panner go through changes.
#pragma once

#include "processors/VelkDspCrossfade.h"
#include "processors/VelkDspDelayKernels.h"

namespace Quilo {

struct BinauralSettings {
    float fadeMs = 5.f;  ///< of filters that change
    tav::FadeShape fadeShape = tav::FadeShape::SquareCosine;
    tav::DelayKind delayKind = tav::DelayKind::Lagrange;  ///< what delays read between samples
};

}  // namespace Quilo
