// SPDX-License-Identifier: MIT
// What an object writes and reads: its state as JSON, its reference page.
#include "src/PanBox.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Tests;

namespace {

using HostApi::Dialog;

/// Sends a message and lets what it put off run.
std::vector<std::string> SendAndWait(PanBox& box, const std::string& message) {
    box.Send(message);
    HostApi::Settle();
    return box.TakeConsole();
}

}  // namespace

TEST(StateFiles, ThatFailAreSaidAndChangeNothing) {
    const TemporaryFolder folder;
    PanBox box("2 4 vbap2d");
    const std::string before = box.Ask("interpolationtime");
    // Cancelled dialogs.
    EXPECT_EQ(SendAndWait(box, "exportdict"), std::vector<std::string>());
    EXPECT_EQ(SendAndWait(box, "readdict"), std::vector<std::string>());
    // Neither a folder to write to nor JSON.
    HostApi::AnswerDialog(Dialog::SaveAs, folder / "none" / "a.json");
    std::vector<std::string> lines = SendAndWait(box, "exportdict");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with("error: could not create ")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("a.json")) << lines[0];
    WriteText(folder / "bad.json", "{ \"interpolationtime\" : 7, ");
    HostApi::AnswerDialog(Dialog::Open, folder / "bad.json");
    lines = SendAndWait(box, "readdict");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "error: error parsing dictionary named bad.json");
    EXPECT_EQ(box.Ask("interpolationtime"), before);
}

// The page is made by the program from a copy of the module, beside which it is written.
TEST(ReferencePage, IsWellFormedAndCompleteForEveryKindOfObject) {
    if (std::getenv("QUILO_HOST") != nullptr) GTEST_SKIP() << "another program has another module";
    for (const char* box :
         {"2 4 vbap2d", "1 4 bformat", "1 7 ms", "2 9 nfchoa3d", "2 4 dbap", "2 4 subwoofers"}) {
        SCOPED_TRACE(box);
        const TemporaryFolder folder;
        const std::filesystem::path module = folder / "quilo.pan~.so";
        std::filesystem::copy_file(QUILO_BIN_DIR "/quilo.pan~.so", module);
        const std::filesystem::path script = folder / "script.txt";
        WriteText(script, "object quilo.pan~ " + std::string(box) + "\ngeneratexml\n");
        const HostRun run = RunHost(folder, {"--module", module.string(), script.string()});
        const std::filesystem::path page = folder / "quilo.pan~.maxref.xml";
        ASSERT_FALSE(run.console.empty());
        EXPECT_EQ(run.console.back(), "post: documentation generated in " + page.string());
        const std::string command = "xmllint --noout '" + page.string() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
    }
}
