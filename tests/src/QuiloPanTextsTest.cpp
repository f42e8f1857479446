// SPDX-License-Identifier: MIT
// Every console text of the object's tables stands in a transcript, word for word; those that only
// failing calls of Max bring up, in a test beside this one.
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

using namespace Tests;

namespace {

struct TextRow {
    std::string name;
    std::string text;
};

/// Rows of a table: Text<...> kName{"..."};
std::vector<TextRow> TextsOf(const char* file) {
    static const std::regex row(R"re(Text<[^>]*>\s+(\w+)\{"([^"]*)"\})re");
    const std::string source = ReadText(std::filesystem::path(QUILO_SOURCE_DIR "/src") / file);
    std::vector<TextRow> texts;
    for (std::sregex_iterator match(source.begin(), source.end(), row), end; match != end; ++match)
        texts.push_back({(*match)[1], (*match)[2]});
    return texts;
}

/// Lines of transcripts ("#> error: ...") and of the tests beside this one ("error: ...").
std::vector<std::string> ExpectedConsoleLines() {
    struct Place {
        const char* folder;
        const char* extension;
        std::regex line;
    };
    const Place places[] = {
        {"/tests/transcripts", ".txt", std::regex("#> (?:post|warn|error|bug): (.*)")},
        {"/tests/src", ".cpp", std::regex(R"re("(?:post|warn|error|bug): ([^"]*)")re")}};
    std::vector<std::string> lines;
    for (const Place& place : places) {
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(QUILO_SOURCE_DIR) + place.folder)) {
            if (entry.path().extension() != place.extension) continue;
            const std::string text = ReadText(entry.path());
            for (std::sregex_iterator match(text.begin(), text.end(), place.line), end;
                 match != end; ++match)
                lines.push_back((*match)[1]);
        }
    }
    return lines;
}

/// What a text can become: %d a number, %s anything, the rest itself. A refusal goes on with what
/// was refused.
std::regex PatternOf(const TextRow& row) {
    const std::string plain =
        std::regex_replace(row.text, std::regex(R"([.*+?^$()\[\]{}|\\])"), R"(\$&)");
    const std::string numbers = std::regex_replace(plain, std::regex("%l?d"), "-?[0-9]+");
    const std::string refused = row.name.starts_with("kInvalid") ? "(?: .*)?" : "";
    return std::regex(std::regex_replace(numbers, std::regex("%s"), ".*") + refused);
}

// No script has the host refuse a message, lets creation fail or gives an object the attributes of
// another panner.
const std::set<std::string> kBeyondScripts{
    "kUnknownException", "kMethodNotAdded", "kNoMemoryForAttribute", "kNoMemory", "kNotInitialized",
    "kNotCreated",       "kOnlyHoa",        "kOnlySubwoofers",       "kOnlyDbap", "kOnlySnowman"};

}  // namespace

TEST(ConsoleTexts, StandInTests) {
    const std::vector<std::string> lines = ExpectedConsoleLines();
    std::size_t numTexts = 0;
    for (const char* file : {"QuiloPanTexts.h", "max/VelkMaxTexts.h", "max/VelkMaxStateTexts.h"}) {
        for (const TextRow& row : TextsOf(file)) {
            ++numTexts;
            if (kBeyondScripts.contains(row.name)) continue;
            const std::regex pattern = PatternOf(row);
            EXPECT_TRUE(std::ranges::any_of(
                lines, [&](const std::string& line) { return std::regex_match(line, pattern); }))
                << row.name << " \"" << row.text << "\" stands in no test";
        }
    }
    EXPECT_GT(numTexts, 30u) << "the tables were not found";
}
