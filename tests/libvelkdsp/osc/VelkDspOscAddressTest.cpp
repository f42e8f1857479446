// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscAddress.h"

#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

namespace tav {
namespace {

using Parts = std::vector<std::string>;

TEST(OSCAddress, HasPartsAndKnowsPatterns) {
    const struct {
        const char *text, *kept;
        Parts parts;
        bool isPattern;
    } rows[] = {
        {"/dsp/mute/", "/dsp/mute", {"dsp", "mute"}, false},
        {"/source/*/spread", "/source/*/spread", {"source", "*", "spread"}, true},
        {"/a//b", "/a//b", {"a", "", "b"}, false},
        {"/", "", {}, false},
        {"", "", {}, false},
        {"/x/{1,2}", "/x/{1,2}", {"x", "{1,2}"}, true},
    };
    for (const auto& row : rows) {
        const OSCAddress address(row.text);
        EXPECT_EQ(address.Text(), row.kept);
        EXPECT_EQ(address.Parts(), row.parts) << row.text;
        EXPECT_EQ(address.IsPattern(), row.isPattern) << row.text;
    }
}

TEST(OSCAddress, RefusesCharactersThatAddressesMayNotHave) {
    EXPECT_NO_THROW(OSCAddress::Validate("/dsp/automute/active!$~x++"));
    for (const char c : std::string(" #*,?[]{}\x7f\x1f\xc3")) {
        const std::string address = std::string("/good/b") + c + "d";
        try {
            OSCAddress::Validate(address);
            ADD_FAILURE() << address;
        } catch (const Exception& refusal) {
            EXPECT_EQ(refusal.Message(),
                      "OSC format error: encountered characters not allowed in address string : " +
                          address);
            EXPECT_EQ(refusal.File(), "libvelkdsp/src/osc/VelkDspOscAddress");
        }
    }
}

/// The same pattern as a regular expression.
std::regex AsExpression(const std::string& pattern) {
    std::string text;
    bool inBraces = false, inSet = false;
    for (std::size_t k = 0; k < pattern.size(); ++k) {
        const char c = pattern[k];
        if (c == '{') inBraces = true;
        if (c == '[') inSet = true;
        if (inSet) {
            text += c == '!' && pattern[k - 1] == '[' ? '^' : c;
        } else if (c == '{' || c == '}') {
            text += c == '{' ? "(" : ")";
        } else if (inBraces) {
            text += c == ',' ? '|' : c;
        } else {
            text += c == '?' ? "." : c == '*' ? ".*" : std::string(1, c);
        }
        if (c == '}') inBraces = false;
        if (c == ']') inSet = false;
    }
    return std::regex(text);
}

TEST(OscPattern, MatchesWhatARegularExpressionMatches) {
    constexpr const char* kPieces[] = {"a",     "b",      "c",     "?",      "*",      "{a,ab}",
                                       "{,bc}", "{b,ca}", "[a-b]", "[!a]",   "[ca]",   "[!b-c]",
                                       "{abc}", "*",      "a",     "[a-ac]", "{b,b,c}"};
    std::mt19937 random(12);
    int matches = 0;
    for (int k = 0; k < 4000; ++k) {
        std::string pattern, text;
        for (auto n = random() % 5; n > 0; --n) pattern += kPieces[random() % std::size(kPieces)];
        for (auto n = random() % 6; n > 0; --n) text += "abc"[random() % 3];
        const bool expected = std::regex_match(text, AsExpression(pattern));
        ASSERT_EQ(OscPartMatches(pattern, text), expected) << pattern << " on " << text;
        matches += expected ? 1 : 0;
    }
    EXPECT_GT(matches, 400);
}

TEST(OscPattern, MatchesPartByPart) {
    const struct {
        const char *pattern, *address;
        bool matches;
    } rows[] = {
        {"/source/*/spread", "/source/12/spread", true},
        {"/source/*/spread", "/source/1/2/spread", false},
        {"/source/*", "/source/1/spread", false},
        {"/{source,speaker}/[1-3]/x?", "/speaker/2/xy", true},
        {"/dsp/[!m]*", "/dsp/mute", false},
        {"/dsp/{mute", "/dsp/mute", false},  // an open bracket
        {"/dsp/m[ute", "/dsp/mute", false},  // another
        {"/dsp/mut}e", "/dsp/mut}e", true},  // a bracket that closes nothing is itself
        {"/a/[a-]", "/a/-", true},
        {"/a/{b,{c,d}}", "/a/b", false},  // braces inside of braces
        {"/a/{b}{c}", "/a/bc", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(OscAddressMatches(OSCAddress(row.pattern), OSCAddress(row.address)), row.matches)
            << row.pattern << " on " << row.address;
    }
    // One that takes other matchers exponential time.
    std::string stars;
    for (int k = 0; k < 100; ++k) stars += "*a";
    EXPECT_FALSE(OscPartMatches(stars, std::string(99, 'a')));
    EXPECT_FALSE(OscPartMatches(std::string(257, '*'), "a"));
}

}  // namespace
}  // namespace tav
