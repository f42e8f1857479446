// SPDX-License-Identifier: MIT
#include "QuiloPanDocumentation.h"

#include "QuiloProject.h"
#include "QuiloSuite.h"

#include <cstdio>

namespace Quilo::External {

using VelkMax::ArgumentDoc;

namespace {

constexpr const char* kSeeAlso[] = {"matrix~", "mc.mixdown~", "pattrstorage", "udpreceive", "dict"};

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
    static const VelkMax::ClassDocumentation documentation{TextsOf("quilo.pan~").digest,
                                                           TextsOf("quilo.pan~").description,
                                                           kSeeAlso,
                                                           version.c_str(),
                                                           kArguments,
                                                           kInlets,
                                                           kOutlets};
    return documentation;
}

}  // namespace Quilo::External
