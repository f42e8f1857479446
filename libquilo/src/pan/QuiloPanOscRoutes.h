// SPDX-License-Identifier: MIT
// The table of a panner's OSC addresses, and how a message finds its row.
#pragma once

#include "math/VelkDspCoordinates.h"
#include "osc/VelkDspOscAddress.h"
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

/// An address in pieces; those beyond the capacity are not kept.
struct OscParts {
    static constexpr std::size_t kMost = 5;

    constexpr explicit OscParts(std::string_view address) {
        if (address.starts_with('/')) address.remove_prefix(1);
        if (address.ends_with('/')) address.remove_suffix(1);
        while (!address.empty() && count < kMost) {
            const std::size_t end = std::min(address.find('/'), address.size());
            parts[count++] = address.substr(0, end);
            address.remove_prefix(std::min(end + 1, address.size()));
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
std::span<const OscParts> PanOscRouteParts();

/// A number as an address writes it; nothing when there is anything else.
inline std::optional<unsigned> OscNumber(std::string_view part) noexcept {
    unsigned number = 0;
    const char *const begin = part.data(), *const end = begin + part.size();
    const auto [last, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || last != end) return std::nullopt;
    return number;
}

/// Finds what one message is about. `Sink` has Command(const OscCommand&) and
/// Errand(std::size_t row, const OscMessageView&).
/// @tparam kPatterns  whether address patterns are looked at; that takes memory
template <bool kPatterns, class Sink>
class PanOscResolver {
public:
    PanOscResolver(const tav::OscMessageView& message, unsigned numSources, Sink& sink) noexcept
        : message_(message),
          parts_(message.address),
          isPattern_(kPatterns && tav::IsOscPattern(message.address)),
          numSources_(numSources),
          sink_(sink) {}

    /// The text of the number of a source that does not exist, in an address of sources.
    /// Deliberate: such a message is faulty, whatever else it says.
    std::optional<std::string_view> BadSource() const {
        if (!parts_[0].starts_with("source")) return std::nullopt;
        if (kPatterns && tav::IsOscPattern(parts_[1])) return std::nullopt;
        const auto number = OscNumber(parts_[1]);
        if (number && *number >= 1 && *number <= numSources_) return std::nullopt;
        return parts_[1];
    }

    /// Whether a part is a pattern and no coordinate format ("dist*=").
    bool HasPatterns() const noexcept {
        return std::any_of(parts_.parts.begin(), parts_.parts.end(), [](std::string_view part) {
            return tav::IsOscPattern(part) && !tav::Coordinates::ParseFormat(part);
        });
    }

    /// @return whether any row took the message
    bool Resolve() {
        bool isHandled = false;
        const auto rows = PanOscRouteParts();
        for (std::size_t k = 0; k < rows.size(); ++k) {
            if (!MatchesShape(rows[k]) || !TryRow(k)) continue;
            isHandled = true;
            if (!isPattern_) break;  // no two rows are for the same address
        }
        return isHandled;
    }

private:
    using Format = tav::Coordinates::Format;

    bool PartFits(std::string_view part, std::string_view literal) const {
        if (part == literal) return true;
        if constexpr (kPatterns) return isPattern_ && tav::OscPartMatches(part, literal);
        return false;
    }

    /// All but numbers and formats.
    bool MatchesShape(const OscParts& row) const {
        const bool endsWithFormat = row[row.count - 1] == "F";
        if (parts_.count < row.count || (parts_.count > row.count && !endsWithFormat)) return false;
        // Deliberate: "/sources/1/xyz" is an address of sources, too, and likewise "/speakersAll".
        const bool isOpen = row[0] == "source" || row[0] == "speakers";
        if (!(isOpen && parts_[0].starts_with(row[0])) && !PartFits(parts_[0], row[0])) {
            return false;
        }
        for (std::size_t k = 1; k < row.count; ++k) {
            if (row[k] != "N" && row[k] != "F" && !PartFits(parts_[k], row[k])) return false;
        }
        return true;
    }

    bool TryRow(std::size_t k) {
        const OscParts& row = PanOscRouteParts()[k];
        bool isTaken = false;
        const auto takeSource = [&](unsigned subject) {
            if (row[row.count - 1] != "F") {
                isTaken |= Take(k, subject, PanOscRoutes()[k].format);
            } else {
                ForEachFormat(parts_[row.count - 1],
                              [&](Format format) { isTaken |= Take(k, subject, format); });
            }
        };
        const auto place = std::find(row.parts.begin(), row.parts.end(), "N");
        if (place == row.parts.end()) {
            takeSource(0);
        } else {
            ForEachSource(parts_[static_cast<std::size_t>(place - row.parts.begin())], takeSource);
        }
        return isTaken;
    }

    template <class Use>
    void ForEachSource(std::string_view part, const Use& use) const {
        if (const auto number = OscNumber(part)) {
            if (*number >= 1 && *number <= numSources_) use(*number - 1);
            return;
        }
        if constexpr (kPatterns) {
            for (unsigned n = 1; n <= numSources_ && tav::IsOscPattern(part); ++n) {
                if (tav::OscPartMatches(part, std::to_string(n))) use(n - 1);
            }
        }
    }

    template <class Use>
    static void ForEachFormat(std::string_view part, const Use& use) {
        if (const auto format = tav::Coordinates::ParseFormat(part)) return use(*format);
        if constexpr (kPatterns) {
            for (auto code = Format::Xyz; code < Format::None && tav::IsOscPattern(part);
                 code = static_cast<Format>(static_cast<int>(code) + 1)) {
                if (tav::OscPartMatches(part, tav::Coordinates::FormatText(code))) use(code);
            }
        }
    }

    /// Whether a position says where the source is, wherever it was; a spread or a mute always
    /// does.
    /// @param isReference  what later positions refer to, so that each one counts
    static bool IsAbsolute(Format format, bool isPosition, bool isReference) noexcept {
        constexpr Format kWhole[] = {Format::Xyz, Format::Xy,     Format::Ade,
                                     Format::Aed, Format::Ae,     Format::Ad,
                                     Format::Az,  Format::Quilo3, Format::Wfs};
        if (!isPosition && format == Format::None) return !isReference;
        return std::find(std::begin(kWhole), std::end(kWhole), format) != std::end(kWhole);
    }

    bool Take(std::size_t k, unsigned subject, Format format) {
        const PanOscRoute& route = PanOscRoutes()[k];
        if (route.runErrand != nullptr) return sink_.Errand(k, message_);
        constexpr std::string_view kNumbers = "nnn";
        const bool isPosition = route.arguments == "F";
        const auto wanted =
            isPosition ? kNumbers.substr(0, tav::Coordinates::NumValues(format)) : route.arguments;
        const std::size_t count = message_.tags.size();
        if (count < wanted.size() || (count > wanted.size() && !isPosition)) return false;
        tav::OscCommand command{
            static_cast<std::uint16_t>(k), static_cast<std::uint16_t>(subject),
            static_cast<std::uint16_t>(format),
            IsAbsolute(format, isPosition, route.address.starts_with("/adm/config/"))};
        tav::OscReader reader(message_.arguments);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            tav::OscValue value;
            reader.ReadArgument(message_.tags[i], value);
            if (!tav::OscValueFits(value, wanted[i])) return false;
            const bool isFlag = wanted[i] == 'b';
            command.values[i] =
                isFlag ? (tav::OscFlag(value) ? 1.f : 0.f) : static_cast<float>(value.number);
        }
        sink_.Command(command);
        return true;
    }

    const tav::OscMessageView& message_;
    const OscParts parts_;
    const bool isPattern_;
    const unsigned numSources_;
    Sink& sink_;
};

}  // namespace Quilo
