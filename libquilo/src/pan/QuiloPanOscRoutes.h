// SPDX-License-Identifier: MIT
// The table of a panner's OSC addresses.
#pragma once

#include "math/VelkDspCoordinates.h"
#include "osc/VelkDspOscArguments.h"
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

/// The parts of an address between its slashes, one after the other. A slash at the end does not
/// count.
class OscPath {
public:
    explicit OscPath(std::string_view address) noexcept : rest_(address) {
        if (rest_.starts_with('/')) rest_.remove_prefix(1);
        if (rest_.ends_with('/')) rest_.remove_suffix(1);
    }
    bool AtEnd() const noexcept { return rest_.empty(); }
    /// "" at the end.
    std::string_view Take() noexcept {
        std::size_t size = 0;
        while (size < rest_.size() && rest_[size] != '/') ++size;
        const std::string_view part = rest_.substr(0, size);
        rest_.remove_prefix(std::min(size + 1, rest_.size()));
        return part;
    }

private:
    std::string_view rest_;
};

struct PanOscRoute {
    using Format = tav::Coordinates::Format;

    /// N: the number of a source, from 1.  F: a coordinate format.
    std::string_view address;
    /// A format as of OscArgumentsFit, exactly; "F": at least the values of the coordinate format;
    /// "*": any number of numbers; "?": anything.
    std::string_view arguments;
    /// Of an address without F that takes a position.
    Format format;
    /// The attribute that shows the setting; empty for none.
    std::string_view attribute;
    std::string_view hint;
    std::string_view help;
    /// A source that it moves is computed by ComputeMovedSources.
    /// Thread: audio or control, with the panner's lock.  Null for an errand.
    void (*run)(Pan& pan, PanOSCReceiver& receiver, const tav::OscCommand& command);
    /// Thread: control, without the lock.  @return false: the values do not serve
    /// The address of the message has no patterns.
    /// Null for a command, and for an errand that only an owner of the panner knows to run: without
    /// one it is neither run nor accepted.
    bool (*runErrand)(Pan& pan, const tav::OscMessageView& message);
    /// Whether a panner has what the row sets and, of an errand, takes the values, which fit; null:
    /// all do. Messages to others do nothing.
    /// Thread: control, without the lock.
    bool (*accepts)(const Pan& pan, const tav::OscMessageView& message);
};

std::span<const PanOscRoute> PanOscRoutes();

/// Computes every source that commands have moved, however often, once. Belongs after the last of
/// them.  Thread: theirs, with the same hold of the panner's lock.
void ComputeMovedSources(Pan& pan);

/// A number as an address writes it; nothing when there is anything else.
inline std::optional<unsigned> OscNumber(std::string_view part) noexcept {
    unsigned number = 0;
    const char *const begin = part.data(), *const end = begin + part.size();
    const auto [last, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || last != end) return std::nullopt;
    return number;
}

}  // namespace Quilo
