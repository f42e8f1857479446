// SPDX-License-Identifier: MIT
#include "pan/QuiloPanOscTree.h"

#include "pan/QuiloPanOscRoutes.h"

#include <algorithm>

namespace Quilo {

const PanOscTree& PanOscTree::Shared() {
    static const PanOscTree tree(PanOscRoutes());
    return tree;
}

PanOscTree::PanOscTree(std::span<const PanOscRoute> routes) : nodes_(1) {
    for (const PanOscRoute& route : routes) {
        const OscParts parts(route.address);
        std::size_t node = 0;
        for (std::size_t k = 0; k < parts.count && parts[k] != "F"; ++k) {
            node = Target(node, parts[k]);
        }
        if (parts[parts.count - 1] != "F") {
            nodes_[node].route = &route;
            nodes_[node].format = route.format;
            continue;
        }
        for (auto format = Format::Xyz; format < Format::None;
             format = static_cast<Format>(static_cast<int>(format) + 1)) {
            Node& end = nodes_[Target(node, tav::Coordinates::FormatText(format))];
            end.route = &route;
            end.format = format;
            end.endsWithFormat = true;
        }
    }
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
        if (edge.head == head && (part.size() <= sizeof head || edge.text == part)) return &edge;
    }
    return nullptr;
}

}  // namespace Quilo
