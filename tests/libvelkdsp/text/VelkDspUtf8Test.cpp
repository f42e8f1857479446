// SPDX-License-Identifier: MIT
#include "text/VelkDspUtf8.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tav {
namespace {

/// The bytes that the encoding's definition gives for a code point.
std::string Encoded(unsigned code) {
    const auto tail = [&](unsigned shift) {
        return static_cast<char>(0x80 | ((code >> shift) & 0x3f));
    };
    if (code < 0x80) return {static_cast<char>(code)};
    if (code < 0x800) return {static_cast<char>(0xc0 | (code >> 6)), tail(0)};
    if (code < 0x10000) return {static_cast<char>(0xe0 | (code >> 12)), tail(6), tail(0)};
    return {static_cast<char>(0xf0 | (code >> 18)), tail(12), tail(6), tail(0)};
}

// All of them: what is no code point's encoding is no character, and the other way round.
TEST(Utf8, HasExactlyTheEncodingsOfItsCodePoints) {
    std::set<std::string> encodings;
    for (unsigned code = 0; code < 0x110000; ++code)
        if (code < 0xd800 || code > 0xdfff) encodings.insert(Encoded(code));
    for (const std::string& text : encodings)
        ASSERT_EQ(Utf8CharacterLength(text + "x"), text.size());
    for (unsigned bytes = 0; bytes < 0x1000000; bytes += 7) {
        const std::string text{static_cast<char>(bytes >> 16), static_cast<char>(bytes >> 8),
                               static_cast<char>(bytes), '\x80'};
        const std::size_t length = Utf8CharacterLength(text);
        for (std::size_t n = 1; n <= 4; ++n)
            ASSERT_EQ(n == length, encodings.contains(text.substr(0, n))) << bytes << " " << n;
    }
}

TEST(Utf8, NamesTheFirstBadByte) {
    EXPECT_EQ(FindBadUtf8("gr\xc3\xbc\xc3\x9f"), std::string_view::npos);
    EXPECT_EQ(FindBadUtf8("gr\xfc\xdf"), 2u);
    EXPECT_EQ(FindBadUtf8("gr\xc3"), 2u);
}

}  // namespace
}  // namespace tav
