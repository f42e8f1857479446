// SPDX-License-Identifier: MIT
// Measures how an object serves every direction: the object's own sound, from a twin that is moved
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
    std::string whyNot;         // "" where coverage means something; else the rest is empty
    double distanceMetres = 0;  // of the twin's source: that of the loudspeakers in the mean
    std::vector<DirectionCell> grid;
    std::vector<tav::CartesianVector> speakers;
    Coverage coverage;
};

/// Makes an object of the same type and subtype with one source and with every setting of
/// `object` as they are for its first source, but for mute, bypass and the glide, and listens to it
/// in every direction of a grid of 5 degrees. `object` is only asked.
/// @param hiddenSettings  messages that the object was sent and that the twin needs too
/// Thread: main, between vectors.
MeasuredCoverage MeasureCoverage(const Object& object,
                                 std::span<const std::vector<Atom>> hiddenSettings);

/// Whether a message changes the gains of the first source and no attribute tells afterwards:
/// `corners`, and its number of neighbours.
bool IsHiddenSetting(std::span<const Atom> message);

/// "coverage: KEY VALUE ...", a line for each number.
void PrintCoverage(const MeasuredCoverage& measured, Console& console);

/// What a picture shades, and the same numbers in words.
CoverageMap MapOf(const MeasuredCoverage& measured);

}  // namespace Quilo::Host
