// SPDX-License-Identifier: MIT
#include "files/VelkDspFileReplacement.h"

#include "support/HostProgram.h"

#include <gtest/gtest.h>

namespace tav {
namespace {

using Tests::ReadText;
using Tests::WriteText;

TEST(FileReplacement, LeavesTheOldFileOrTheNewOneAndNothingElse) {
    const Tests::TemporaryFolder folder;
    const auto file = folder / "cue.txt";
    EXPECT_TRUE(ReplaceFile(file, "first"));
    WriteText(folder / "cue.txt.part", "somebody's own");
    {
        FileReplacement abandoned(file), other(file);
        abandoned.Stream() << "half";
        other.Stream() << "of another";  // they do not write into one file
        EXPECT_TRUE(other.Commit());
        EXPECT_EQ(ReadText(file), "of another");
        WriteText(folder / "cue.txt.part2" / "note", "somebody's own");
        EXPECT_TRUE(ReplaceFile(file, "first"));
    }
    EXPECT_EQ(ReadText(file), "first");
    EXPECT_TRUE(ReplaceFile(file, "second"));
    EXPECT_EQ(ReadText(file), "second");
    EXPECT_EQ(ReadText(folder / "cue.txt.part"), "somebody's own");
    EXPECT_FALSE(ReplaceFile(folder / "nowhere" / "cue.txt", "third"));
    EXPECT_EQ(ReadText(folder / "cue.txt.part2" / "note"), "somebody's own");
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"cue.txt", "cue.txt.part", "cue.txt.part2"}));
    std::error_code hasNoLinks;
    std::filesystem::create_symlink(file, folder / "link.txt", hasNoLinks);
    if (hasNoLinks) return;
    EXPECT_TRUE(ReplaceFile(folder / "link.txt", "fourth"));
    EXPECT_EQ(ReadText(file), "fourth");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.txt"));
}

}  // namespace
}  // namespace tav
