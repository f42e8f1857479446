// SPDX-License-Identifier: MIT
#include "reading/HostWords.h"

#include <charconv>
#include <cstdlib>
#include <system_error>

namespace HostReading {

namespace {

constexpr auto kNowhere = std::string_view::npos;

bool IsIn(std::string_view text, std::size_t at, std::string_view characters) {
    return at < text.size() && characters.find(text[at]) != kNowhere;
}

}  // namespace

std::optional<Number> ReadNumber(std::string_view word) {
    // Excludes words that std::from_chars also accepts (inf, nan, 0x1p3); it does not accept "+5".
    if (word.find_first_not_of("0123456789.eE+-") != kNowhere) return {};
    const std::string_view text = word.starts_with('+') ? word.substr(1) : word;
    if (text.empty() || (text.size() < word.size() && text.starts_with('-'))) return {};
    const char* const begin = text.data();
    const char* const end = begin + text.size();

    std::int64_t whole = 0;
    const auto asWhole = std::from_chars(begin, end, whole);
    if (asWhole.ptr == end && asWhole.ec == std::errc())
        return Number{true, whole, static_cast<double>(whole)};
    double value = 0;
    const auto asDouble = std::from_chars(begin, end, value);
    if (asDouble.ptr != end || asDouble.ec == std::errc::invalid_argument) return {};
    if (asDouble.ec == std::errc()) return Number{false, 0, value};
    // Only strtod tells whether an out-of-range number is too large or too small.
    return Number{false, 0, std::strtod(std::string(text).c_str(), nullptr), false};
}

std::optional<std::vector<Word>> SplitWords(std::string_view text, Dialect dialect) {
    const bool isScript = dialect == Dialect::Script;
    const std::string_view blanks = isScript ? " \t" : " \t\n\r";
    const std::string_view escapable = isScript ? "" : " \t\n\r\"\\,;$";
    std::vector<Word> words;
    for (std::size_t at = 0; (at = text.find_first_not_of(blanks, at)) != kNowhere;) {
        Word& word = words.emplace_back();
        const bool isQuoted = text[at] == '"';
        word.isLiteral = isQuoted;
        if (isQuoted) ++at;
        for (; at < text.size() && !IsIn(text, at, isQuoted ? "\"" : blanks); ++at) {
            if (text[at] == '\\' && IsIn(text, at + 1, escapable)) {
                word.isLiteral = true;
                ++at;
            } else if (isScript && text[at] == '"') {
                return {};
            }
            word.text += text[at];
        }
        if (!isQuoted) continue;
        if (isScript && at == text.size()) return {};
        ++at;  // past the closing quotation mark, or past the end
        if (isScript && at < text.size() && !IsIn(text, at, blanks)) return {};
    }
    return words;
}

}  // namespace HostReading
