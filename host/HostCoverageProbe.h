// SPDX-License-Identifier: MIT
// Measures how an object renders each direction, with a copy of the object whose source is moved
// over the sphere.
#pragma once

#include "HostCoverage.h"
#include "HostScript.h"
#include "picture/HostScene.h"

#include <string>
#include <vector>

namespace Quilo::Host {

class Console;
class Object;

struct MeasuredCoverage {
    std::string type;           // of the panner
    std::string whyNot;         // why there is no coverage, then the rest is empty; "" if there is
    double distanceMetres = 0;  // of the copy's source: the mean distance of the loudspeakers
    std::vector<DirectionCell> grid;
    std::vector<tav::CartesianVector> speakers;
    Coverage coverage;
};

/// Makes a copy of `object` with one source that has the settings of the first source of `object`,
/// except mute, bypass and interpolation time, and measures its gains in each direction of a grid
/// of 5 degrees. `object` itself is not changed.
/// @param hiddenSettings  messages that the object received and the copy needs, too
/// Thread: main, between vectors.
MeasuredCoverage MeasureCoverage(const Object& object,
                                 std::span<const std::vector<Atom>> hiddenSettings);

/// Whether a message changes the gains of the first source without any attribute showing it:
/// `corners`, and the number of neighbours of source 1.
bool IsHiddenSetting(std::span<const Atom> message);

/// Writes "coverage: KEY VALUE ...", one line for each number.
void PrintCoverage(const MeasuredCoverage& measured, Console& console);

/// The data for the map of a picture.
CoverageMap MapOf(const MeasuredCoverage& measured);

}  // namespace Quilo::Host
