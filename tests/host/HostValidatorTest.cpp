// SPDX-License-Identifier: MIT
// The validator passes what is right and catches each mistake that a module can make.
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Tests;

namespace {

std::string Failures(const HostRun& run) {
    std::string text;
    for (const std::string& line : run.console)
        if (line.starts_with("  FAIL")) text += line + "\n";
    for (const std::string& line : run.errors) text += line + "\n";
    return text;
}

class ValidatorOn : public testing::TestWithParam<const char*> {};

TEST_P(ValidatorOn, FindsNoFault) {
    const TemporaryFolder folder;
    const HostRun run =
        RunHost(folder, {"--validate", "10", std::string("quilo.pan~ ") + GetParam()});
    EXPECT_EQ(run.status, 0) << Failures(run);
    EXPECT_EQ(std::ranges::count_if(run.console,
                                    [](const auto& line) { return line.starts_with("level "); }),
              10);
}

INSTANTIATE_TEST_SUITE_P(Objects,
                         ValidatorOn,
                         testing::Values("2 4 vbap2d", "1 4 panr", "2 7 hoa2d", "2 6 dbap"));

struct Mistake {
    const char* fault;
    const char* caught;  // by the line that fails
};

class ValidatorOnMistake : public testing::TestWithParam<Mistake> {};

TEST_P(ValidatorOnMistake, NamesIt) {
    const TemporaryFolder folder;
    const HostRun run = RunHost(folder, {"--module", QUILO_FAULTY_MODULE, "--validate", "10",
                                         std::string("faulty~ ") + GetParam().fault});
    const bool isFlawless = *GetParam().caught == '\0';
    EXPECT_EQ(run.status, isFlawless ? 0 : 1);
    EXPECT_NE(Failures(run).find(GetParam().caught), std::string::npos) << Failures(run);
}

// clang-format off
constexpr Mistake kMistakes[] = {
    {"none", ""}, {"unwritten", "writes every sample"}, {"nan", "gives numbers"},
    {"posting", "object_post: called in a perform routine"},
    {"leaking", "leaves nothing behind"}, {"silent", "every outlet"},
    {"unclipped", "gain keeps to its range"},
    {"unceiled", "gain keeps to its range: holds 1e+09"}, {"uncounted", "memory for more: counts 4"},
    {"overrun", "written beyond their end"}, {"twice", "the memory has been freed already"},
    {"late", "written to after they were freed"}, {"dialog", "called in the stack of a message"},
    {"dead", "\"dictionary\" is used after it was freed"}, {"escaping", "escaped"},
    {"forgetful", "pattr, 6 states: gain is"}, {"soundsother", "pattr, 6 states: sample "},
    {"nanfast", "384000 Hz: samples are no numbers"}, {"infinite", "gives numbers"},
    {"soundless", "noise in, something out"},
    {"partial", "vectors of 512: samples were not written"}, {"wordy", "every inlet"},
    {"misplaced", "the rightmost outlet takes messages"},
    {"unanswering", "gain answers: answers ''"},
    {"nanheld", "gain keeps to its range: holds nan"}, {"drifting", "gain is what it says"},
    {"mainonly", "messages of the scheduler thread"},
    {"unmutable", "silent while its patcher is muted"},
    {"hoarding", "touch leaves nothing behind: 10 blocks"},
    {"spilling", "1 allocations stay behind"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Modules,
                         ValidatorOnMistake,
                         testing::ValuesIn(kMistakes),
                         [](const auto& mistake) { return std::string(mistake.param.fault); });

TEST(FreedInTheChain, IsReported) {
    const TemporaryFolder folder;
    const HostRun run = RunHost(folder, {"--module", QUILO_FAULTY_MODULE, "-"},
                                "object faulty~ staying\nhost free\n");
    EXPECT_EQ(run.console, std::vector<std::string>{"bug: freed without z_dsp_free"});
}

TEST(DspState, IsToldWhenAudioStartsAndStops) {
    const TemporaryFolder folder;
    const HostRun run = RunHost(folder, {"--module", QUILO_FAULTY_MODULE, "-"},
                                "object faulty~ telling\nat 0.1 host vector 32\n"
                                "at 0.2 host dsp 0\nat 0.3 host dsp 1\nat 0.4 host free\n");
    EXPECT_EQ(run.console, (std::vector<std::string>{"post: dspstate 1", "post: dspstate 0",
                                                     "post: dspstate 1"}));
}

}  // namespace
