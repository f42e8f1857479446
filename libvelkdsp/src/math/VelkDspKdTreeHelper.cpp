// SPDX-License-Identifier: MIT
#include "math/VelkDspKdTreeHelper.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>

namespace tav {
namespace {

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

/// One query. A candidate is an integer with the bits of the squared distance above those of the
/// index. Floats from 0 on are ordered like their bits, so comparing candidates compares distances
/// and, for equal ones, indices, in whatever order the points are visited.
class KdTreeHelper::Search {
public:
    static_assert(sizeof(std::size_t) == 8);

    /// @param best  at least 1, one for each neighbour wanted; overwritten with candidates, the
    /// nearest first
    Search(const KdTreeHelper& helper, const NPoint<3>& query, std::span<std::size_t> best)
        : helper_(helper),
          query_(query),
          best_(best) {
        best_.back() = worst_;
    }

    /// @return how many were found
    std::size_t Run() {
        if (helper_.nodes_.empty()) {
            Scan(0, helper_.Size());
        } else {
            Walk();
        }
        return numFound_;
    }

    static std::size_t IndexOf(std::size_t candidate) noexcept { return candidate & 0xffffffff; }
    static float SquaredDistanceOf(std::size_t candidate) noexcept {
        return std::bit_cast<float>(static_cast<std::uint32_t>(candidate >> 32));
    }

private:
    static std::size_t Candidate(float squaredDistance, std::uint32_t index) noexcept {
        return std::size_t{std::bit_cast<std::uint32_t>(squaredDistance)} << 32 | index;
    }

    /// Visits the leaves, on the near side of each splitting plane before the far side.
    void Walk() {
        struct Far {
            float squaredDistance;  // from the query to the plane
            std::uint32_t node;
        };
        Far waiting[32];  // enough: each level halves less than 2^32 points
        std::size_t numWaiting = 0;
        std::uint32_t index = 0;
        for (;;) {
            const Node* node = &helper_.nodes_[index];
            for (; node->upper != 0; node = &helper_.nodes_[index]) {
                const float beyond = query_[node->axis] - node->split;
                const bool below = beyond < 0.f;
                waiting[numWaiting++] = {beyond * beyond, below ? node->upper : index + 1};
                index = below ? index + 1 : node->upper;
            }
            Scan(node->first, node->last);
            // Skips sides whose plane is farther than the worst candidate; rounding is monotonic,
            // so none of their points is nearer. A point at equal distance may have a lower index,
            // hence >.
            do {
                if (numWaiting == 0) return;
                --numWaiting;
            } while (waiting[numWaiting].squaredDistance > SquaredDistanceOf(worst_));
            index = waiting[numWaiting].node;
        }
    }

    void Scan(std::size_t first, std::size_t last) {
        for (; first < last; first += kRun) {
            const std::array<float, kRun> squares = helper_.SquaredDistances(query_, first);
            const std::size_t count = std::min(last - first, kRun);
            for (std::size_t i = 0; i < count; ++i) {
                const std::size_t candidate = Candidate(squares[i], helper_.indices_[first + i]);
                if (candidate < worst_) Insert(candidate);
            }
        }
    }

    /// Insertion from the last place down: each place keeps the worse of two candidates and passes
    /// on the better one. Branches would be unpredictable, so only every eighth place tests whether
    /// to stop.
    void Insert(std::size_t candidate) {
        numFound_ = std::min(numFound_ + 1, best_.size());
        std::size_t passed = candidate;
        std::size_t place = numFound_ - 1;
        for (; place > 0 && (place % 8 != 0 || best_[place - 1] > candidate); --place) {
            const std::size_t before = best_[place - 1];
            const std::size_t better = std::min(before, passed);
            best_[place] = before + passed - better;  // std::max would become a branch
            passed = better;
        }
        best_[place] = passed;
        worst_ = best_.back();
    }

    const KdTreeHelper& helper_;
    NPoint<3> query_;
    std::span<std::size_t> best_;
    std::size_t numFound_ = 0;
    /// The worst of the candidates kept; larger than any while fewer than wanted are found.
    std::size_t worst_ = Candidate(std::numeric_limits<float>::infinity(), ~std::uint32_t{0});
};

KdTreeHelper::KdTreeHelper(const CartesianArray& points, std::size_t treeFrom) {
    std::vector<Entry> entries;
    entries.reserve(points.Size());
    for (const CartesianVector& p : points) {
        entries.push_back({{p.x, p.y, p.z}, static_cast<std::uint32_t>(entries.size())});
    }
    if (entries.size() >= treeFrom && !entries.empty()) Build(entries, 0);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        coordinates_[axis].resize(entries.size() + kRun);
        std::ranges::transform(entries, coordinates_[axis].begin(),
                               [axis](const Entry& entry) { return entry.point[axis]; });
    }
    for (const Entry& entry : entries) indices_.push_back(entry.index);
}

/// @param first  index of the first entry among all entries
void KdTreeHelper::Build(std::span<Entry> entries, std::size_t first) {
    const std::size_t index = nodes_.size();
    const std::size_t last = first + entries.size();
    nodes_.push_back(
        {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last), 0, 0, 0.f});
    if (entries.size() <= kRun) return;

    const std::size_t axis = WidestAxis(entries);
    const std::size_t half = entries.size() / 2;
    std::ranges::nth_element(entries, entries.begin() + static_cast<std::ptrdiff_t>(half), {},
                             [axis](const Entry& entry) { return entry.point[axis]; });
    nodes_[index].axis = static_cast<std::uint32_t>(axis);
    nodes_[index].split = entries[half].point[axis];
    Build(entries.first(half), first);
    nodes_[index].upper = static_cast<std::uint32_t>(nodes_.size());
    Build(entries.subspan(half), first + half);
}

std::array<float, KdTreeHelper::kRun> KdTreeHelper::SquaredDistances(
    const NPoint<3>& query, std::size_t first) const noexcept {
    const float* const x = &coordinates_[0][first];
    const float* const y = &coordinates_[1][first];
    const float* const z = &coordinates_[2][first];
    std::array<float, kRun> squares{};
    for (std::size_t i = 0; i < kRun; ++i) {
        const float dx = x[i] - query[0];
        const float dy = y[i] - query[1];
        const float dz = z[i] - query[2];
        squares[i] = dx * dx + dy * dy + dz * dz;
    }
    return squares;
}

void KdTreeHelper::Nearest(const CartesianVector& query,
                           std::size_t k,
                           std::vector<std::size_t>& indices,
                           std::vector<float>& distances) const {
    const NPoint<3> from{query.x, query.y, query.z};
    indices.resize(std::min(k, Size()));
    distances.resize(indices.size());
    if (indices.empty()) return;
    if (k > 1 && k >= Size()) {
        for (std::size_t i = 0; i < Size(); ++i) {
            const std::size_t index = indices_[i];
            indices[index] = index;
            distances[index] = std::sqrt(SquaredDistances(from, i)[0]);
        }
        return;
    }
    const std::size_t numFound = Search(*this, from, indices).Run();
    indices.resize(numFound);
    distances.resize(numFound);
    for (std::size_t i = 0; i < numFound; ++i) {
        distances[i] = std::sqrt(Search::SquaredDistanceOf(indices[i]));
        indices[i] = Search::IndexOf(indices[i]);
    }
}

std::size_t KdTreeHelper::NearestIndex(const CartesianVector& query) const noexcept {
    std::size_t nearest[1] = {0};  // for a query that is no number
    Search(*this, {query.x, query.y, query.z}, nearest).Run();
    return Search::IndexOf(nearest[0]);
}

}  // namespace tav
