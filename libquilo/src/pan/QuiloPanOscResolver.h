// SPDX-License-Identifier: MIT
// How an OSC message finds its row in the table of a panner's addresses.
#pragma once

#include "osc/VelkDspOscAddress.h"
#include "osc/VelkDspOscReader.h"
#include "pan/QuiloPanOscRoutes.h"
#include "pan/QuiloPanOscTree.h"
#include "processors/VelkDspOscQueue.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Quilo {

/// Finds what one message is about. `Sink` has Command(const OscCommand&) and
/// Errand(const PanOscRoute&, const OscMessageView&).
/// @tparam kPatterns  whether address patterns are looked at; that takes time
template <bool kPatterns, class Sink>
class PanOscResolver {
public:
    PanOscResolver(const tav::OscMessageView& message, unsigned numSources, Sink& sink) noexcept
        : message_(message),
          parts_(message.address),
          numSources_(numSources),
          sink_(sink) {}

    /// The text of the number of a source that does not exist, in an address of sources.
    /// Deliberate: such a message is faulty, whatever else it says.
    std::optional<std::string_view> BadSource() const {
        if (!parts_[0].starts_with("source")) return std::nullopt;
        const auto number = OscNumber(parts_[1]);
        if (number && *number >= 1 && *number <= numSources_) return std::nullopt;
        if (kPatterns && tav::IsOscPattern(parts_[1])) return std::nullopt;
        return parts_[1];
    }

    /// Whether a part is a pattern and no coordinate format ("dist*=").
    bool HasPatterns() const noexcept {
        return std::any_of(parts_.parts.begin(), parts_.parts.end(), [](std::string_view part) {
            return tav::IsOscPattern(part) && !tav::Coordinates::ParseFormat(part);
        });
    }

    /// @return whether any row took the message
    bool Resolve() { return Descend(tree_.Root(), 0); }

private:
    using Format = tav::Coordinates::Format;
    using Node = PanOscTree::Node;

    /// From a node on with the part of this number.
    bool Descend(const Node& node, std::size_t depth) {
        if (depth == parts_.count || node.endsWithFormat) {
            return node.route != nullptr && Take(node);
        }
        const std::string_view part = parts_[depth];
        if (node.number != 0) {
            number_ = part;
            return Descend(tree_[node.number], depth + 1);
        }
        if (const auto* const edge = Find(node, part)) {
            return Descend(tree_[edge->target], depth + 1);
        }
        bool isHandled = false;
        if (kPatterns && tav::IsOscPattern(part)) {
            for (const PanOscTree::Edge& edge : node.edges) {
                if (!tav::OscPartMatches(part, edge.text)) continue;
                isHandled = Descend(tree_[edge.target], depth + 1) || isHandled;
            }
        }
        return isHandled;
    }

    const PanOscTree::Edge* Find(const Node& node, std::string_view part) const {
        if (const auto* const edge = PanOscTree::Find(node, part)) return edge;
        if (&node != &tree_.Root()) return nullptr;
        // Deliberate: "/sources/1/xyz" is an address of sources, too, and likewise "/speakersAll".
        for (const std::string_view open : {"source", "speakers"}) {
            if (part.starts_with(open)) return PanOscTree::Find(node, open);
        }
        return nullptr;
    }

    bool Take(const Node& node) {
        const PanOscRoute& route = *node.route;
        if (route.runErrand != nullptr) return sink_.Errand(route, message_);
        tav::OscCommand command;
        if (!ReadArguments(node, command)) return false;
        command.route = static_cast<std::uint16_t>(&route - PanOscRoutes().data());
        command.variant = static_cast<std::uint16_t>(node.format);
        command.isAbsolute = IsAbsolute(node) && AreSurelyTaken(command.values);
        return ForEachSource([&](unsigned source) {
            command.subject = static_cast<std::uint16_t>(source);
            sink_.Command(command);
        });
    }

    bool ReadArguments(const Node& node, tav::OscCommand& command) const {
        constexpr std::string_view kNumbers = "nnn";
        const auto wanted = node.endsWithFormat
                                ? kNumbers.substr(0, tav::Coordinates::NumValues(node.format))
                                : node.route->arguments;
        const std::size_t count = message_.tags.size();
        if (count < wanted.size() || (count > wanted.size() && !node.endsWithFormat)) return false;
        tav::OscReader reader(message_.arguments);
        for (std::size_t k = 0; k < wanted.size(); ++k) {
            tav::OscValue value;
            reader.ReadArgument(message_.tags[k], value);
            if (!tav::OscValueFits(value, wanted[k])) return false;
            const bool isFlag = wanted[k] == 'b';
            command.values[k] =
                isFlag ? (tav::OscFlag(value) ? 1.f : 0.f) : static_cast<float>(value.number);
        }
        return true;
    }

    /// Whether no panner refuses the values: others must not take the place of good ones.
    static bool AreSurelyTaken(std::span<const float> values) noexcept {
        return std::ranges::all_of(values, [](float value) { return std::abs(value) <= 1e18f; });
    }

    /// Whether a position says where the source is, wherever it was. A spread or a mute always
    /// does; what later positions refer to does not, so that each one counts.
    static bool IsAbsolute(const Node& node) noexcept {
        constexpr Format kWhole[] = {Format::Xyz, Format::Xy,     Format::Ade,
                                     Format::Aed, Format::Ae,     Format::Ad,
                                     Format::Az,  Format::Quilo3, Format::Wfs};
        if (node.format == Format::None) return !node.route->address.starts_with("/adm/config/");
        return std::find(std::begin(kWhole), std::end(kWhole), node.format) != std::end(kWhole);
    }

    /// Calls `use` with the index of each source that the address names, or once with 0 when its
    /// row has no N.  @return whether it was called
    template <class Use>
    bool ForEachSource(const Use& use) const {
        if (!number_) return use(0), true;
        if (const auto number = OscNumber(*number_)) {
            const bool isThere = *number >= 1 && *number <= numSources_;
            if (isThere) use(*number - 1);
            return isThere;
        }
        bool isAny = false;
        if (kPatterns && tav::IsOscPattern(*number_)) {
            for (unsigned n = 1; n <= numSources_; ++n) {
                if (!tav::OscPartMatches(*number_, std::to_string(n))) continue;
                use(n - 1);
                isAny = true;
            }
        }
        return isAny;
    }

    const PanOscTree& tree_ = PanOscTree::Shared();
    const tav::OscMessageView& message_;
    const OscParts parts_;
    const unsigned numSources_;
    Sink& sink_;
    std::optional<std::string_view> number_{};  // the part in the place of an N
};

}  // namespace Quilo
