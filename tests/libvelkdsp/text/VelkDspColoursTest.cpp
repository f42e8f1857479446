// SPDX-License-Identifier: MIT
#include "text/VelkDspColours.h"

#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string HexOf(tav::Colour colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(colour.value));
    return text;
}

TEST(Colours, AreThoseThatADrawingProgramKnows) {
    const Tests::TemporaryFolder folder;
    const auto draw = [&](const std::string& name, auto paint) {
        std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"160\" height=\"2\">";
        int x = 0;
        for (const tav::NamedColour& row : tav::NamedColours()) {
            svg += "<rect x=\"" + std::to_string(x++) + "\" width=\"1\" height=\"2\" fill=\"" +
                   paint(row) + "\"/>";
        }
        Tests::WriteText(folder / (name + ".svg"), svg + "</svg>");
        const std::string command = "cd " + folder.Path().string() + " && rsvg-convert -o " + name +
                                    ".png " + name + ".svg";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return Tests::ReadText(folder / (name + ".png"));
    };
    const std::string named = draw("named", [](const auto& row) { return std::string(row.name); });
    const std::string valued = draw("valued", [](const auto& row) { return HexOf(row.colour); });
    EXPECT_FALSE(named.empty());
    EXPECT_EQ(named, valued);
    EXPECT_EQ(tav::NamedColours().size(), 148u);
}

TEST(Colours, AreFoundBothWays) {
    for (const tav::NamedColour& row : tav::NamedColours()) {
        EXPECT_EQ(tav::FindColour(row.name), row.colour) << row.name;
        EXPECT_EQ(tav::FindColour(HexOf(row.colour)), row.colour) << row.name;
        EXPECT_EQ(tav::FindColour(tav::ColourName(row.colour)), row.colour) << row.name;
        EXPECT_LE(tav::ColourName(row.colour), row.name);  // of two names the first
        EXPECT_EQ(tav::ColourText(row.colour), tav::ColourName(row.colour));
    }
    const tav::Colour nameless{0x0a0b0c};
    EXPECT_EQ(tav::ColourName(nameless), "");
    EXPECT_EQ(tav::ColourText(nameless), "#0a0b0c");
    EXPECT_EQ(tav::FindColour("#0A0B0C"), nameless);
    for (const char* text :
         {"", "#", "#12345", "#1234567", "#12345g", "#-12345", "Red", "zz", "re"}) {
        EXPECT_FALSE(tav::FindColour(text)) << text;
    }
}

}  // namespace
