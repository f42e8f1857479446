// SPDX-License-Identifier: MIT
#include "math/VelkDspKdTreeHelper.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace tav {
namespace {

constexpr std::size_t kLeafPoints = 8;

float SquaredDistance(const NPoint<3>& a, const NPoint<3>& b) noexcept {
    const float dx = a[0] - b[0];
    const float dy = a[1] - b[1];
    const float dz = a[2] - b[2];
    return dx * dx + dy * dy + dz * dz;
}

template <class Entries>
std::size_t WidestAxis(const Entries& entries) {
    std::size_t widest = 0;
    float most = -1.f;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto coordinate = [axis](const auto& entry) { return entry.point[axis]; };
        const auto [low, high] = std::ranges::minmax_element(entries, {}, coordinate);
        const float width = coordinate(*high) - coordinate(*low);
        if (width > most) {
            most = width;
            widest = axis;
        }
    }
    return widest;
}

}  // namespace

/// One query: the best candidates so far, nearest first, in the caller's vectors.
class KdTreeHelper::Search {
public:
    /// @param indices, distances  overwritten; distances are squared until Finish
    Search(const KdTreeHelper& helper,
           const NPoint<3>& query,
           std::size_t k,
           std::vector<std::size_t>& indices,
           std::vector<float>& distances)
        : helper_(helper),
          query_(query),
          wanted_(k),
          indices_(indices),
          distances_(distances) {
        indices_.clear();
        distances_.clear();
    }

    void Run() {
        if (helper_.nodes_.empty()) {
            Scan(helper_.points_);
        } else {
            Visit(0);
        }
        for (float& distance : distances_) distance = std::sqrt(distance);
    }

private:
    void Scan(std::span<const Entry> entries) {
        for (const Entry& entry : entries) {
            const float squaredDistance = SquaredDistance(entry.point, query_);
            if (squaredDistance <= worst_) Offer(squaredDistance, entry.index);
        }
    }

    void Offer(float squaredDistance, std::size_t index) {
        // A tie goes to the lower index, whatever the order in which the points are met.
        const auto isBefore = [&](std::size_t place) {
            return squaredDistance < distances_[place] ||
                   (squaredDistance == distances_[place] && index < indices_[place]);
        };
        if (indices_.size() < wanted_) {
            indices_.push_back(index);
            distances_.push_back(squaredDistance);
        } else if (!isBefore(wanted_ - 1)) {
            return;
        }
        std::size_t place = indices_.size() - 1;
        for (; place > 0 && isBefore(place - 1); --place) {
            indices_[place] = indices_[place - 1];
            distances_[place] = distances_[place - 1];
        }
        indices_[place] = index;
        distances_[place] = squaredDistance;
        if (indices_.size() == wanted_) worst_ = distances_.back();
    }

    void Visit(std::uint32_t index) {
        const Node& node = helper_.nodes_[index];
        if (node.upper == 0) {
            Scan(std::span(helper_.points_).subspan(node.first, node.last - node.first));
            return;
        }
        const float beyond = query_[node.axis] - node.split;
        Visit(beyond < 0.f ? index + 1 : node.upper);
        // Rounding keeps order, so no point over there is nearer than the plane; one that is as
        // near may win the tie.
        if (beyond * beyond <= worst_) {
            Visit(beyond < 0.f ? node.upper : index + 1);
        }
    }

    const KdTreeHelper& helper_;
    NPoint<3> query_;
    std::size_t wanted_;
    std::vector<std::size_t>& indices_;
    std::vector<float>& distances_;
    float worst_ = std::numeric_limits<float>::infinity();  // of `wanted_` candidates
};

KdTreeHelper::KdTreeHelper(const CartesianArray& points, std::size_t treeFrom) {
    points_.reserve(points.Size());
    for (const CartesianVector& p : points) points_.push_back({{p.x, p.y, p.z}, points_.size()});
    if (points_.size() >= treeFrom && !points_.empty()) Build(0, points_.size());
}

void KdTreeHelper::Build(std::size_t first, std::size_t last) {
    const std::size_t index = nodes_.size();
    nodes_.push_back(
        {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last), 0, 0, 0.f});
    if (last - first <= kLeafPoints) return;

    const std::span<Entry> entries = std::span(points_).subspan(first, last - first);
    const std::size_t axis = WidestAxis(entries);
    const std::size_t half = entries.size() / 2;
    std::ranges::nth_element(entries, entries.begin() + static_cast<std::ptrdiff_t>(half), {},
                             [axis](const Entry& entry) { return entry.point[axis]; });
    nodes_[index].axis = static_cast<std::uint32_t>(axis);
    nodes_[index].split = entries[half].point[axis];
    Build(first, first + half);
    nodes_[index].upper = static_cast<std::uint32_t>(nodes_.size());
    Build(first + half, last);
}

void KdTreeHelper::Nearest(const CartesianVector& query,
                           std::size_t k,
                           std::vector<std::size_t>& indices,
                           std::vector<float>& distances) const {
    const NPoint<3> from{query.x, query.y, query.z};
    if (k > 1 && k >= Size()) {
        indices.resize(Size());
        distances.resize(Size());
        for (const Entry& entry : points_) {
            indices[entry.index] = entry.index;
            distances[entry.index] = std::sqrt(SquaredDistance(entry.point, from));
        }
        return;
    }
    Search search(*this, from, std::min(k, Size()), indices, distances);
    if (k > 0 && Size() > 0) search.Run();
}

}  // namespace tav
