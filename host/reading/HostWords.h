// SPDX-License-Identifier: MIT
// Splits text into words and reads numbers, for scripts and for the API.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace HostReading {

struct Number {
    bool isWhole = false;  // without point and exponent, and within 64 bits
    std::int64_t whole = 0;
    double value = 0;       // infinite or 0 if it is out of the range of double
    bool isInRange = true;  // whether it is in that range
};

/// The number that a whole word spells: [+-] digits [. digits] [e [+-] digits], with a digit on one
/// side of the point at least. Nothing for any other word ("0x10", "nan", "1e").
std::optional<Number> ReadNumber(std::string_view word);

struct Word {
    std::string text;
    bool isLiteral = false;  // quoted or escaped, so always a symbol
};

/// How words are separated; in both, "two words" between quotation marks is one word.
enum class Dialect : std::uint8_t {
    Script,  // blanks and tabs separate; an unpaired quotation mark, or one within a word, is an
             // error
    Max      // line ends separate, too; a backslash escapes a blank, a quotation mark and \ , ; $;
             // there are no errors: a quotation mark within a word is an ordinary character, and an
             // unpaired one ends at the end of the text
};

/// Splits text into words; nothing when there is an error.
std::optional<std::vector<Word>> SplitWords(std::string_view text, Dialect dialect);

}  // namespace HostReading
