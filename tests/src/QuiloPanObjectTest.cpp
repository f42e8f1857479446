// SPDX-License-Identifier: MIT
// What scripts cannot do to an object: values that only C programs send, other hosts' vectors, the
// end of its life.
#include "QuiloPanObject.h"

#include "src/PanBox.h"
#include "support/BlockPlayer.h"

#include <gtest/gtest.h>

#include "z_dsp.h"

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

using namespace Tests;
using Lines = std::vector<std::string>;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What the perform routine makes of a vector of ones. It neither allocates nor locks.
Channels<double> Render(const PanBox& box, std::size_t numInputs, std::size_t numOutputs) {
    const Channels<double> ones(numInputs, std::vector<double>(64, 1.0));
    return PlayBlocks(ones, numOutputs, 64, 64, [&](auto outputs, auto inputs, unsigned frames) {
        Quilo::PanObject::Of(box.Get()).Render(
            outputs, static_cast<max_long>(numOutputs), const_cast<double**>(inputs),
            static_cast<max_long>(numInputs), static_cast<max_long>(frames));
    });
}

}  // namespace

TEST(PanObject, RefusesValuesThatAreNotFinite) {
    PanBox box("2 4 angular @interpolationtime 10 @spread 5 6 @automute 7");
    const auto setAll = [&](double value) {
        for (const char* name : {"interpolationtime", "spread", "automute"}) {
            object_attr_setfloat(box.Get(), gensym(name), value);
        }
    };
    setAll(kNaN);
    EXPECT_EQ(box.Ask("spread"), "5 6");
    EXPECT_EQ(box.Ask("interpolationtime"), "10");
    EXPECT_EQ(box.Ask("automute"), "7");
    EXPECT_EQ(box.TakeConsole().size(), 3u) << "one line for each";
    // Deliberate: Max's clip filter comes first, and to it infinity is merely beyond the range.
    setAll(kInfinity);
    EXPECT_EQ(box.Ask("spread"), "100 6");
    EXPECT_EQ(box.Ask("interpolationtime"), "200");
    EXPECT_EQ(box.TakeConsole(), Lines{});

    const std::string before = box.Ask("sourcespositions");
    for (const double value : {kNaN, kInfinity, -kInfinity}) {
        std::array<t_atom, 6> xyz{};
        for (t_atom& atom : xyz) atom_setfloat(&atom, value);
        object_attr_setvalueof(box.Get(), gensym("sourcespositions"), 6, xyz.data());
        EXPECT_EQ(box.Ask("sourcespositions"), before);
        EXPECT_EQ(box.TakeConsole(), Lines{"error: error reading source coordinates"});
    }
}

// An inspector and a pattr at the object that moves 1000 times a second, from both threads.
TEST(PanObject, AnnouncesWhatMovesTwentyFiveTimesASecond) {
    PanBox box("2 4 vbap2d");
    std::map<std::string, int> told;
    t_object* const client = HostApi::Watch(box.Get(), [&](t_symbol* message, t_symbol* attribute) {
        ++told[attribute != nullptr ? attribute->s_name : message->s_name];
    });
    for (int ms = 0; ms < 1000; ++ms) {
        const HostApi::ThreadScope scope(ms % 2 != 0 ? HostApi::ThreadKind::Main
                                                     : HostApi::ThreadKind::Scheduler);
        box.Send("source " + std::to_string(1 + ms % 2) + " azim++ 7");
        HostApi::AdvanceClocks(1);
    }
    using Told = std::map<std::string, int>;
    EXPECT_EQ(told, (Told{{"sourcespositions", 25}, {"modified", 25}}));
    // A pattr that sets the whole value is not told that it is another one.
    max_long count = 0;
    t_atom* state = nullptr;
    object_getvalueof(box.Get(), &count, &state);
    told.clear();
    object_setvalueof(box.Get(), count, state);
    sysmem_freeptr(state);
    HostApi::AdvanceClocks(100);
    EXPECT_EQ(told["modified"], 0);
    EXPECT_EQ(told["automute"], 1);
    EXPECT_EQ(told["interpolationtime"], 2) << "by Max, and by the object itself";
    object_free(client);
}

TEST(PanObject, IsNotMadeWithoutMemoryForItsAttributes) {
    for (const unsigned block : {1u, 2u, 3u, 4u}) {  // the first is the object's record
        HostApi::FailCall("sysmem_newptr", block, MAX_ERR_OUT_OF_MEM);
        PanBox box("1 4 vbap2d");
        EXPECT_EQ(box.Get(), nullptr);
        EXPECT_EQ(box.TakeConsole(),
                  Lines{block == 1 ? "error: couldnt allocate memory"
                                   : "error: exception : error allocating memory for attribute"});
    }
    HostApi::FailCall("sysmem_newptr", 0, MAX_ERR_NONE);
}

TEST(PanObject, IsSilentForNumbersOfChannelsThatAreNotItsOwn) {
    const PanBox box("1 2 angular");
    for (const auto& [numInputs, numOutputs] : {std::pair{1u, 3u}, {2u, 2u}, {0u, 2u}}) {
        EXPECT_EQ(Render(box, numInputs, numOutputs),
                  Channels<double>(numOutputs, std::vector<double>(64)));
    }
}

// Such an object is left when there was no memory for any engine.
TEST(PanObject, LivesWithoutAnEngine) {
    PanBox box("2 4 dbap");
    Quilo::PanObject*& object = reinterpret_cast<Quilo::PanRecord*>(box.Get())->object;
    Quilo::PanObject* const made = object;
    Quilo::PanObject bare(reinterpret_cast<Quilo::PanRecord*>(box.Get())->header);
    object = &bare;
    for (const HostApi::MessageInfo& message : HostApi::Messages(object_class(box.Get()))) {
        const std::string name = message.name->s_name;
        if (name == "dsp64" || name == "signal" || name == "generatexml") continue;
        for (const char* atoms : {"", " 1 az 30", " 1 spread 3", " 1 mute 1", " word", " 1 2 3 4"})
            box.Send(name + atoms);
    }
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(box.Get())) {
        const std::string name = attribute.name->s_name;
        box.Send(name + " 1 2 3");
        box.Ask(name);
    }
    EXPECT_EQ(Render(box, 2, 4), Channels<double>(4, std::vector<double>(64)));
    object = made;
}

TEST(PanObject, HasInletsAndOutletsOfTheBoxText) {
    struct Case {
        const char* text;
        std::size_t inlets, outlets;
    };
    for (const auto& [text, inlets, outlets] : {Case{"250 250 vbap2d", 250, 250},
                                                {"1e9 -7", 250, 1},
                                                {"@numoutputs 2 @numinputs 3", 3, 2},
                                                {"2 2 @type @spread @", 2, 2},
                                                {"1 7 ms", 1, 7}}) {
        PanBox box(text);
        ASSERT_NE(box.Get(), nullptr);
        EXPECT_EQ(HostApi::InletTypes(box.Get()).size(), inlets);
        const auto types = HostApi::OutletTypes(box.Get());
        ASSERT_EQ(types.size(), outlets + 1);
        EXPECT_EQ(types.front(), "signal");
        EXPECT_EQ(types.back(), "") << "the dump outlet is the rightmost";
        EXPECT_EQ(HostApi::SignalFlags(box.Get()) & Z_NO_INPLACE, Z_NO_INPLACE);
    }
}
