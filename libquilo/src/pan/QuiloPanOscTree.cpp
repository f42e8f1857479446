// SPDX-License-Identifier: MIT
#include "pan/QuiloPanOscTree.h"

#include "pan/QuiloPanOscRoutes.h"

#include <algorithm>

namespace Quilo {

namespace {

using Format = tav::Coordinates::Format;

/// A spread or a mute always is; what later positions refer to is not, so that each one counts.
bool IsAbsolute(const PanOscRoute& route, Format format) {
    if (format == Format::None) return !route.address.starts_with("/adm/config/");
    return PanOscTree::IsWhole(format);
}

}  // namespace

bool PanOscTree::IsWhole(Format format) noexcept {
    constexpr Format kWhole[] = {Format::Xyz, Format::Xy, Format::Ade,    Format::Aed, Format::Ae,
                                 Format::Ad,  Format::Az, Format::Quilo3, Format::Wfs};
    return std::ranges::find(kWhole, format) != std::end(kWhole);
}

const PanOscTree& PanOscTree::Shared() {
    static const PanOscTree tree(PanOscRoutes());
    return tree;
}

PanOscTree::PanOscTree(std::span<const PanOscRoute> routes) : nodes_(1) {
    for (const PanOscRoute& route : routes) {
        std::size_t node = 0;
        OscPath path(route.address);
        std::string_view part = path.Take();
        for (; !path.AtEnd(); part = path.Take()) node = Target(node, part);
        if (part != "F") {
            SetEnd(Target(node, part), route, route.format);
            continue;
        }
        for (auto format = Format::Xyz; format < Format::None;
             format = static_cast<Format>(static_cast<int>(format) + 1)) {
            const std::size_t end = Target(node, tav::Coordinates::FormatText(format));
            SetEnd(end, route, format);
            nodes_[end].endsWithFormat = true;
        }
    }
}

void PanOscTree::SetEnd(std::size_t node, const PanOscRoute& route, Format format) {
    constexpr std::string_view kNumbers = "nnn";
    Node& end = nodes_[node];
    end.route = &route;
    end.format = format;
    end.arguments = route.arguments == "F" ? kNumbers.substr(0, tav::Coordinates::NumValues(format))
                                           : route.arguments;
    end.isAbsolute = IsAbsolute(route, format);
}

/// The node behind a part, which is made if it is new.
std::size_t PanOscTree::Target(std::size_t node, std::string_view part) {
    if (const Edge* const edge = Find(nodes_[node], part)) return edge->target;
    if (part == "N" && nodes_[node].number != 0) return nodes_[node].number;
    const std::size_t target = nodes_.size();
    if (part == "N") {
        nodes_[node].number = target;
    } else {
        nodes_[node].edges.push_back({HeadOf(part), part, target});
    }
    nodes_.emplace_back();
    return target;
}

/// The first eight characters as one number, so that most comparisons are a single one.
std::uint64_t PanOscTree::HeadOf(std::string_view part) noexcept TAV_NONBLOCKING {
    std::uint64_t head = 0;
    for (const char c : part.substr(0, sizeof head)) {
        head = head << 8 | static_cast<unsigned char>(c);
    }
    return head;
}

const PanOscTree::Edge* PanOscTree::Find(const Node& node,
                                         std::string_view part) noexcept TAV_NONBLOCKING {
    const std::uint64_t head = HeadOf(part);
    for (const Edge& edge : node.edges) {
        if (edge.head != head || edge.text.size() != part.size()) continue;
        if (part.size() <= sizeof head || edge.text == part) return &edge;
    }
    return nullptr;
}

}  // namespace Quilo
