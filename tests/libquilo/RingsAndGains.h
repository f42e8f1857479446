// SPDX-License-Identifier: MIT
// Loudspeakers round the listener, and the energy of gains.
#pragma once

#include "math/VelkDspSpherical.h"

#include <span>
#include <vector>

namespace Tests {

inline tav::CartesianArray At(const std::vector<float>& azimuthsDeg, float distance = 1.f) {
    tav::CartesianArray layout(azimuthsDeg.size());
    for (std::size_t i = 0; i < azimuthsDeg.size(); ++i) {
        layout[i] = tav::FromNavigational(azimuthsDeg[i], 0.f, distance);
    }
    return layout;
}

template <class Gains>
double Energy(const Gains& gains) {
    double energy = 0.0;
    for (const auto gain : gains) energy += static_cast<double>(gain) * static_cast<double>(gain);
    return energy;
}

}  // namespace Tests
