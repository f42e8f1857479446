// SPDX-License-Identifier: MIT
// OSC addresses: "/source/1/aed", and patterns that stand for several of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// An address and its parts. Thread: any.  Throws: std::bad_alloc.
class OSCAddress {
public:
    OSCAddress() = default;
    /// A "/" at the end is removed. "" and "/" give an empty text without parts.
    explicit OSCAddress(std::string_view text);

    const std::string& Text() const noexcept { return text_; }
    /// What stands between the slashes: "dsp" and "mute" for "/dsp/mute".
    const std::vector<std::string>& Parts() const noexcept { return parts_; }
    /// Whether the text holds any of *?{}[] and thus stands for several addresses.
    bool IsPattern() const noexcept { return isPattern_; }

    /// For literal addresses, such as those that a processor registers.
    /// Throws: tav::Exception for a part with a character that addresses may not have.
    static void Validate(std::string_view text);

private:
    std::string text_;
    std::vector<std::string> parts_;
    bool isPattern_ = false;
};

/// Whether a text holds any of *?{}[].
bool IsOscPattern(std::string_view text) noexcept;

/// Whether one part of a pattern stands for one part of an address ("OSC Address Patterns", Open
/// Sound Control 1.0, M. Wright, 2002): ? any character, * any number of them, [a-z] and [!a-z] one
/// of a set or one outside it, {one,other} either text. A pattern with an open bracket, with braces
/// inside of braces, or longer than 256 characters, matches nothing.
/// Cost: length of the pattern times length of the text, at most.  Thread: any.
bool OscPartMatches(std::string_view pattern, std::string_view text) noexcept;

/// The same for whole addresses: as many parts, each of which matches.
bool OscAddressMatches(const OSCAddress& pattern, const OSCAddress& address);

}  // namespace tav
