// SPDX-License-Identifier: MIT
// All OSC addresses of a panner as a tree: an edge for each part between two slashes.
//
// "/source/N/F" and "/source/N/spread" share two edges; an F is an edge for each coordinate format.
// An address is thus looked up part by part, and a pattern is compared with the edges of one place
// only. The tree is made once and a constant afterwards.
#pragma once

#include "math/VelkDspCoordinates.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Quilo {

struct PanOscRoute;

class PanOscTree {
public:
    using Format = tav::Coordinates::Format;

    struct Edge {
        std::uint64_t head;  // see HeadOf
        std::string_view text;
        std::size_t target;  // a node
    };
    struct Node {
        /// The row that an address which ends here belongs to; null for none.
        const PanOscRoute* route = nullptr;
        /// Of the position that the row takes; None for other rows.
        Format format = Format::None;
        /// As the row's; for "F" as many numbers as the format has.
        std::string_view arguments;
        /// Whether the format came from an F. Parts and arguments behind are then passed over.
        bool endsWithFormat = false;
        /// Whether whatever an earlier message of this format set is gone after this one.
        bool isAbsolute = false;
        std::vector<Edge> edges;  // in the order of the table
        std::size_t number = 0;   // the node behind the number of a source; 0 for none
    };

    /// Whether a position in this format says where something is, wherever it was.
    static bool IsWhole(Format format) noexcept;

    /// The same for all panners; the first call makes it.
    static const PanOscTree& Shared();

    const Node& Root() const noexcept TAV_NONBLOCKING { return nodes_.front(); }
    const Node& operator[](std::size_t k) const noexcept TAV_NONBLOCKING { return nodes_[k]; }
    /// The edge with this text; null for none.
    static const Edge* Find(const Node& node, std::string_view part) noexcept TAV_NONBLOCKING;

private:
    explicit PanOscTree(std::span<const PanOscRoute> routes);
    void SetEnd(std::size_t node, const PanOscRoute& route, Format format);
    std::size_t Target(std::size_t node, std::string_view part);
    static std::uint64_t HeadOf(std::string_view part) noexcept TAV_NONBLOCKING;

    std::vector<Node> nodes_;
};

}  // namespace Quilo
