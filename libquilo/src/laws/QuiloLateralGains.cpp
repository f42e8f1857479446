// SPDX-License-Identifier: MIT
#include "laws/QuiloLateralGains.h"

#include <cmath>

namespace Quilo {

EarGains LateralGains(float cosine) {
    constexpr double kMostDb = 6.0;
    // The power of one ear from the ratio of both; turned around it is that of the other.
    const auto gain = [cosine](double side) {
        const double ratio = std::pow(10.0, -side * kMostDb / 10.0 * static_cast<double>(cosine));
        return static_cast<float>(std::sqrt(2.0 / (1.0 + ratio)));
    };
    return {.left = gain(-1.0), .right = gain(1.0)};
}

}  // namespace Quilo
