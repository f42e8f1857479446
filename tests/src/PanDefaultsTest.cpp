// SPDX-License-Identifier: MIT
// What an inspector resets attributes to, and what no console line shows.
#include "QuiloPanObject.h"
#include "src/PanBox.h"

#include <gtest/gtest.h>

using namespace Tests;

namespace {

struct Default {
    const char* box;
    const char* attribute;
    const char* text;
};

// clang-format off
constexpr Default kDefaults[] = {
    {"2 4 angular", "automute", "20"},         {"2 4 angular", "interpolationtime", "0"}, {"2 4 angular", "spread", "0 0"},
    {"2 4 angular", "mute", "0"},              {"2 4 angular", "bypass", "0"},            {"1 4 hoa3d", "hoamode", "precise"},
    {"1 4 hoa3d", "encoding", "SN3D"},         {"1 3 hoa2d", "norm", "SN3D"},             {"1 4 nfchoa3d", "nfchighpass", "1"},
    {"1 4 nfchoa3d", "speakersradius", "1"},   {"2 4 dbap", "spreadmode", "omni"},        {"2 4 dbap", "muteoutside", "0"},
    {"2 4 dbap3d", "spreadxyz", "0 0 0 0 0 0"}, {"1 4 subwoofers", "cutoff", "125"},
};
// clang-format on

TEST(PanDefaults, StandInThePropertyLists) {
    for (const Default& row : kDefaults) {
        const PanBox box(row.box);
        std::string found;
        for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(box.Get())) {
            if (attribute.name != gensym(row.attribute)) continue;
            for (const HostApi::PropertyInfo& property : attribute.properties) {
                if (property.name == gensym("default")) found = HostApi::AtomText(property.values);
            }
        }
        EXPECT_EQ(found, row.text) << row.box << " " << row.attribute;
    }
}

TEST(PanSource, IsMutedByOneAndHeardWithAnyOtherNumber) {
    PanBox box("2 2 xy");
    const Quilo::Pan& engine = *Quilo::PanObject::Of(box.Get()).Engine();
    for (const auto& [number, isMuted] : {std::pair("1", true), {"5", false}, {"-1", false}}) {
        box.Send("source 2 mute 1");
        box.Send(std::string("source 2 mute ") + number);
        EXPECT_EQ(engine.SourceMute(1), isMuted) << number;
        EXPECT_FALSE(engine.SourceMute(0));
    }
}

}  // namespace
