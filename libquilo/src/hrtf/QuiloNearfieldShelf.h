// SPDX-License-Identifier: MIT
// What nearness does to the spectrum at one ear.
#pragma once

#include <array>
#include <cstddef>

namespace Quilo {

/// From the level at one ear of a source far away to that of a near one, both brought to the same
/// level at the centre of the head: D = (g0 + gh j f/fc) / (1 + j f/fc).
/// @see "Distance variation function for simulation of near-field virtual auditory space", ICASSP
/// 2006; "Distance rendering and perception of nearby virtual sound sources with a near-field
/// filter model", Applied Acoustics 115, 2017, for the form of the shelf
struct NearfieldShelf {
    float lowDb = 0.f;   // g0
    float highDb = 0.f;  // gh
    float cornerHz = 1000.f;
};

/// The shelves of a rigid sphere of 8.75 cm, from 0.15 m to 1.4 m. Those of nearer sources are as
/// at 0.15 m; from 1.4 m on D is 1.
class SphereShelves {
public:
    static constexpr double kNearest = 0.15;  // metres
    static constexpr double kFar = 1.4;

    /// Made when they are first asked for, in some hundredths of a second, and constant then.
    /// Thread: any but audio.
    static const SphereShelves& Get();

    /// Between the places of the table all numbers are interpolated, the corner by its logarithm.
    /// @param distance  metres from the centre of the head
    /// @param angleRad  between the direction of the source and the axis through the ear, 0 .. pi
    /// Thread: any.
    NearfieldShelf At(double distance, double angleRad) const noexcept;

private:
    static constexpr std::size_t kNumDistances = 14;
    static constexpr std::size_t kNumAngles = 19;

    SphereShelves();

    std::array<std::array<NearfieldShelf, kNumAngles>, kNumDistances> table_{};
};

}  // namespace Quilo
