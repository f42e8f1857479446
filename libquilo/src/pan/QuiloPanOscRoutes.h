// SPDX-License-Identifier: MIT
// The table of a panner's OSC addresses.
#pragma once

#include "math/VelkDspCoordinates.h"
#include "osc/VelkDspOscInterface.h"
#include "processors/VelkDspOscQueue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Quilo {

class Pan;
class PanOSCReceiver;

/// An address in pieces, found in one pass; those beyond the capacity are not kept. A "/" at the
/// end does not count.
struct OscParts {
    static constexpr std::size_t kMost = 5;

    constexpr explicit OscParts(std::string_view address) noexcept {
        if (address.ends_with('/')) address.remove_suffix(1);
        std::size_t begin = address.starts_with('/') ? 1 : 0;
        for (std::size_t k = begin; k < address.size() && count < kMost; ++k) {
            const bool isLast = k + 1 == address.size();
            if (address[k] != '/' && !isLast) continue;
            const std::size_t end = address[k] == '/' ? k : k + 1;
            parts[count++] = address.substr(begin, end - begin);
            begin = k + 1;
        }
    }
    constexpr std::string_view operator[](std::size_t k) const { return parts[k]; }

    std::array<std::string_view, kMost> parts{};
    std::size_t count = 0;
};

struct PanOscRoute {
    using Format = tav::Coordinates::Format;

    /// N: the number of a source, from 1.  F: a coordinate format.
    std::string_view address;
    /// As OscArgumentsFit; with an F the values of the format, at least as many.
    std::string_view arguments;
    /// Of an address without F that takes a position.
    Format format;
    /// The attribute that shows the setting; empty for none.
    std::string_view attribute;
    std::string_view hint;
    std::string_view help;
    /// Thread: audio or control, with the panner's lock.  Null for an errand.
    void (*run)(Pan& pan, PanOSCReceiver& receiver, const tav::OscCommand& command);
    /// Thread: control, without the lock.  @return false: the arguments do not fit
    bool (*runErrand)(Pan& pan, const tav::OscMessageView& message);
};

std::span<const PanOscRoute> PanOscRoutes();

/// A number as an address writes it; nothing when there is anything else.
inline std::optional<unsigned> OscNumber(std::string_view part) noexcept {
    unsigned number = 0;
    const char *const begin = part.data(), *const end = begin + part.size();
    const auto [last, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || last != end) return std::nullopt;
    return number;
}

}  // namespace Quilo
