// SPDX-License-Identifier: MIT
#include "QuiloPanDocumentation.h"

#include "QuiloProject.h"

#include <cstdio>

namespace Quilo::External {

using VelkMax::ArgumentDoc;

namespace {

constexpr const char* kSeeAlso[] = {"pan~", "matrix~", "mc.mixdown~", "udpreceive", "dict"};

// clang-format off
constexpr ArgumentDoc kArguments[] = {
    // type     name          description
    {"int",    "numinputs",  "Number of sources, which is the number of signal inlets: 1 to 250."},
    {"int",    "numoutputs", "Number of loudspeakers, ambisonic components or ears, which is the number of signal outlets: 1 to 250."},
    {"symbol", "type",       "Panning algorithm, such as <m>vbap2d</m> or <m>hoa3d</m>."},
    {"symbol", "subtype",    "Variant of the algorithm; most have only <m>direct</m>."},
};
constexpr ArgumentDoc kInlets[] = {
    // type             name                            description
    {"signal", "(signal) source 1, messages",  "The signal of the first source; messages for the whole object."},
    {"signal", "(signal) further sources",     "One inlet for each further source."},
};
constexpr ArgumentDoc kOutlets[] = {
    // type     name                          description
    {"signal", "(signal) channels",          "One outlet for each loudspeaker, ambisonic component or ear."},
    {"message", "dump",                       "The rightmost outlet: answers to <m>get</m> messages, <m>dump</m> and <m>dumpdict</m>."},
};
// clang-format on

constexpr char kDescription[] =
    "<o>quilo.pan~</o> distributes any number of sources over loudspeakers, over the components of "
    "an ambisonic sound field or over the two ears of a listener, block by block, as their "
    "positions and the chosen algorithm ask for. Azimuth is in degrees, 0 to the front and "
    "positive to the right; elevation in degrees, positive upwards; distances are in metres. In "
    "Cartesian positions x points to the right, y to the front and z upwards.<br/> In the "
    "ambisonic types a source in front is encoded in the channel Y: decoders that follow the "
    "usual frame, in which it is X, want their directions turned by 90 degrees.";

/// The build date is fixed, since patches look for it. Signals are 32-bit floats inside.
std::string VersionText() {
    char text[64];
    std::snprintf(text, sizeof text, "%d.%d.%d (Build %s) (%d bits float)", Project::kVersionMajor,
                  Project::kVersionMinor, Project::kVersionPatch, "May 11 2016", 32);
    return text;
}

}  // namespace

const VelkMax::ClassDocumentation& PanTilda::Documentation() {
    static const std::string version = VersionText();
    static const VelkMax::ClassDocumentation documentation{
        "Spatial panner for loudspeakers, ambisonics and headphones",
        kDescription,
        kSeeAlso,
        version.c_str(),
        kArguments,
        kInlets,
        kOutlets};
    return documentation;
}

}  // namespace Quilo::External
