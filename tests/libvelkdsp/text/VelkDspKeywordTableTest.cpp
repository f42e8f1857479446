// SPDX-License-Identifier: MIT
#include "text/VelkDspKeywordTable.h"

#include <gtest/gtest.h>

namespace tav {
namespace {

enum class Fruit { Apple, Pear, Secret, Unlisted };

TEST(KeywordTable, PrintingAndParsingNeedNotMirrorEachOther) {
    const KeywordTable<Fruit> table{
        {Fruit::Apple, "apple", {"apple", "pomme"}},
        {Fruit::Pear, "a pear", {"pear", "pomme"}},
        {Fruit::Secret, "secret", {}},
    };
    EXPECT_EQ(table.Parse("apple"), Fruit::Apple);
    EXPECT_EQ(table.Parse("pomme"), Fruit::Apple) << "the first row wins";
    EXPECT_EQ(table.Parse("pear"), Fruit::Pear);
    for (const char* word : {"a pear", "secret", "Apple", "appl", "apple ", ""}) {
        EXPECT_FALSE(table.Parse(word)) << word;
    }
    EXPECT_EQ(table.Print(Fruit::Pear), "a pear");
    EXPECT_EQ(table.Print(Fruit::Secret), "secret");
    EXPECT_EQ(table.Print(Fruit::Unlisted), "");
    EXPECT_EQ(table.Print(Fruit::Unlisted, "?"), "?");
    EXPECT_EQ(table.PrintedKeywords(), "apple a pear");
    EXPECT_EQ(table.PrintedKeywords(','), "apple,a pear");
}

}  // namespace
}  // namespace tav
