// SPDX-License-Identifier: MIT
#include "HostAtoms.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iterator>

namespace Quilo::Host {

namespace {

constexpr std::string_view kBlanks = " \t";

std::size_t CountDigits(std::string_view text) {
    const std::size_t end = text.find_first_not_of("0123456789");
    return end == std::string_view::npos ? text.size() : end;
}

/// [+-] digits [. digits] [e [+-] digits], a digit on one side of the point at least.
bool ReadsAsNumber(std::string_view text, bool& whole) {
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    std::size_t digits = CountDigits(text);
    text.remove_prefix(digits);
    whole = digits > 0 && text.empty();
    if (text.starts_with('.')) {
        const std::size_t decimals = CountDigits(text.substr(1));
        text.remove_prefix(1 + decimals);
        digits += decimals;
    }
    if (digits == 0) return false;
    if (text.empty()) return true;
    if (text.front() != 'e' && text.front() != 'E') return false;
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    return !text.empty() && CountDigits(text) == text.size();
}

}  // namespace

bool Word::IsKeyword(std::string_view keyword) const {
    const std::string* symbol = std::get_if<std::string>(&atom);
    return symbol && !quoted && *symbol == keyword;
}

Atom ReadAtom(std::string_view word) {
    bool whole = false;
    if (!ReadsAsNumber(word, whole)) return std::string(word);
    if (whole) {
        std::int64_t value = 0;
        const std::string_view digits = word.substr(word.front() == '+' ? 1 : 0);
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (read.ec == std::errc()) return value;
    }
    // strtod, not from_chars: beyond the range of a double it still gives infinity or zero.
    return std::strtod(std::string(word).c_str(), nullptr);
}

std::optional<std::vector<Word>> SplitWords(std::string_view line) {
    std::vector<Word> words;
    while (true) {
        const std::size_t start = line.find_first_not_of(kBlanks);
        if (start == std::string_view::npos) return words;
        line.remove_prefix(start);
        if (line.front() == '"') {
            const std::size_t close = line.find('"', 1);
            if (close == std::string_view::npos) return std::nullopt;
            words.push_back({std::string(line.substr(1, close - 1)), true});
            line.remove_prefix(close + 1);
            if (!line.empty() && kBlanks.find(line.front()) == std::string_view::npos)
                return std::nullopt;
            continue;
        }
        const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
        if (word.find('"') != std::string_view::npos) return std::nullopt;
        words.push_back({ReadAtom(word), false});
        line.remove_prefix(word.size());
    }
}

double AtomNumber(const Atom& atom) {
    if (const auto* whole = std::get_if<std::int64_t>(&atom)) return static_cast<double>(*whole);
    return std::get<double>(atom);
}

std::string LayoutName(const Atom& atom) {
    const bool isWholeFloat =
        std::holds_alternative<double>(atom) && std::floor(AtomNumber(atom)) == AtomNumber(atom);
    return AtomSpelling(atom) + (isWholeFloat ? ".0" : "");
}

std::string AtomSpelling(const Atom& atom) {
    if (const auto* symbol = std::get_if<std::string>(&atom)) return *symbol;
    if (const auto* whole = std::get_if<std::int64_t>(&atom)) return std::to_string(*whole);
    char text[64];
    const auto end = std::to_chars(std::begin(text), std::end(text), std::get<double>(atom)).ptr;
    return {std::begin(text), end};
}

}  // namespace Quilo::Host
