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

// clang-format off
const Refused kRefused[] = {
    {{}, "no script"}, {{"--quiet"}, "no script"}, {{"a", "b"}, "more than one"},
    {{""}, "empty"}, {{"--nonsense", "s"}, "'--nonsense'"}, {{"-x", "s"}, "'-x'"},
    {{"s", "--rate"}, "expects HZ"}, {{"s", "--out", ""}, "expects FILE"},
    {{"--rate", "0", "s"}, "not '0'"}, {{"--rate", "nan", "s"}, "not 'nan'"},
    {{"--rate", "1e9", "s"}, "not '1e9'"}, {{"--rate", "44100.5", "s"}, "whole"},
    {{"--vector", "48", "s"}, "power of two"}, {{"--vector", "0", "s"}, "power of two"},
    {{"--vector", "8192", "s"}, "power of two"}, {{"--vector", "64.", "s"}, "power of two"},
    {{"--duration", "-1", "s"}, "0 or more"}, {{"--duration", "1e999", "s"}, "0 or more"},
    {{"--duration", "long", "s"}, "not 'long'"},
    {{"--out", "a", "--picture", "a", "s"}, "same file 'a'"},
    {{"--picture", "b/../a", "--console", "./a", "s"}, "same"},
    {{"--in", "b/../a", "--out", "a", "s"}, "--in and --out name the same"},
    {{"s", "--picture", "./s"}, "the script and --picture"},
    {{"--osc", "70000", "s"}, "1 to 65535"}, {{"--validate", "11", "s"}, "1 to 10"},
    {{"--validate", "1"}, "no box text"},
};
// clang-format on
TEST(Options, AreRefusedInOneLine) {
    for (const auto& [words, expected] : kRefused) {
        try {
            ParseOptions(words);
            ADD_FAILURE() << expected;
        } catch (const Fault& fault) {
            const std::string said = fault.what();
            EXPECT_EQ(fault.Status(), ExitStatus::WrongInput);
            EXPECT_NE(said.find(expected), std::string::npos) << said;
            EXPECT_EQ(said.find('\n'), std::string::npos) << said;
        }
    }
}

}  // namespace
