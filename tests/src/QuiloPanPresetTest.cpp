// SPDX-License-Identifier: MIT
// Presets of the object: everything that a user can set goes through a file of each format.
#include "src/PanBox.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>

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
const std::vector<PresetCase> kPresetCases{
    {"2 5 knn", {"source 1 numneighbors 2", "automute 3.5"}},
    {"2 4 dbap", {"spreadmode directional", "spreadxyz 1 2 3 40 50 60", "muteoutside 1"}},
    {"2 4 spcap", {"source 2 spread 33", "automute 0"}},
    {"2 5 panr", {"speakers aed -40 0 1 40 0 1 120 0 1 -120 0 1 0 0 1", "corners -40 50 130 -140"}},
    {"2 6 vbap", {"speakers aed 5 0 1 60 -10 1 120 10 1 180 -10 1 240 10 1 300 20 1"}},
    {"2 2 subwoofers", {"cutoff 90.5"}},
    {"2 9 hoa3d", {"hoamode fast", "encoding FuMa"}},
    {"2 7 nfchoa2d", {"nfchighpass 1", "speakersradius 3.3"}},
    {"2 2 binaural",
     {"itdtype larcherjot", "itdlatency nolatency", "headradius 0.1", "listener xyz 0.1 0.2 0.3",
      "crossfadetype linear", "implementation realisation fir length 64 reduction 20"}},
    {"2 2 binaural snowman", {"torsoradius 0.2", "crossfadetype linear"}},
};

class PanPreset : public testing::TestWithParam<PresetCase> {};

TEST_P(PanPreset, MakesTheSameStateAndSoundInEveryFormat) {
    HostApi::SetAudioSettings({44100, static_cast<int>(kFrames), true});
    const TemporaryFolder folder;
    const auto file = [&](const char* name) { return (folder / name).string(); };
    PanBox source(GetParam().box);
    for (const char* setting : GetParam().settings) source.Send(setting);
    for (const char* setting : {"source 1 aed 33.3 5 2", "source 2 xyz 0.1 -1.7 0.3",
                                "source 2 mute 1", "interpolationtime 12.5"}) {
        source.Send(setting);
    }
    source.Send("/adm/config/dmax 2.5");
    HostApi::Settle();
    for (const char* name : {"p.txt", "p.xml", "p.osc", "p.json"}) {
        source.Send("/preset/export " + file(name));
        EXPECT_EQ(Settle(source), "");
        PanBox copy(GetParam().box);
        copy.Send("/preset/load " + file(name));
        EXPECT_EQ(Settle(copy), "");
        copy.Send("/preset/export " + file("again.txt"));
        EXPECT_EQ(Settle(copy), "");
        EXPECT_EQ(ReadText(folder / "again.txt"), ReadText(folder / "p.txt")) << name;
        // Some panners compute all sources at once and round otherwise than for one alone.
        const auto ours = Heard(copy), theirs = Heard(source);
        ASSERT_EQ(ours.size(), theirs.size());
        for (std::size_t k = 0; k < ours.size(); ++k) {
            ASSERT_NEAR(ours[k], theirs[k], 1e-5) << name << ", sample " << k;
        }
    }
    EXPECT_NE(ReadText(folder / "p.txt").find("/source/2/mute true\n"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Panners, PanPreset, testing::ValuesIn(kPresetCases), [](const auto& test) {
    std::string name = test.param.box;
    std::ranges::replace(name, ' ', '_');
    return name;
});

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
        {"a.txt", "/source/1/x 1.0\n/source/3/y 1.0\n", "message 2: invalid /source index : 3"},
        {"a.txt", "/source/1/x 1.0\n/elsewhere 1\n",
         "message 2: /elsewhere is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/attribute/cutoff 1\n",
         "message 2: /attribute/cutoff is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/listener/xyz 1 2 3\n",
         "message 2: /listener/xyz is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/corners 1 2 3 4\n",
         "message 2: /corners is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/load 5\n", "message 2: /load is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/source/*/numneighbors 1\n",
         "message 2: /source/*/numneighbors is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/speakers/xyz \"a\"\n",
         "message 2: /speakers/xyz is not for this object"},
        {"a.txt", "/source/1/x 1.0\n/preset/export \"b.txt\"\n",
         "message 2: /preset/export is not for this object"},
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

}  // namespace
}  // namespace Tests
