// SPDX-License-Identifier: MIT
#include "HostAtoms.h"

#include <charconv>
#include <cmath>
#include <iterator>

namespace Quilo::Host {

Atom AtomOf(const HostReading::Word& word) {
    const auto number = word.isLiteral ? std::nullopt : HostReading::ReadNumber(word.text);
    if (!number) return word.text;
    if (number->isWhole) return number->whole;
    return number->value;
}

std::optional<std::vector<Atom>> ReadAtoms(std::string_view line) {
    const auto words = HostReading::SplitWords(line, HostReading::Dialect::Script);
    if (!words) return {};
    std::vector<Atom> atoms;
    for (const HostReading::Word& word : *words) atoms.push_back(AtomOf(word));
    return atoms;
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
