// SPDX-License-Identifier: MIT
#include "text/VelkDspUtf8.h"

#include <gtest/gtest.h>

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

/// Whether the bytes are those of the code point that they would mean.
bool IsEncoding(const std::string& bytes) {
    constexpr unsigned kLeadBits[] = {0, 0x7f, 0x1f, 0x0f, 0x07};
    unsigned code = static_cast<unsigned char>(bytes[0]) & kLeadBits[bytes.size()];
    for (const char tail : bytes.substr(1)) code = code << 6 | (static_cast<unsigned>(tail) & 0x3f);
    return code < 0x110000 && (code < 0xd800 || code > 0xdfff) && Encoded(code) == bytes;
}

// Every pair of first bytes, with tails at the limits of what a tail can be.
TEST(Utf8, HasExactlyTheEncodingsOfItsCodePoints) {
    for (unsigned first = 0; first < 0x10000; ++first) {
        for (const char* tail : {"\x80\xbf", "\xbf\x80", "\x7f\x80", "\x80\xc0", "\xc0\x80"}) {
            const std::string text =
                std::string{static_cast<char>(first >> 8), static_cast<char>(first)} + tail;
            const std::size_t length = Utf8CharacterLength(text);
            for (std::size_t n = 1; n <= 4; ++n)
                ASSERT_EQ(n == length, IsEncoding(text.substr(0, n))) << first << tail;
        }
    }
}

TEST(Utf8, NamesTheFirstBadByte) {
    EXPECT_EQ(FindBadUtf8("gr\xc3\xbc\xc3\x9f"), std::string_view::npos);
    EXPECT_EQ(FindBadUtf8("gr\xfc\xdf"), 2u);
    EXPECT_EQ(FindBadUtf8("gr\xc3"), 2u);
}

}  // namespace
}  // namespace tav
