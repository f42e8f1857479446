// SPDX-License-Identifier: MIT
// The colours that the web knows by name (W3C, CSS Color Module Level 4, section 6.1).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tav {

/// Red, green and blue, 8 bits each, red highest.
struct Colour {
    std::uint32_t value = 0;

    friend bool operator==(const Colour&, const Colour&) = default;
};

struct NamedColour {
    std::string_view name;
    Colour colour;
};

/// All of them, by name.
std::span<const NamedColour> NamedColours() noexcept;

/// @param text  a name in lower case, or "#rrggbb"
/// @return nothing for another text
std::optional<Colour> FindColour(std::string_view text) noexcept;

/// The name of exactly this colour, of several the first in the alphabet; "" where there is none.
std::string_view ColourName(Colour colour) noexcept;

/// The name, else "#rrggbb": what FindColour reads back.
std::string ColourText(Colour colour);

}  // namespace tav
