// SPDX-License-Identifier: MIT
#include "math/VelkDspSpherePoints.h"

#include <cmath>
#include <numbers>

namespace tav {

std::vector<SphereDirection> FibonacciGrid(std::size_t numPoints) {
    constexpr double kDegrees = 180 / std::numbers::pi;
    constexpr double kGoldenTurn = 2 - std::numbers::phi;  // 137.5 degrees, in turns
    std::vector<SphereDirection> directions;
    directions.reserve(numPoints);
    for (std::size_t k = 0; k < numPoints; ++k) {
        const auto place = static_cast<double>(k);
        const double height = 1 - (2 * place + 1) / static_cast<double>(numPoints);
        const double turns = place * kGoldenTurn;
        const double azimuthDeg = 360 * (turns - std::ceil(turns - 0.5));
        directions.push_back({azimuthDeg, kDegrees * std::asin(height)});
    }
    return directions;
}

}  // namespace tav
