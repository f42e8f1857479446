// SPDX-License-Identifier: MIT
// quilo-host from outside: files, timeline, exit statuses.
#include "support/HostProgram.h"

#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

using namespace Tests;

namespace {

using Words = std::vector<std::string>;

const std::string kQuad =
    "object quilo.pan~ 3 4 vbap2d @interpolationtime 0\n"
    "speakers aed -45 0 1 45 0 1 135 0 1 -135 0 1\n";

tav::AudioBuffer Constant(float level, std::size_t numFrames, double rateHz) {
    tav::AudioBuffer buffer(1, numFrames, rateHz);
    std::ranges::fill(buffer.Channel(0), level);
    return buffer;
}

class HostProgram : public testing::Test {
protected:
    HostProgram() {
        tav::WriteWavFile(folder_ / "one.wav", Constant(1, 4800, 48000));
        tav::WriteWavFile(folder_ / "half.wav", Constant(0.5f, 1000, 48000));
        tav::WriteWavFile(folder_ / "other.wav", Constant(1, 100, 44100));
        tav::WriteWavFile(folder_ / "slow.wav", Constant(1, 100, 999));
    }

    HostRun Run(const std::string& script, Words arguments = {}) {
        WriteText(folder_ / "s.txt", script);
        arguments.push_back("s.txt");
        return RunHost(folder_, arguments);
    }

    /// The output of a run that must end well.
    tav::AudioBuffer Render(const std::string& script, Words arguments) {
        arguments.insert(arguments.end(), {"--out", "o.wav", "--quiet"});
        const HostRun run = Run(script, arguments);
        EXPECT_EQ(run.status, 0) << (run.errors.empty() ? "" : run.errors[0]);
        return run.status == 0 ? tav::ReadAudioFile(folder_ / "o.wav") : tav::AudioBuffer(4, 1);
    }

    /// First frame in which the output differs from the frame before; 0 when it never does.
    static std::size_t FirstChange(const tav::AudioBuffer& audio, unsigned channel) {
        const auto samples = audio.Channel(channel);
        std::size_t frame = 1;
        while (frame < samples.size() && samples[frame] == samples[frame - 1]) ++frame;
        return frame < samples.size() ? frame : 0;
    }

    TemporaryFolder folder_;
};

struct Moment {
    const char* seconds;
    unsigned vector;
    std::size_t frame;
};

TEST_F(HostProgram, SendsATimedMessageBeforeTheVectorThatContainsItsTime) {
    constexpr Moment kMoments[] = {
        {"0", 64, 0},        {"0.05", 64, 2368},   {"0.05", 1, 2400},       {"0.0401", 16, 1920},
        {"0.07", 512, 3072}, {"0.0013333", 64, 0}, {"0.00133334", 64, 64},  {"1e-1", 64, 0},
        {"0.036", 64, 1728}, {"0.071", 1, 3408},   {"0.0359999", 64, 1664},
    };
    for (const Moment& moment : kMoments) {
        const std::string script =
            kQuad + "source 1 az -45\nat " + moment.seconds + " source 1 az 45\n";
        const auto audio =
            Render(script, {"--in", "one.wav", "--vector", std::to_string(moment.vector)});
        ASSERT_EQ(audio.NumFrames(), 4800u);
        EXPECT_EQ(FirstChange(audio, 1), moment.frame) << moment.seconds;
    }
}

TEST_F(HostProgram, AppendsInputsAndFeedsTheRestWithSilence) {
    const std::string script = kQuad + "source 1 az -45\nsource 2 az 45\nsource 3 az 135\n";
    const Words inputs{"--in", "one.wav", "--in", "half.wav"};
    struct Case {
        Words more;
        std::size_t numFrames, at;
        float first, second;
    };
    const Case kCases[] = {
        {{}, 4800, 999, 1, 0.5f},
        {{}, 4800, 1000, 1, 0},
        {{"--loop"}, 4800, 4799, 1, 0.5f},
        {{"--duration", "0"}, 0, 0, 0, 0},
    };
    for (const Case& c : kCases) {
        Words arguments = inputs;
        arguments.insert(arguments.end(), c.more.begin(), c.more.end());
        const auto audio = Render(script, arguments);
        ASSERT_EQ(audio.NumFrames(), c.numFrames);
        ASSERT_EQ(audio.NumChannels(), 4u);
        if (c.numFrames == 0) continue;
        EXPECT_EQ(audio.Channel(0)[c.at], c.first) << c.at;
        EXPECT_EQ(audio.Channel(1)[c.at], c.second) << c.at;
        EXPECT_EQ(audio.Channel(2)[c.at], 0) << c.at;
    }
}

TEST_F(HostProgram, RepeatsInputsInTheMiddleOfAVector) {
    tav::AudioBuffer ramp(1, 100, 48000);
    for (std::size_t k = 0; k < 100; ++k) ramp.Channel(0)[k] = static_cast<float>(k + 1) / 128;
    tav::WriteWavFile(folder_ / "ramp.wav", ramp);
    const std::string script = kQuad + "source 1 az -45\n";
    for (const bool loops : {true, false})
        for (const char* vector : {"1", "64", "1024"}) {
            Words words{"--in", "ramp.wav", "--duration", "0.0055", "--vector", vector};
            if (loops) words.emplace_back("--loop");
            const auto audio = Render(script, words);
            ASSERT_EQ(audio.NumFrames(), 264u);
            for (std::size_t k = 0; k < 264; ++k)
                ASSERT_EQ(audio.Channel(0)[k], loops || k < 100 ? ramp.Channel(0)[k % 100] : 0)
                    << vector << " " << k;
        }
}

TEST_F(HostProgram, RendersEachBegunFrameOnce) {
    struct Case {
        const char *rate, *seconds;
        std::size_t numFrames;
    };
    // Binary fractions make 0.07 s at 48 kHz a little longer than 3360 frames, 2.3 s at 44.1 kHz a
    // little shorter than 101430.
    constexpr Case kCases[] = {{"48000", "0.07", 3360},  {"44100", "2.3", 101430},
                               {"44100", "0.00001", 1},  {"48000", "0.0000001", 1},
                               {"768000", "0.001", 768}, {"1000", "0.0639", 64},
                               {"1000", "0.064", 64},    {"1000", "0.0641", 65}};
    for (const Case& c : kCases)
        EXPECT_EQ(Render(kQuad, {"--rate", c.rate, "--duration", c.seconds}).NumFrames(),
                  c.numFrames)
            << c.rate << " Hz, " << c.seconds << " s";
}

TEST_F(HostProgram, TakesRateAndLengthFromOptionsInputsOrDefaults) {
    EXPECT_EQ(Render(kQuad, {}).NumFrames(), 48000u);
    EXPECT_EQ(Render(kQuad, {"--rate", "8000"}).NumFrames(), 8000u);
    EXPECT_EQ(Render(kQuad, {"--rate", "8000"}).SampleRate(), 8000);
    EXPECT_EQ(Render(kQuad, {"--in", "other.wav"}).SampleRate(), 44100);
    EXPECT_EQ(Render(kQuad, {"--in", "other.wav"}).NumFrames(), 100u);
}

TEST_F(HostProgram, PlaysInputsOfEveryKind) {
    const auto expected = Render(kQuad + "source 1 az -45\n", {"--in", "one.wav"});
    const std::pair<std::string, std::string> inputs[] = {
        {"in.aifc", "sox one.wav -e floating-point -b 32 in.aifc"},
        {"in.aiff", "sox one.wav -b 24 in.aiff"},
        {"in.mp3", "lame --quiet -b 160 one.wav in.mp3"}};
    for (const auto& [name, command] : inputs) {
        const std::string line = "cd " + folder_.Path().string() + " && " + command + " 2>&1";
        ASSERT_EQ(std::system(line.c_str()), 0) << line;
        const auto audio = Render(kQuad + "source 1 az -45\n", {"--in", name});
        ASSERT_EQ(audio.NumFrames(), expected.NumFrames()) << name;
        // A level that does not change; lame lowers it by 5 % and smears its ends.
        for (std::size_t k = 1200; k < 3600; ++k) {
            ASSERT_NEAR(audio.Channel(0)[k], expected.Channel(0)[k], 0.06) << name << " " << k;
        }
    }
}

TEST_F(HostProgram, PlaysWhatIsThereOfAnInputThatIsCutShort) {
    std::filesystem::resize_file(folder_ / "one.wav",
                                 std::filesystem::file_size(folder_ / "one.wav") - 400);
    EXPECT_EQ(Render(kQuad, {"--in", "one.wav"}).NumFrames(), 4700u);
    const HostRun run = Run(kQuad, {"--in", "one.wav"});
    ASSERT_EQ(run.errors.size(), 1u);
    EXPECT_NE(run.errors[0].find("one.wav: is cut short, 100 of 4800 frames"), std::string::npos);
}

TEST_F(HostProgram, NamesTheLoudspeakersOfAFileWhoseOrderIsThatOfALayout) {
    const std::string box = "object quilo.pan~ 1 6 vbap2d\n";
    const std::pair<std::string, std::uint32_t> cases[] = {
        {box + "host layout 5.1\n", 0x3F},
        {box + "host layout 5.1\nat 0 speaker 1 az 3\n", 0},
        {box, 0},
        {"object quilo.pan~ 1 4 vbap2d\nhost layout quad\n", 0},  // goes round
    };
    for (const auto& [script, mask] : cases) {
        Render(script, {"--duration", "0.01"});
        tav::AudioFileInfo info;
        tav::ReadAudioFile(folder_ / "o.wav", &info);
        EXPECT_EQ(info.channelMask, mask) << script;
    }
}

TEST_F(HostProgram, RestartsTheChainDuringPlay) {
    // A disconnected inlet is silent from the vector on in which it was cut, and comes back.
    const auto cut = Render(kQuad +
                                "source 1 az -45\nat 0.02 host connect 1 0\n"
                                "at 0.04 host connect 1 1\nat 0.06 host vector 16\n"
                                "at 0.0801 source 1 az 45\nat 0.09 enable 0\nat 0.095 enable 1\n",
                            {"--in", "one.wav"});
    const auto left = cut.Channel(0);
    EXPECT_EQ(left[959], 1);
    EXPECT_EQ(left[960], 0);
    EXPECT_EQ(left[1919], 0);
    EXPECT_EQ(left[1920], 1);
    EXPECT_EQ(FirstChange(cut, 1), 3840u) << "with vectors of 16, not of 64";
    const auto right = cut.Channel(1);
    EXPECT_EQ(right[4319], 1);
    EXPECT_EQ(right[4320], 0) << "disabled";
    EXPECT_EQ(right[4799], 1);

    const HostRun run =
        Run("object quilo.pan~\nhost vector 256\nat 0.1 info\n"
            "at 0.2 host rate 96000\nat 0.2 info\n");
    EXPECT_EQ(std::ranges::count(run.console, "post: samplerate           : 48000"), 1);
    EXPECT_EQ(std::ranges::count(run.console, "post: samplerate           : 96000"), 1);
    EXPECT_EQ(std::ranges::count(run.console, "post: buffersize           : 256"), 2);
}

// The object of this module copies whatever its inlet holds.
TEST_F(HostProgram, FeedsUnconnectedInletsWithSilence) {
    const auto audio = Render("object faulty~ none\nat 0.05 host connect 1 0\n",
                              {"--module", QUILO_FAULTY_MODULE, "--in", "one.wav"});
    EXPECT_EQ(FirstChange(audio, 0), 2368u);
}

TEST_F(HostProgram, IsSilentFromTheVectorThatSwitchesAudioOffToTheOneThatSwitchesItOn) {
    struct Case {
        const char* statements;
        std::size_t off, on;  // frames
    };
    constexpr Case kCases[] = {
        {"at 0.02 host dsp 0\nat 0.03 host vector 1024\nat 0.06 host dsp 1\n", 960, 2432},
        {"host dsp 0\nat 0.05 host dsp 1\n", 0, 2368},
        {"host dsp 0\nhost rate 8000\nhost dsp 1\n", 0, 0},
        {"host dsp 0\n", 0, 4800},
    };
    for (const Case& c : kCases) {
        const auto audio = Render(kQuad + "source 1 az -45\n" + c.statements, {"--in", "one.wav"});
        for (std::size_t k = 0; k < audio.NumFrames(); ++k)
            ASSERT_EQ(audio.Channel(0)[k], k < c.off || k >= c.on ? 1 : 0) << c.statements << k;
    }
}

TEST_F(HostProgram, PlaysSilenceOnceTheObjectIsFree) {
    const auto audio = Render(kQuad +
                                  "source 1 az -45\nat 0.05 host free\nat 0.06 host sync\n"
                                  "at 0.07 host rate 8000\nat 0.07 host inspect\n",
                              {"--in", "one.wav"});
    EXPECT_EQ(audio.Channel(0)[2367], 1);
    EXPECT_TRUE(
        std::ranges::all_of(audio.Channel(0).subspan(2368), [](float s) { return s == 0; }));
}

TEST_F(HostProgram, SettlesBeforeTheFirstSample) {
    const std::string script =
        "object quilo.pan~ 1 4 vbap2d @interpolationtime 20\nhost layout quad\nsource 1 az 45\n"
        "at 0.01 source 1 az 135\n";
    const auto audio = Render(script, {"--in", "one.wav", "--settled"});
    EXPECT_EQ(audio.Channel(1)[0], 1);
    EXPECT_GE(FirstChange(audio, 1), 448u) << "times of the script begin with the run";
    EXPECT_LT(FirstChange(audio, 1), 448u + 1000u);
}

TEST_F(HostProgram, MeasuresCoverageUnheard) {
    const std::string script =
        "object quilo.pan~ 3 8 vbap @interpolationtime 20\nhost layout cube\nmute 1\nmute 0\n"
        "source 1 aed 20 10 1\n";
    const auto alone = Render(script, {"--in", "one.wav"});
    const auto measured = Render(script + "at 0.013 host coverage\nat 0.05 host coverage\n",
                                 {"--in", "one.wav", "--picture", "p.svg"});
    for (unsigned channel = 0; channel < 8; ++channel)
        EXPECT_TRUE(std::ranges::equal(alone.Channel(channel), measured.Channel(channel)));
    Run(script, {"--duration", "0", "--picture", "still.svg"});
    const auto circlesOf = [&](const char* picture) {
        return std::ranges::count_if(Lines(ReadText(folder_ / picture)),
                                     [](const auto& line) { return line.starts_with("<circle"); });
    };
    EXPECT_EQ(circlesOf("still.svg"), circlesOf("p.svg")) << "listener, loudspeakers and sources";

    // Pairs and triplets point where they are asked to, as long as they surround the direction.
    const HostRun cube = Run(script + "host coverage\n");
    const auto has = [](const HostRun& run, const char* line) {
        return std::ranges::count(run.console, std::string("coverage: ") + line) == 1;
    };
    for (const char* line : {"silent 0", "meanangle 0", "flat 0", "symmetric 1"})
        EXPECT_TRUE(has(cube, line)) << line;
    EXPECT_TRUE(std::ranges::none_of(cube.console, [](const std::string& line) {
        return line.starts_with("coverage: leftright 0 ");
    })) << "a face is split along one diagonal";
    EXPECT_TRUE(cube.errors.empty());
    const HostRun quad = Run(kQuad + "host coverage\n");
    for (const char* line : {"meanhorizon 0", "worstangle 85 0 -85", "flat 1", "silentupper 0.001"})
        EXPECT_TRUE(has(quad, line)) << line;
    // With one neighbour a source sounds on a loudspeaker alone: at worst 22.5 degrees off.
    const HostRun octagon = Run(
        "object quilo.pan~ 1 8 knn\nhost layout octagon\nsource 1 numneighbors 1\nhost coverage\n");
    EXPECT_TRUE(has(octagon, "worsthorizon 20 0 0") || has(octagon, "worsthorizon 22.5 0 0"));
    EXPECT_EQ(Run("object quilo.pan~ 1 4 hoa3d\nhost coverage\n").console.size(), 1u);
}

TEST_F(HostProgram, WritesTheConsoleWhereItIsAsked) {
    const HostRun shown = Run(kQuad + "getnumoutputs\n");
    EXPECT_EQ(shown.console, Words{"outlet: numoutputs 4"});
    const HostRun kept = Run(kQuad + "getnumoutputs\n", {"--console", "c.txt"});
    EXPECT_TRUE(kept.console.empty());
    EXPECT_EQ(ReadText(folder_ / "c.txt"), "outlet: numoutputs 4\n");
    const HostRun piped = RunHost(folder_, {"-"}, kQuad + "getnumoutputs\n");
    EXPECT_EQ(piped.console, Words{"outlet: numoutputs 4"});
}

TEST_F(HostProgram, ReadsOnlyScriptsThatEnd) {
    constexpr std::size_t kMost = std::size_t{64} << 20;
    const auto file = folder_ / "long.txt";
    WriteText(file, "");
    std::filesystem::resize_file(file, kMost + 1);  // of zeros that take no place
    const HostRun runs[] = {RunHost(folder_, {"/dev/zero"}), RunHost(folder_, {"long.txt"}),
                            RunHost(folder_, {"-"}, std::string(kMost + 1, '\n'))};
    for (const HostRun& run : runs) {
        EXPECT_EQ(run.status, 2);
        ASSERT_EQ(run.errors.size(), 1u);
        EXPECT_NE(run.errors[0].find("the script cannot be read: it is "), std::string::npos);
    }
}

struct Mistake {
    const char* statement;
    Words says;  // on standard error, behind "s.txt:2: STATEMENT"
};

TEST_F(HostProgram, TellsWhichStatementWasWrongAndWhatWouldBeRight) {
    const Mistake kMistakes[] = {
        {"source 4 az 1", {"    sources are numbered from 1 to 3"}},
        {"  at 0.01 source 1 aedd 1 2 3\t", {"    did you mean aed?"}},
        {"source 1 numneighbours 2", {"    did you mean numneighbors?"}},
        {"speakers ae 1 2 3", {"    ae takes 2 values for each of the 4 loudspeakers, 8 in all"}},
        {"spaekers ae 1 2 3", {"    did you mean speakers?"}},
        {"getautomte", {"    did you mean getautomute?"}},
        {"crossfadetype 1", {"    crossfadetype takes a word"}},
        {"interpolationtime 1000", {"    interpolationtime takes 0 to 200 msec"}},
        {"at 0.01 host from scheduler load x", {}},
        {"host from audio source 9 az 1", {"    sources are numbered from 1 to 3"}},
        {"type vbap", {"    type is given in the box and stays"}},
    };
    for (const Mistake& mistake : kMistakes) {
        const HostRun run =
            Run("object quilo.pan~ 3 4 vbap2d\n" + std::string(mistake.statement) + "\n");
        std::string trimmed = mistake.statement;
        trimmed.erase(0, trimmed.find_first_not_of(' '));
        if (trimmed.ends_with('\t')) trimmed.pop_back();
        Words expected{"s.txt:2: " + trimmed};
        expected.insert(expected.end(), mistake.says.begin(), mistake.says.end());
        EXPECT_EQ(run.errors, expected) << mistake.statement;
    }
    const std::pair<const char*, const char*> kBoxes[] = {
        {"1 5 hoa3d",
         "hoa3d takes these numbers of outlets: 1, 4, 9, 16, 25, 36, 49, 64, 81, 100, "
         "121, 144, 169, 196, 225"},
        {"1 9 panr", "panr takes these numbers of outlets: 4 to 8, 12"},
        {"1 2 binaural diffuse", "binaural with 2 inlets takes these numbers of outlets: 2"},
        {"1 4 vabp2d", "did you mean vbap2d?"},
        {"1 4 vbap 2d", "unknown subtype 2d: did you mean the type vbap2d?"},
        {"1 4 vbap2d difuse", "unknown subtype difuse: did you mean diffuse?"},
        {"1 4 hoa3d @encodng FuMa", "did you mean encoding?"},
        {"1 4 hoa3d @automute 501", "automute takes 0 to 500 sec"},
    };
    for (const auto& [box, says] : kBoxes) {
        const std::string statement = "object quilo.pan~ " + std::string(box);
        EXPECT_EQ(Run(statement + "\n").errors,
                  (Words{"s.txt:1: " + statement, "    " + std::string(says)}));
    }
    // The main thread says at once what several messages of the audio thread left to be said.
    const HostRun many =
        Run("object quilo.pan~\nhost from audio source 9 az 1\nhost from audio source 8 az 1\n");
    EXPECT_EQ(many.errors, Words(2, "s.txt:2: one of the statements from here to line 3"));
    EXPECT_EQ(Run("object quilo.pan~\nsource 9 az 1\n", {"--quiet"}).errors, Words{});
}

struct Ending {
    const char* name;
    std::string script;
    Words arguments;
    int status;
    const char* says;  // part of the one line on standard error; "" none at all
};

class HostEnding : public HostProgram, public testing::WithParamInterface<Ending> {};

TEST_P(HostEnding, TellsHowItWent) {
    const Ending& ending = GetParam();
    const char* const kOutputs[] = {"n.wav", "n.svg", "n.txt"};
    for (const char* output : kOutputs) WriteText(folder_ / output, "older");
    std::filesystem::create_hard_link(folder_ / "one.wav", folder_ / "link.wav");
    const Words before = folder_.Names();
    Words arguments = ending.arguments;
    const bool fails = ending.status == 1 || ending.status == 2;
    const Words outputs{"--out", "n.wav", "--picture", "n.svg", "--console", "n.txt"};
    if (fails) arguments.insert(arguments.begin(), outputs.begin(), outputs.end());
    const HostRun run = Run(ending.script, arguments);
    EXPECT_EQ(run.status, ending.status);
    ASSERT_EQ(run.errors.size(), *ending.says ? 1u : 0u);
    const std::string said = run.errors.empty() ? "" : run.errors[0];
    EXPECT_NE(said.find(ending.says), std::string::npos) << said;
    Words left = folder_.Names();
    std::erase(left, "s.txt");
    EXPECT_EQ(left, before) << "something half-written stays";
    for (const char* output : kOutputs) EXPECT_EQ(ReadText(folder_ / output), "older") << output;
}

const std::string kBad = kQuad + "source 9 az 1\n";

// clang-format off
const Ending kEndings[] = {
    {"Well", kQuad, {}, 0, ""},
    {"PostedErrorsAreNoFailure", kBad, {"--quiet"}, 0, ""},
    {"UnlessStrict", kBad, {"--strict", "--quiet"}, 3, ""},
    {"StrictAndNothingPosted", kQuad, {"--strict"}, 0, ""},
    {"UnsentStatementsAreSaid", kQuad + "at 7 clear\n", {}, 0, "line 3"},
    {"UnlessQuiet", kQuad + "at 7 clear\n", {"--quiet"}, 0, ""},
    {"Help", "", {"--help"}, 0, ""},
    {"Version", "", {"--version"}, 0, ""},
    {"UnknownOption", kQuad, {"--nonsense"}, 2, "'--nonsense'"},
    {"MissingInput", kQuad, {"--in", "none.wav"}, 2, "none.wav"},
    {"InputIsNoWav", kQuad, {"--in", "s.txt"}, 2, "s.txt"},
    {"RatesDiffer", kQuad, {"--in", "one.wav", "--in", "other.wav"}, 2, "other.wav"},
    {"RateBelowAllLimits", kQuad, {"--in", "slow.wav"}, 2, "slow.wav: its sampling rate"},
    {"WritesWhatItReads", kQuad, {"--in", "one.wav", "--out", "link.wav"}, 2, "same file"},
    {"WritesItsScript", kQuad, {"--console", "./s.txt"}, 2, "same file"},
    {"EndlessPacket", kQuad + "host osc /dev/zero\n", {}, 2, "s.txt:3: /dev/zero"},
    {"EndlessDialog", kQuad + "host open /dev/zero\n", {}, 2, "s.txt:3: /dev/zero"},
    {"EndlessDictionary", kQuad + "host dictionary d read /dev/zero\n", {"--quiet"}, 2, "s.txt:3: /dev/zero"},
    {"RemadeAsNothing", kQuad + "host remake other~\n", {}, 2, "s.txt:3: the module has"},
    {"RemadeInAnotherSize", kQuad + "at 0 host remake quilo.pan~ 1 4\n", {}, 2, "s.txt:3"},
    {"RemadeInVain", kQuad + "host fail object_alloc 1\nhost remake\n", {"--quiet"}, 1, "s.txt:4: the object could not be made"},
    {"NoObject", "source 1 az 1\n", {}, 2, "s.txt:1: "},
    {"UnknownClass", "object other~\n", {}, 2, "s.txt:1: "},
    {"UnknownInlet", kQuad + "at 1 host connect 4 1\n", {}, 2, "s.txt:3: "},
    {"LayoutOfAnotherSize", kQuad + "host layout 5.1\n", {}, 2, "6 loudspeakers, the object 4"},
    {"NotAmbisonic", kQuad, {"--ambix"}, 2, "4 outlets of vbap2d"},
    {"FlatBformat", "object quilo.pan~ 1 3 bformat\n", {"--ambix"}, 2, "3 outlets"},
    {"MissingModule", kQuad, {"--module", "none.so"}, 1, "none.so"},
    {"ModuleIsNone", kQuad, {"--module", "s.txt"}, 1, "s.txt"},
    {"NoFolderForTheOutput", kQuad, {"--out", "none/o.wav"}, 2, "none/o.wav"},
    {"NoFolderForThePicture", kQuad, {"--picture", "none/p.svg"}, 2, "none/p.svg"},
    {"NoFolderForTheConsole", kQuad, {"--console", "none/c.txt"}, 2, "none/c.txt"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Runs, HostEnding, testing::ValuesIn(kEndings), [](const auto& ending) {
    return std::string(ending.param.name);
});

}  // namespace
