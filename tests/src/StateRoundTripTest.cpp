// SPDX-License-Identifier: MIT
// Whatever the attributes of an object are set to, another object that is given its state reads the
// same and sounds the same.
#include "max/VelkMaxRestoring.h"
#include "src/PanBox.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

using namespace Tests;

namespace {

using Random = std::mt19937;

// ---- Legal values

std::vector<t_atom> PropertyOf(const HostApi::AttributeInfo& attribute, const char* name) {
    for (const HostApi::PropertyInfo& property : attribute.properties) {
        if (property.name == gensym(name)) return property.values;
    }
    return {};
}

double Limit(const HostApi::AttributeInfo& attribute, const char* name, double other) {
    const std::vector<t_atom> values = PropertyOf(attribute, name);
    return values.empty() ? other : atom_getfloat(values.data());
}

/// As many values as the attribute has, each within its range; loudspeakers stay about where they
/// are, for not every set of points makes a layout.
std::vector<t_atom> LegalValue(const HostApi::AttributeInfo& attribute,
                               std::vector<t_atom> values,
                               Random& random) {
    const std::vector<t_atom> choices = PropertyOf(attribute, "enumvals");
    const bool isLayout = attribute.name == gensym("speakerspositions");
    const double low = Limit(attribute, "min", -2.0);
    const double high = Limit(attribute, "max", std::max(low, 0.0) + 2.0);
    for (t_atom& value : values) {
        if (!choices.empty()) {
            value =
                choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random)];
        } else if (attribute.type == gensym("long")) {
            const auto last = static_cast<t_atom_long>(high);
            atom_setlong(&value, std::uniform_int_distribution<t_atom_long>(0, last)(random));
        } else if (isLayout) {
            const double move = std::uniform_real_distribution<double>(-0.02, 0.02)(random);
            atom_setfloat(&value, atom_getfloat(&value) + move);
        } else if (attribute.type == gensym("float32")) {
            atom_setfloat(&value, std::uniform_real_distribution<double>(low, high)(random));
        }
    }
    return values;
}

void SetAllAttributes(PanBox& box, Random& random) {
    const VelkMax::RestoringState restoring;  // so that every word of a menu is taken
    const std::set<std::string> structure{"numinputs", "numoutputs", "type", "subtype"};
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(box.Get())) {
        const std::string name = attribute.name->s_name;
        if (structure.contains(name) || !PropertyOf(attribute, "invisible").empty()) continue;
        std::vector<t_atom> values =
            LegalValue(attribute, HostApi::AttributeValue(box.Get(), name), random);
        object_attr_setvalueof(box.Get(), attribute.name, static_cast<max_long>(values.size()),
                               values.data());
    }
}

std::string AllValues(t_object* object) {
    std::string text;
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(object)) {
        const char* const name = attribute.name->s_name;
        text += std::string(name) + " " + HostApi::AtomText(HostApi::AttributeValue(object, name)) +
                "\n";
    }
    return text;
}

// ---- Ways a state goes from one object to another

void ByPattr(PanBox& from, PanBox& to) {
    max_long count = 0;
    t_atom* atoms = nullptr;
    EXPECT_EQ(object_getvalueof(from.Get(), &count, &atoms), MAX_ERR_NONE);
    EXPECT_EQ(object_setvalueof(to.Get(), count, atoms), MAX_ERR_NONE);
    sysmem_freeptr(atoms);
}

void ByPreset(PanBox& from, PanBox& to) {
    const auto records = HostApi::StorePreset(from.Get());
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(atom_getobj(records[0].data()), from.Get());
    EXPECT_EQ(HostApi::AtomText(records[0][1]), "quilo.pan~");
    HostApi::DeliverMessage(to.Get(), 0, atom_getsym(&records[0][2]),
                            std::span(records[0]).subspan(3));
}

/// What `dumpdict` sends: the name of a dictionary.
t_atom DumpedDictionary(PanBox& box) {
    t_atom name{};
    HostApi::SetOutletSink([&](const HostApi::OutletMessage& message) {
        EXPECT_EQ(message.selector, gensym("dictionary"));
        name = message.atoms[0];
    });
    box.Send("dumpdict");
    HostApi::SetOutletSink({});
    return name;
}

void ByDictionary(PanBox& from, PanBox& to) {
    const t_atom name = DumpedDictionary(from);
    HostApi::DeliverMessage(to.Get(), 0, gensym("dictionary"), {&name, 1});
}

void ByJson(PanBox& from, PanBox& to) {
    const TemporaryFolder folder;
    HostApi::AnswerDialog(HostApi::Dialog::SaveAs, folder / "state.json");
    from.Send("exportdict");
    HostApi::RunDeferred();
    HostApi::AnswerDialog(HostApi::Dialog::Open, folder / "state.json");
    to.Send("readdict");
    HostApi::RunDeferred();
}

// ---- Sound

/// What the object plays of the same noise once its gains rest and its filters are empty.
std::vector<double> Play(t_object* object) {
    constexpr std::size_t kFrames = 64;
    constexpr int kRest = 400;  // vectors: more than twice the longest interpolation time
    const std::size_t numInputs = HostApi::SignalInlets(object);
    const std::size_t numOutputs = HostApi::SignalOutlets(object);
    const std::vector<short> counts(numInputs + numOutputs, 1);
    HostApi::DspChain chain(object, counts);
    std::vector<double> in(numInputs * kFrames, 0.0);
    std::vector<double> out(numOutputs * kFrames);
    std::vector<double*> ins;
    std::vector<double*> outs;
    for (std::size_t k = 0; k < numInputs; ++k) ins.push_back(&in[k * kFrames]);
    for (std::size_t k = 0; k < numOutputs; ++k) outs.push_back(&out[k * kFrames]);
    std::vector<double> played;
    Random noise(1);
    for (int vector = 0; vector < kRest + 8; ++vector) {
        if (vector >= kRest) {
            for (double& sample : in) sample = std::uniform_real_distribution<double>(-1, 1)(noise);
        }
        chain.Perform(ins.data(), numInputs, outs.data(), numOutputs, kFrames);
        if (vector >= kRest) played.insert(played.end(), out.begin(), out.end());
    }
    return played;
}

struct Way {
    const char* name;
    void (*transfer)(PanBox& from, PanBox& to);
};
constexpr Way kWays[] = {
    {"pattr", ByPattr}, {"preset", ByPreset}, {"dictionary", ByDictionary}, {"json", ByJson}};

class StateRoundTrip : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { HostApi::SetAudioSettings({48000, 64, true}); }
    void TearDown() override { HostApi::SetAudioSettings({44100, 64, false}); }
};

}  // namespace

TEST_P(StateRoundTrip, KeepsValuesAndSound) {
    PanBox{GetParam()};  // the first one registers the class
    const std::size_t objects = HostApi::CountObjects();
    bool hasSounded = false;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Random random(seed);
        PanBox saved(GetParam());
        ASSERT_EQ(saved.TakeConsole(), std::vector<std::string>());
        SetAllAttributes(saved, random);
        EXPECT_EQ(saved.TakeConsole(), std::vector<std::string>());
        const std::vector<double> expected = Play(saved.Get());
        hasSounded |= std::ranges::any_of(expected, [](double sample) { return sample != 0.0; });
        for (const Way& way : kWays) {
            SCOPED_TRACE(std::string(way.name) + ", seed " + std::to_string(seed));
            PanBox restored(GetParam());
            way.transfer(saved, restored);
            EXPECT_EQ(restored.TakeConsole(), std::vector<std::string>());
            EXPECT_EQ(AllValues(restored.Get()), AllValues(saved.Get()));
            const std::vector<double> played = Play(restored.Get());
            double difference = 0.0;
            for (std::size_t k = 0; k < played.size(); ++k) {
                difference = std::max(difference, std::abs(played[k] - expected[k]));
            }
            // What is left of filters and of gains that rest: far below 24 bits.
            EXPECT_LT(difference, 1e-7);
        }
    }
    EXPECT_TRUE(hasSounded) << "muted with every seed";
    EXPECT_EQ(HostApi::CountObjects(), objects) << "a dictionary, say, that nobody released";
}

TEST(StateOfADumpedDictionary, MakesAnObjectInPlaceOfArguments) {
    Random random(5);
    PanBox saved("3 9 hoa3d");
    SetAllAttributes(saved, random);
    const t_atom name = DumpedDictionary(saved);
    t_dictionary* const dictionary = dictobj_findregistered_clone(atom_getsym(&name));
    dictionary_appendlong(dictionary, gensym("nonsense"), 1);
    t_atom argument{};
    atom_setobj(&argument, dictionary);
    saved.TakeConsole();
    void* const made = object_new_typed(gensym("box"), gensym("quilo.pan~"), 1, &argument);
    EXPECT_EQ(AllValues(static_cast<t_object*>(made)), AllValues(saved.Get()));
    const std::vector<std::string> console = saved.TakeConsole();
    ASSERT_EQ(console.size(), 1u);
    EXPECT_NE(console[0].find("nonsense"), std::string::npos) << console[0];
    object_free(made);
    object_free(dictionary);
}

INSTANTIATE_TEST_SUITE_P(Boxes,
                         StateRoundTrip,
                         testing::Values("3 2 xy",
                                         "2 2 ms",
                                         "2 2 ab",
                                         "2 4 surround",
                                         "2 4 angular",
                                         "3 5 vbap2d",
                                         "3 5 vbip2d",
                                         "2 8 vbap",
                                         "2 8 vbip",
                                         "2 6 dbap",
                                         "2 8 dbap3d",
                                         "2 8 vdbap",
                                         "2 4 bformat",
                                         "2 7 hoa2d",
                                         "2 16 hoa3d",
                                         "2 7 nfchoa2d",
                                         "2 9 nfchoa3d",
                                         "2 8 spcap",
                                         "2 8 knn",
                                         "2 4 panr",
                                         "2 4 subwoofers",
                                         "2 8 vbap2d diffuse",
                                         "2 9 hoa3d diffuse"),
                         [](const auto& box) {
                             std::string name = box.param;
                             std::ranges::replace(name, ' ', '_');
                             return "Of_" + name;
                         });
