// SPDX-License-Identifier: MIT
// How an OSC message finds its row in the table of a panner's addresses.
#pragma once

#include "osc/VelkDspOscAddress.h"
#include "osc/VelkDspOscArguments.h"
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
/// Errand(const PanOscRoute&, PanOscRoute::Format, const OscMessageView&), with the coordinate
/// format that the address or its pattern stands for; None for a row without F.
/// @tparam kPatterns  whether address patterns are looked at; that takes time
template <bool kPatterns, class Sink>
class PanOscResolver {
public:
    PanOscResolver(const tav::OscMessageView& message, unsigned numSources, Sink& sink) noexcept
        : message_(message),
          numSources_(numSources),
          sink_(sink) {}

    /// The text of the number of a source that does not exist, in an address of sources.
    /// Deliberate: such a message is faulty, whatever else it says.
    std::optional<std::string_view> BadSource() const {
        OscPath path(message_.address);
        if (!path.Take().starts_with("source")) return std::nullopt;
        const std::string_view part = path.Take();
        const auto number = OscNumber(part);
        if (number && *number >= 1 && *number <= numSources_) return std::nullopt;
        if (kPatterns && tav::IsOscPattern(part)) return std::nullopt;
        return part;
    }

    /// Whether a part is a pattern and no coordinate format ("dist*=").
    bool HasPatterns() const noexcept {
        for (OscPath path(message_.address); !path.AtEnd();) {
            const std::string_view part = path.Take();
            if (tav::IsOscPattern(part) && !tav::Coordinates::ParseFormat(part)) return true;
        }
        return false;
    }

    /// @return whether any row took the message
    bool Resolve() { return Descend(tree_.Root(), OscPath(message_.address)); }

private:
    using Node = PanOscTree::Node;

    /// From a node on with the rest of the address.
    bool Descend(const Node& node, OscPath path) {
        if (path.AtEnd() || node.endsWithFormat) return node.route != nullptr && Take(node);
        const std::string_view part = path.Take();
        if (node.number != 0) {
            number_ = part;
            return Descend(tree_[node.number], path);
        }
        if (const auto* const edge = Find(node, part)) {
            return Descend(tree_[edge->target], path);
        }
        bool isHandled = false;
        if (kPatterns && tav::IsOscPattern(part)) {
            for (const PanOscTree::Edge& edge : node.edges) {
                if (!tav::OscPartMatches(part, edge.text)) continue;
                isHandled = Descend(tree_[edge.target], path) || isHandled;
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
        if (route.run == nullptr) {
            return ErrandFits(node) && sink_.Errand(route, node.format, message_);
        }
        const std::size_t numWanted = node.arguments.size();
        if (message_.tags.size() > numWanted && !node.endsWithFormat) return false;
        tav::OscCommand command;
        const std::span values(command.values);
        if (!tav::ReadOscNumbers(message_, node.arguments, values.first(numWanted))) return false;
        command.route = static_cast<std::uint16_t>(&route - PanOscRoutes().data());
        command.variant = static_cast<std::uint16_t>(node.format);
        command.isAbsolute = node.isAbsolute && AreSurelyTaken(command.values);
        return ForEachSource([&](unsigned source) {
            command.subject = static_cast<std::uint16_t>(source);
            sink_.Command(command);
        });
    }

    /// Whether no panner refuses the values: others must not take the place of good ones.
    static bool AreSurelyTaken(std::span<const float> values) noexcept {
        return std::ranges::all_of(values, [](float value) { return std::abs(value) <= 1e18f; });
    }

    bool ErrandFits(const Node& node) const {
        if (node.arguments == "?") return true;
        if (node.arguments != "*") return tav::OscArgumentsFit(message_, node.arguments, true);
        return message_.tags.find_first_not_of("fihd") == std::string_view::npos;
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
    const unsigned numSources_;
    Sink& sink_;
    std::optional<std::string_view> number_{};  // the part in the place of an N
};

}  // namespace Quilo
