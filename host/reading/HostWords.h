// SPDX-License-Identifier: MIT
// Words and numbers in text, for scripts and for the API alike.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace HostReading {

struct Number {
    bool isWhole;  // without point and exponent, and within 64 bits
    std::int64_t whole = 0;
    double value;           // infinite or 0 where a double cannot hold it
    bool isInRange = true;  // a double can
};

/// The number that a whole word spells: [+-] digits [. digits] [e [+-] digits], with a digit on one
/// side of the point at least. Nothing for any other word ("0x10", "nan", "1e").
std::optional<Number> ReadNumber(std::string_view word);

struct Word {
    std::string text;
    bool isLiteral = false;  // quoted or escaped: a symbol whatever it spells
};

/// How words are separated; in both, "two words" between quotation marks is one word.
enum class Dialect : std::uint8_t {
    Script,  // blanks and tabs separate; a quotation mark without partner or within a word is wrong
    Max  // line ends separate, too; a backslash takes away the meaning of a blank, of a quotation
         // mark and of \ , ; $; nothing is wrong: a quotation mark within a word stands for
         // itself, and one without partner ends with the text
};

/// Nothing when the text is wrong.
std::optional<std::vector<Word>> SplitWords(std::string_view text, Dialect dialect);

}  // namespace HostReading
