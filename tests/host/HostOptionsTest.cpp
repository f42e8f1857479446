// SPDX-License-Identifier: MIT
#include "HostOptions.h"

#include "HostFault.h"

#include <gtest/gtest.h>

namespace {

using namespace Quilo::Host;
using Words = std::vector<const char*>;

TEST(Options, AreReadInAnyOrder) {
    const Words words{"--in",  "a.wav",      "--rate", "44100",    "--loop",     "s.txt",
                      "--in",  "b.wav",      "--out",  "o.wav",    "--strict",   "--vector",
                      "1",     "--duration", ".25",    "--quiet",  "--realtime", "--picture",
                      "p.svg", "--console",  "c.txt",  "--module", "m.so"};
    const Options options = ParseOptions(words);
    EXPECT_EQ(options.inputs, (std::vector<std::string>{"a.wav", "b.wav"}));
    EXPECT_EQ(options.rate, 44100);
    EXPECT_EQ(options.vector, 1u);
    EXPECT_EQ(options.duration, 0.25);
    EXPECT_TRUE(options.loop && options.strict && options.quiet && options.realtime);
    EXPECT_EQ(options.script + options.output + options.picture + options.console + options.module,
              "s.txto.wavp.svgc.txtm.so");
    EXPECT_NO_THROW(ParseOptions(Words{"s", "--out", ".", "--picture", "."})) << "no plain file";
}

struct Refused {
    Words words;
    const char* fault;
};

class CommandLineOf : public testing::TestWithParam<Refused> {};

TEST_P(CommandLineOf, IsRefusedInOneLine) {
    try {
        ParseOptions(GetParam().words);
        FAIL() << GetParam().fault;
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.Status(), ExitStatus::WrongInput);
        EXPECT_NE(std::string(fault.what()).find(GetParam().fault), std::string::npos)
            << fault.what();
        EXPECT_EQ(std::string(fault.what()).find('\n'), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lines,
    CommandLineOf,
    testing::Values(Refused{{}, "no script"},
                    Refused{{"--quiet"}, "no script"},
                    Refused{{"a", "b"}, "more than one"},
                    Refused{{""}, "empty"},
                    Refused{{"--nonsense", "s"}, "'--nonsense'"},
                    Refused{{"-x", "s"}, "'-x'"},
                    Refused{{"s", "--rate"}, "expects HZ"},
                    Refused{{"s", "--out", ""}, "expects FILE"},
                    Refused{{"--rate", "0", "s"}, "not '0'"},
                    Refused{{"--rate", "nan", "s"}, "not 'nan'"},
                    Refused{{"--rate", "1e9", "s"}, "not '1e9'"},
                    Refused{{"--rate", "44100.5", "s"}, "whole"},
                    Refused{{"--vector", "48", "s"}, "power of two"},
                    Refused{{"--vector", "0", "s"}, "power of two"},
                    Refused{{"--vector", "8192", "s"}, "power of two"},
                    Refused{{"--vector", "64.", "s"}, "power of two"},
                    Refused{{"--duration", "-1", "s"}, "0 or more"},
                    Refused{{"--duration", "1e999", "s"}, "0 or more"},
                    Refused{{"--duration", "long", "s"}, "not 'long'"},
                    Refused{{"--out", "a", "--picture", "a", "s"}, "same file 'a'"},
                    Refused{{"--picture", "b/../a", "--console", "./a", "s"}, "same"},
                    Refused{{"--in", "b/../a", "--out", "a", "s"}, "--in and --out name the same"},
                    Refused{{"s", "--picture", "./s"}, "the script and --picture"},
                    Refused{{"--osc", "9000", "s"}, "not available"},
                    Refused{{"--validate", "11", "s"}, "1 to 10"},
                    Refused{{"--validate", "1"}, "no box text"}));

}  // namespace
