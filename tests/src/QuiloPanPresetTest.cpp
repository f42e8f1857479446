// SPDX-License-Identifier: MIT
// Presets of the object: everything that a user can set goes through a file of each format.
#include "src/PanBox.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace Tests {
namespace {

constexpr std::size_t kFrames = 64;

std::string Settle(PanBox& box) {
    HostApi::Settle();
    std::string complaints;
    for (const std::string& line : box.TakeConsole()) complaints += line + '\n';
    return complaints;
}

/// What the object plays once every glide has arrived, for a signal that differs in every inlet.
std::vector<double> Heard(PanBox& box) {
    const std::size_t numInlets = HostApi::SignalInlets(box.Get());
    const std::size_t numOutlets = HostApi::SignalOutlets(box.Get());
    HostApi::DspChain chain(box.Get(), std::vector<short>(numInlets + numOutlets, 1));
    std::vector<std::vector<double>> inputs(numInlets, std::vector<double>(kFrames));
    std::vector<std::vector<double>> outputs(numOutlets, std::vector<double>(kFrames));
    std::vector<double*> ins, outs;
    for (auto& input : inputs) ins.push_back(input.data());
    for (auto& output : outputs) outs.push_back(output.data());
    std::vector<double> heard;
    for (std::size_t block = 0; block < 900; ++block) {
        for (std::size_t i = 0; i < numInlets; ++i) {
            for (std::size_t k = 0; k < kFrames; ++k) {
                const std::size_t frame = block * kFrames + k;
                inputs[i][k] = block >= 850 && frame % (97 + 6 * i) == 0 ? 1.0 : 0.0;
            }
        }
        chain.Perform(ins.data(), numInlets, outs.data(), numOutlets, kFrames);
        for (const auto& output : outputs) {
            if (block >= 850) heard.insert(heard.end(), output.begin(), output.end());
        }
    }
    return heard;
}

struct PresetCase {
    const char* box;
    std::vector<const char*> settings;
};
// clang-format off
const std::vector<PresetCase> kPresetCases{
    {"2 2 xy", {}}, {"2 2 ms", {}}, {"2 2 ab", {}}, {"2 3 surround", {}}, {"2 5 vbip2d", {}},
    {"2 4 bformat", {}}, {"2 4 vbip", {}}, {"2 6 vdbap", {}}, {"2 4 dbap diffuse", {}},
    {"2 5 angular", {"speaker 1 aed -28 3 2.5"}},
    {"2 4 angular diffuse", {"interpolationtime 3"}},
    {"2 5 vbap2d", {"speakers ad 0 1 70 2 140 1 210 1.5 290 1"}},
    {"2 6 vbap", {"speakers aed 5 0 1 60 -10 1 120 10 1 180 -10 1 240 10 1 300 20 1"}},
    {"2 5 knn", {"source 1 numneighbors 2", "automute 3.5"}},
    {"2 4 dbap", {"spreadmode directional", "spreadxyz 1 2 3 40 50 60", "spread 7 8", "muteoutside 1"}},
    {"2 6 dbap3d", {"spreadmode directional", "source 2 spreadxyz 1 2 3"}},
    {"2 4 spcap", {"source 2 spread 33", "automute 0"}},
    {"2 5 panr", {"speakers aed -40 0 1 40 0 1 120 0 1 -120 0 1 0 0 1", "corners -40 50 130 -140"}},
    {"2 2 subwoofers", {"cutoff 90.5"}},
    {"2 7 hoa2d", {"norm N2D"}},
    {"2 9 hoa3d", {"hoamode fast", "encoding FuMa"}},
    {"2 9 hoa3d diffuse", {"encoding FuMa"}},
    {"2 7 nfchoa2d", {"nfchighpass 0", "speakersradius 3.3"}},
    {"2 9 nfchoa3d", {"encoding N3D"}},
    {"2 2 binaural", {"itdtype larcherjot", "itdlatency nolatency", "headradius 0.1", "crossfadetime 8",
                      "crossfadetype linear", "implementation realisation fir", "implementation length 64",
                      "implementation reduction 20", "implementation delay 5", "listener xyz 1 2 3"}},
    {"2 2 binaural diffuse", {"crossfadetype linear"}},
    {"2 2 binaural early", {"headradius 0.1", "implementation delay 3"}},
    {"2 2 binaural sphericalheadmodel", {"listenerposition 0.1 0.2 0.3"}},
    {"2 2 binaural snowman", {"torsoradius 0.2", "torsoreflection 0.6", "neckheight 0.1", "crossfadetype linear"}},
    {"2 2 binaural nearfield", {"radius 0.4", "distanceattenuation 0", "crossearselection 0",
                                "nfcompensationfilters 0", "hrtffilters 0", "gainscorrection 0", "delayscorrection 0"}},
    {"2 2 binaural continuous", {"crossfadetime 2"}},
};
// clang-format on

class PanPreset : public testing::TestWithParam<PresetCase> {};

TEST_P(PanPreset, MakesTheSameStateAndSoundInEveryFormat) {
    HostApi::SetAudioSettings({44100, static_cast<int>(kFrames), true});
    const TemporaryFolder folder;
    const auto stateOf = [&](PanBox& box) {
        const std::string file = (folder / "state.txt").string();
        box.Send("/preset/export " + file);
        EXPECT_EQ(Settle(box), "");
        return ReadText(file);
    };
    PanBox source(GetParam().box);
    std::vector<const char*> settings = GetParam().settings;
    for (const char* setting :
         {"source 1 aed 33.3 5 2", "source 2 xyz 0.1 -1.7 0.3", "source 2 mute 1",
          "interpolationtime 12.5", "mute 1", "/dsp/bypass 1", "/dsp/mute 0", "bypass 0",
          "/dsp/automute/attack 4.5", "/dsp/automute/active 0", "/adm/config/dmax 2.5"}) {
        settings.push_back(setting);
    }
    std::string state = stateOf(source);
    for (const char* setting : settings) {
        source.Send(setting);
        HostApi::Settle();
        const std::string before = std::exchange(state, stateOf(source));
        EXPECT_TRUE(state != before) << setting << " is not in the preset";
    }
    for (const char* name : {"p.txt", "p.xml", "p.osc", "p.json"}) {
        const std::string file = (folder / name).string();
        source.Send("/preset/export " + file);
        PanBox copy(GetParam().box);
        copy.Send("/preset/load " + file);
        EXPECT_EQ(Settle(source) + Settle(copy), "");
        EXPECT_EQ(stateOf(copy), state) << name;
        if (!std::string_view(name).ends_with("xml")) continue;
        // Some panners compute all sources at once and round otherwise than for one alone.
        const auto ours = Heard(copy), theirs = Heard(source);
        ASSERT_EQ(ours.size(), theirs.size());
        for (std::size_t k = 0; k < ours.size(); ++k) {
            ASSERT_NEAR(ours[k], theirs[k], 1e-5) << name << ", sample " << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Panners, PanPreset, testing::ValuesIn(kPresetCases), [](const auto& test) {
    std::string name = test.param.box;
    std::ranges::replace(name, ' ', '_');
    return name;
});

/// The layout of a preset takes long; what was sent after the preset waits for all of it.
TEST(PanPresets, AreDoneBeforeWhatIsSentBehindThem) {
    const TemporaryFolder folder;
    const std::string file = (folder / "p.txt").string();
    PanBox box("1 4 vbap3d");
    box.Send("source 1 xyz 1 2 3");
    box.Send("/preset/export " + file);
    EXPECT_EQ(Settle(box), "");
    box.Send("/preset/load " + file);
    box.Send("/attribute/automute 5");
    HostApi::RunDeferred();
    box.Send("/source/1/xyz 9 8 7");
    EXPECT_EQ(Settle(box), "");
    EXPECT_EQ(box.Ask("automute"), "5");
    EXPECT_EQ(box.Ask("sourcespositions"), "9 8 7");
}

/// A file that is cut anywhere, or of another structure, changes nothing and says what is wrong.
TEST(PanPresets, ChangeNothingWhenTheFileIsDamaged) {
    const TemporaryFolder folder;
    const auto file = [&](const std::string& name) { return (folder / name).string(); };
    PanBox box("2 4 vbap2d");
    for (const char* name : {"p.txt", "p.xml", "p.osc", "p.json"}) {
        box.Send("/preset/export " + file(name));
        EXPECT_EQ(Settle(box), "");
    }
    box.Send("source 1 xyz 3 2 1");
    for (const char* name : {"p.txt", "p.xml", "p.osc", "p.json"}) {
        const std::string whole = ReadText(folder / name);
        for (std::size_t size = 0; size + 1 < whole.size(); size += 7) {
            WriteText(folder / name, whole.substr(0, size));
            box.Send("/preset/load " + file(name));
            EXPECT_TRUE(Settle(box).starts_with("error: exception : " + file(name) + ": ")) << size;
            ASSERT_TRUE(box.Ask("sourcespositions").starts_with("3 2 1 ")) << name << size;
        }
    }
    const struct {
        const char *name, *content, *fault;
    } rows[] = {
        {"a.txt", "/source/1/x 1.0\n/source/1/y one\n", "line 2: 'one' is no value"},
        {"a.json", "{\"/source/1/x\": [1.0],\n\"/source/1/y\" [1]}", "line 2: ':' is missing"},
        {"a.xml", "<preset>\n<message address=\"/source/1/x\"><q>1</q></message></preset>",
         "line 2: 'q' is no type of a value"},
        {"a.tar", "", "a preset is a file .txt, .xml, .osc or .json"},
        {"b.txt", nullptr, "the preset cannot be read"},
    };
    for (const auto& row : rows) {
        if (row.content != nullptr) WriteText(folder / row.name, row.content);
        box.Send("/preset/load " + file(row.name));
        EXPECT_EQ(Settle(box), "error: exception : " + file(row.name) + ": " + row.fault + "\n");
        EXPECT_TRUE(box.Ask("sourcespositions").starts_with("3 2 1 ")) << row.fault;
    }
    WriteText(folder / "a.txt", "a list of tools\n");
    for (const char* name : {"a.txt", "p.json"}) {  // the other one is the damaged preset
        const std::string content = ReadText(folder / name);
        box.Send("/preset/export " + file(name));
        EXPECT_EQ(Settle(box), "error: exception : " + file(name) +
                                   ": the file is no preset and is not overwritten\n");
        EXPECT_EQ(ReadText(folder / name), content);
    }
    // One that a person has written.
    WriteText(folder / "c.txt", "# a cue\n/source/*/xyz 1 2 3\n/attribute/interpolationtime 8");
    box.Send("/preset/load " + file("c.txt"));
    EXPECT_EQ(Settle(box), "");
    EXPECT_EQ(box.Ask("sourcespositions"), "1 2 3 1 2 3");
    EXPECT_EQ(box.Ask("interpolationtime"), "8");
}

/// What its message would not do live is refused before anything is done.
TEST(PanPresets, ChangeNothingWhenAMessageIsNotForTheObject) {
    // clang-format off
    const struct {
        const char *box, *message, *line;  // what the object says of the values, if it does
    } rows[] = {
        {"1 2 vbap2d", "/elsewhere 1", ""},
        {"1 2 vbap2d", "/attribute/cutoff 1", ""},
        {"1 2 vbap2d", "/listener/xyz 1 2 3", ""},
        {"1 2 vbap2d", "/corners 1 2 3 4", ""},
        {"1 2 vbap2d", "/load 5", ""},
        {"1 2 vbap2d", "/source/*/numneighbors 1", ""},
        {"1 2 vbap2d", "/source/[3-9]/x 1", ""},
        {"1 2 vbap2d", "/speakers/xyz \"a\"", ""},
        {"1 2 vbap2d", "/preset/export \"b.txt\"", ""},
        {"1 2 vbap2d", "/attribute/numoutputs 5", ""},
        {"1 2 vbap2d", "/attribute/type \"knn\"", ""},
        {"1 2 vbap2d", "/attribute/automute \"a\"", "error reading value of attribute automute"},
        {"1 2 vbap2d", "/speakers/xy 1 2 3", "not enough loudspeakers positions. expected 2 loudspeakers positions"},
        {"1 2 vbap2d", "/sp*/xy 1", "not enough loudspeakers positions. expected 2 loudspeakers positions"},
        {"1 2 vbap2d", "/attribute/speakerspositions 1 2", "not enough loudspeakers positions. expected 2 loudspeakers positions"},
        {"1 2 vbap2d", "/attribute/sourcespositions 1 2 \"a\"", "error reading source coordinates"},
        {"1 3 hoa2d", "/attribute/encoding \"ambi\"", "invalid hoa encoding ambi"},
        {"1 3 hoa2d", "/attribute/hoamode \"slow\"", "invalid hoa mode slow"},
        {"1 2 dbap", "/attribute/spreadmode \"odd\"", "invalid spreadmode odd"},
        {"1 2 binaural", "/listener/xyz 1 2", "error reading listener position"},
        {"1 2 binaural", "/crossfadetype \"odd\"", "invalid crossfade type : odd"},
        {"1 2 binaural", "/implementation \"delay\" 1 \"delay\" 9", "invalid implementation : delay 9"},
        {"1 2 binaural", "/attribute/itdtype \"odd\"", "invalid itd type : odd"},
        {"1 2 binaural", "/attribute/itdlatency \"odd\"", "invalid itd latency : odd"},
        {"1 2 binaural", "/load \"nowhere.hrtf\"", "Couldnt locate file :  nowhere.hrtf"},
        {"1 2 binaural", "/attribute/hrtffile \"nowhere\"", "Couldnt locate file :  nowhere"},
        {"1 2 binaural early", "/implementation \"length\" 64", "invalid implementation : length 64"},
        {"1 2 binaural nearfield", "/attribute/nearfieldhrtffile \"no.near\"", "Couldnt locate file :  no.near"},
    };
    // clang-format on
    const TemporaryFolder folder;
    const std::string file = (folder / "a.txt").string();
    const auto load = [&](PanBox& box, const std::string& message) {
        WriteText(file, "/source/1/x 7\n" + message + '\n');
        box.Send("/preset/load " + file);
        return Settle(box);
    };
    for (const auto& row : rows) {
        PanBox box(row.box);
        const std::string message(row.message), line(row.line);
        EXPECT_EQ(load(box, message), (line.empty() ? "" : "error: " + line + '\n') +
                                          "error: exception : " + file +
                                          ": message 2: " + message.substr(0, message.find(' ')) +
                                          " is not for this object\n");
        EXPECT_FALSE(box.Ask("sourcespositions").starts_with("7 ")) << message;
    }
    PanBox box("1 2 vbap2d");
    EXPECT_EQ(load(box, "/source/2/y 1"),
              "error: exception : " + file + ": message 2: invalid /source index : 2\n");
    // Ranges clip, and a structure that is the same is no fault.
    EXPECT_EQ(load(box, "/attribute/interpolationtime 900\n/attribute/type \"vbap2d\""), "");
    EXPECT_EQ(box.Ask("interpolationtime"), "200");
    EXPECT_EQ(box.Ask("sourcespositions").substr(0, 2), "7 ");
    EXPECT_EQ(load(box, "/speakers/azim 10 20 30"),
              "warn: too many loudspeakers positions. only 2 positions will be read\n");
    PanBox alias("1 6 vbap3d");
    EXPECT_EQ(load(alias, "/attribute/type \"vbap3d\"\n/attribute/subtype \"odd\""), "");
}

}  // namespace
}  // namespace Tests
