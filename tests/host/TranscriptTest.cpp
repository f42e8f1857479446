// SPDX-License-Identifier: MIT
// The object as a whole: every script in tests/transcripts runs through quilo-host, and what it
// prints must be the script's "#> " lines, all of them, in their order and to the last blank.
// A line "#! --vector 16" gives the host options.
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>

using namespace Tests;

namespace {

std::vector<std::string> TranscriptNames() {
    std::vector<std::string> names;
    const std::filesystem::path folder = QUILO_SOURCE_DIR "/tests/transcripts";
    if (!std::filesystem::is_directory(folder)) return names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".txt") names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

struct Transcript {
    std::vector<std::string> expected;  // console lines
    std::vector<std::string> causes;    // for each: "line N: the statement above it"
    std::vector<std::string> options;
    bool failsAllocations = false;
};

Transcript ReadTranscript(const std::filesystem::path& file) {
    Transcript transcript;
    std::string cause;
    int number = 0;
    for (const std::string& line : Lines(ReadText(file))) {
        ++number;
        if (line.starts_with("#>")) {
            transcript.expected.push_back(line.size() > 3 ? line.substr(3) : "");
            transcript.causes.push_back("line " + std::to_string(number) + ", after: " + cause);
        } else if (line.starts_with("#!")) {
            std::istringstream words(line.substr(2));
            for (std::string word; words >> word;) transcript.options.push_back(word);
        } else if (!line.empty() && !line.starts_with('#')) {
            cause = line;
            transcript.failsAllocations |= line.find("fail allocation") != std::string::npos;
        }
    }
    return transcript;
}

class TranscriptOf : public testing::TestWithParam<std::string> {};

TEST_P(TranscriptOf, PrintsWhatItSays) {
    const std::filesystem::path file =
        std::filesystem::path(QUILO_SOURCE_DIR "/tests/transcripts") / GetParam();
    const Transcript transcript = ReadTranscript(file);
#if defined(__SANITIZE_ADDRESS__)
    if (transcript.failsAllocations) GTEST_SKIP() << "the sanitizer makes every allocation";
#endif
    const TemporaryFolder folder;
    std::vector<std::string> arguments = transcript.options;
    arguments.insert(arguments.end(), {"--quiet", file.string()});
    const HostRun run = RunHost(folder, arguments);
    ASSERT_EQ(run.status, 0) << (run.errors.empty() ? "" : run.errors.back());

    const std::size_t both = std::min(run.console.size(), transcript.expected.size());
    for (std::size_t k = 0; k < both; ++k)
        ASSERT_EQ(run.console[k], transcript.expected[k])
            << GetParam() << " " << transcript.causes[k];
    if (transcript.expected.size() > both)
        FAIL() << GetParam() << " " << transcript.causes[both] << ": the console ended before \""
               << transcript.expected[both] << "\"";
    if (run.console.size() > both)
        FAIL() << GetParam() << ": unasked at the end: \"" << run.console[both] << "\"";
}

INSTANTIATE_TEST_SUITE_P(Scripts,
                         TranscriptOf,
                         testing::ValuesIn(TranscriptNames()),
                         [](const auto& script) {
                             std::string name = script.param.substr(0, script.param.size() - 4);
                             std::ranges::replace_if(
                                 name, [](unsigned char c) { return !std::isalnum(c); }, '_');
                             return name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TranscriptOf);

TEST(Examples, PlayWithoutAComplaint) {
    const TemporaryFolder folder;
    for (const auto& entry : std::filesystem::directory_iterator(QUILO_SOURCE_DIR "/examples")) {
        if (entry.path().extension() != ".txt") continue;
        std::vector<std::string> arguments = ReadTranscript(entry.path()).options;
        arguments.insert(arguments.end(), {"--strict", "--out", "o.wav", "--duration", "12"});
        arguments.push_back(entry.path().string());
        const HostRun run = RunHost(folder, arguments);
        EXPECT_EQ(run.status, 0) << entry.path();
        EXPECT_TRUE(run.errors.empty()) << run.errors[0];
    }
}

}  // namespace
