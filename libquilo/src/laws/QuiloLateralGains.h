// SPDX-License-Identifier: MIT
// A level difference between two ears without filters.
#pragma once

namespace Quilo {

struct EarGains {
    float left = 1.f;
    float right = 1.f;
};

/// 6 dB at the side, in between by the sine of the lateral angle. The sum of the squares is 2
/// everywhere.
/// @param cosine  CosineToRightEar
EarGains LateralGains(float cosine);

}  // namespace Quilo
