// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscAddress.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>

namespace tav {

namespace {

constexpr SourceSite kAddressSite{"libvelkdsp/src/osc/VelkDspOscAddress", 0};
constexpr std::size_t kLongestPattern = 256;

std::vector<std::string> SplitAtSlashes(std::string_view text) {
    std::vector<std::string> parts;
    if (text.starts_with('/')) text.remove_prefix(1);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('/'), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// A pattern as a non-deterministic automaton: its state k stands before the k-th character. Steps
/// that read nothing (past a *, into or out of braces) only lead forward, so that one pass from
/// left to right finds all states that they reach.
class PartMatcher {
public:
    /// @param pattern  of kLongestPattern characters at most
    explicit PartMatcher(std::string_view pattern) noexcept : pattern_(pattern) {}

    bool Matches(std::string_view text) noexcept {
        if (!FindBrackets()) return false;
        States states, next;
        states.set(0);
        Spread(states);
        for (const char c : text) {
            if (states.none()) return false;
            next.reset();
            for (std::size_t k = 0; k < pattern_.size(); ++k) {
                if (states[k]) Read(k, c, next);
            }
            Spread(next);
            states = next;
        }
        return states[pattern_.size()];
    }

private:
    using States = std::bitset<kLongestPattern + 1>;

    /// Notes for every character inside brackets where these end.
    bool FindBrackets() noexcept {
        for (std::size_t k = 0; k < pattern_.size(); ++k) {
            close_[k] = kNone;
            const char open = pattern_[k];
            if (open != '[' && open != '{') continue;
            const std::size_t end = pattern_.find(open == '[' ? ']' : '}', k);
            if (end == std::string_view::npos) return false;
            // Braces inside of braces have no meaning.
            if (open == '{' && pattern_.substr(k + 1, end - k).find('{') < end - k) return false;
            for (; k < end; ++k) close_[k] = static_cast<std::uint16_t>(end);
            close_[end] = static_cast<std::uint16_t>(end);
        }
        return true;
    }

    bool IsInBraces(std::size_t k) const noexcept {
        return close_[k] != kNone && pattern_[close_[k]] == '}';
    }

    void Spread(States& states) const noexcept {
        for (std::size_t k = 0; k < pattern_.size(); ++k) {
            if (!states[k]) continue;
            const char c = pattern_[k];
            if (IsInBraces(k)) {
                if (c == ',' || c == '}') states.set(close_[k] + 1U);
                if (c == '{') EnterBraces(k, states);
            } else if (c == '*') {
                states.set(k + 1);
            }
        }
    }

    void EnterBraces(std::size_t open, States& states) const noexcept {
        for (std::size_t k = open; k < close_[open]; ++k) {
            if (k == open || pattern_[k] == ',') states.set(k + 1);
        }
    }

    /// From state k with the character c.
    void Read(std::size_t k, char c, States& next) const noexcept {
        const char p = pattern_[k];
        if (IsInBraces(k)) {
            if (p == c && p != ',' && p != '}' && p != '{') next.set(k + 1);
        } else if (p == '[' && close_[k] != kNone) {
            const auto set = pattern_.substr(k + 1, close_[k] - k - 1);
            if (IsInSet(set, c)) next.set(close_[k] + 1U);
        } else if (p == '*') {
            next.set(k);
        } else if (p == '?' || p == c) {
            next.set(k + 1);
        }
    }

    static bool IsInSet(std::string_view set, char c) {
        const bool isNegated = set.starts_with('!');
        if (isNegated) set.remove_prefix(1);
        for (std::size_t k = 0; k < set.size(); ++k) {
            // A "-" at the end is a character like others.
            const bool isRange = k + 2 < set.size() && set[k + 1] == '-';
            if (isRange ? (set[k] <= c && c <= set[k + 2]) : set[k] == c) return !isNegated;
            if (isRange) k += 2;
        }
        return isNegated;
    }

    static constexpr std::uint16_t kNone = 0xFFFF;

    std::string_view pattern_;
    // For characters in brackets the index of their end, kNone for others.
    std::array<std::uint16_t, kLongestPattern> close_{};
};

}  // namespace

OSCAddress::OSCAddress(std::string_view text)
    : text_(text.ends_with('/') ? text.substr(0, text.size() - 1) : text),
      parts_(SplitAtSlashes(text_)),
      isPattern_(IsOscPattern(text_)) {}

void OSCAddress::Validate(std::string_view text) {
    // Beyond ASCII, all bytes of a character are above 0x7E.
    const auto isAllowed = [](char c) {
        return c > ' ' && c <= '~' &&
               std::string_view("#*,?[]{}").find(c) == std::string_view::npos;
    };
    for (const std::string& part : SplitAtSlashes(text)) {
        if (std::ranges::all_of(part, isAllowed)) continue;
        throw Exception(
            "OSC format error: encountered characters not allowed in address string : " +
                std::string(text),
            kAddressSite);
    }
}

bool IsOscPattern(std::string_view text) noexcept {
    return std::ranges::any_of(text, [](char c) {
        return c == '*' || c == '?' || c == '{' || c == '}' || c == '[' || c == ']';
    });
}

bool OscPartMatches(std::string_view pattern, std::string_view text) noexcept {
    if (!IsOscPattern(pattern)) return pattern == text;
    return pattern.size() <= kLongestPattern && PartMatcher(pattern).Matches(text);
}

bool OscAddressMatches(const OSCAddress& pattern, const OSCAddress& address) {
    return std::ranges::equal(pattern.Parts(), address.Parts(), OscPartMatches);
}

}  // namespace tav
