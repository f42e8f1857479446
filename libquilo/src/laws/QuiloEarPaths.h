// SPDX-License-Identifier: MIT
// The ways of a sound from a source to two ears.
#pragma once

#include <array>

namespace Quilo {

/// A delay, a gain and the shadows of what stands in the way. A shadow is the gain far above the
/// corner of its section, relative to that at 0 Hz (see HeadShadowAlpha); 1 is none.
struct EarPath {
    float delayMs = 0.f;
    float gain = 1.f;
    float headShadow = 1.f;
    float torsoShadow = 1.f;  // of direct paths only
};

/// Left ear, right ear. Reflected paths are silent unless a model says otherwise.
struct EarPaths {
    std::array<EarPath, 2> direct{};
    std::array<EarPath, 2> reflected{EarPath{.gain = 0.f}, EarPath{.gain = 0.f}};
};

}  // namespace Quilo
