// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulation.h"

#include "laws/QuiloTriangulationArcs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <vector>

namespace Quilo {

using tav::CartesianVector;

namespace {

constexpr float kFirstThreshold = 0.01f;
constexpr float kThresholdGrowth = 5.f;
constexpr std::size_t kMostTriples = 1000000;
constexpr float kLeastAngleSum = 0.00001f;
constexpr float kInsideMargin = -0.001f;

/// Rates all triples of a layout and remembers which pairs a good one joins.
class Rating {
public:
    explicit Rating(const tav::CartesianArray& speakers);

    /// The arcs of all triples above the threshold, by increasing angle; of equal ones the later
    /// pair first.
    std::vector<Arc> ConnectedArcs() const;

    std::span<const Ray> Speakers() const { return rays_; }
    bool IsGood(std::size_t i, std::size_t j, std::size_t k) const;

private:
    void Measure();
    bool ConnectAbove(float threshold);
    std::size_t ConnectWith(std::size_t i, std::size_t j);
    std::size_t At(std::size_t row, std::size_t column) const { return row * count_ + column; }
    std::size_t PairIndex(std::size_t i, std::size_t j) const {
        return i * (2 * count_ - i - 1) / 2 + (j - i - 1);
    }

    std::size_t count_;
    std::vector<Ray> rays_;
    std::vector<float> x_;  // of the loudspeakers
    std::vector<float> y_;
    std::vector<float> z_;
    std::vector<float> angles_;             // count x count, above the diagonal
    std::vector<CartesianVector> normals_;  // one per pair i < j, lexicographic
    std::vector<std::int32_t> connected_;   // count x count, above the diagonal
    float threshold_ = kFirstThreshold;
};

Rating::Rating(const tav::CartesianArray& speakers)
    : count_(speakers.Size()),
      angles_(count_ * count_),
      connected_(count_ * count_) {
    for (const CartesianVector& speaker : speakers) {
        rays_.push_back(MakeRay(speaker));
        x_.push_back(speaker.x);
        y_.push_back(speaker.y);
        z_.push_back(speaker.z);
    }
    Measure();
    while (!ConnectAbove(threshold_)) threshold_ *= kThresholdGrowth;
}

void Rating::Measure() {
    normals_.reserve(count_ * (count_ - 1) / 2);
    for (std::size_t i = 0; i < count_; ++i) {
        for (std::size_t j = i + 1; j < count_; ++j) {
            angles_[At(i, j)] = AngleBetween(rays_[i], rays_[j]);
            normals_.push_back(UnitNormal(rays_[i].v, rays_[j].v));
        }
    }
}

/// False when more than kMostTriples triples are above the threshold.
bool Rating::ConnectAbove(float threshold) {
    threshold_ = threshold;
    std::ranges::fill(connected_, 0);
    std::size_t good = 0;
    for (std::size_t i = 0; i < count_; ++i) {
        for (std::size_t j = i + 1; j < count_; ++j) {
            const std::size_t found = ConnectWith(i, j);
            if (found > 0) connected_[At(i, j)] = 1;
            good += found;
        }
        if (good > kMostTriples) return false;
    }
    return true;
}

/// Connects i and j with every k > j that makes a good triple of them; the number of those.
std::size_t Rating::ConnectWith(std::size_t i, std::size_t j) {
    const CartesianVector n = normals_[PairIndex(i, j)];
    const float threshold = threshold_;
    const float angle = angles_[At(i, j)];
    const float* const anglesI = &angles_[At(i, 0)];
    const float* const anglesJ = &angles_[At(j, 0)];
    const float* const x = x_.data();
    const float* const y = y_.data();
    const float* const z = z_.data();
    std::int32_t* const connectedI = &connected_[At(i, 0)];
    std::int32_t* const connectedJ = &connected_[At(j, 0)];
    const std::size_t count = count_;
    std::int32_t found = 0;
    for (std::size_t k = j + 1; k < count; ++k) {
        const float sum = angle + anglesI[k] + anglesJ[k];
        const float rise = std::fabs(n.x * x[k] + n.y * y[k] + n.z * z[k]);
        const bool good = (sum > kLeastAngleSum) & (rise / sum > threshold);
        const auto mark = static_cast<std::int32_t>(good);
        connectedI[k] |= mark;
        connectedJ[k] |= mark;
        found += mark;
    }
    return static_cast<std::size_t>(found);
}

/// @pre i < j < k
bool Rating::IsGood(std::size_t i, std::size_t j, std::size_t k) const {
    const float sum = angles_[At(i, j)] + angles_[At(i, k)] + angles_[At(j, k)];
    const float rise = std::fabs(Dot(normals_[PairIndex(i, j)], rays_[k].v));
    return sum > kLeastAngleSum && rise / sum > threshold_;
}

std::vector<Arc> Rating::ConnectedArcs() const {
    // A key sorts a pair. Its upper 32 bits are those of the angle, which sort like the angle
    // itself because it is never negative; its lower ones count the pairs backwards, so that of
    // equal angles the later pair comes first.
    constexpr std::uint64_t kLastPair = 0xffffffff;
    std::vector<std::uint64_t> keys;
    for (std::size_t i = 0; i < count_; ++i) {
        for (std::size_t j = i + 1; j < count_; ++j) {
            if (connected_[At(i, j)] == 0) continue;
            const std::uint64_t angle = std::bit_cast<std::uint32_t>(angles_[At(i, j)]);
            keys.push_back(angle << 32 | (kLastPair - (i << 16 | j)));
        }
    }
    std::ranges::sort(keys);
    std::vector<Arc> arcs;
    arcs.reserve(keys.size());
    for (const std::uint64_t key : keys) {
        const std::uint64_t pair = kLastPair - (key & kLastPair);
        const auto i = static_cast<std::uint16_t>(pair >> 16);
        const auto j = static_cast<std::uint16_t>(pair & 0xffff);
        arcs.push_back({i, j, angles_[At(i, j)], normals_[PairIndex(i, j)]});
    }
    return arcs;
}

/// Whether a loudspeaker other than its own three lies inside a triplet.
bool HoldsAnother(const Triplet& triplet, std::span<const Ray> speakers) noexcept {
    const std::array<float, 9>& m = triplet.inverse;
    const auto isInside = [&m](const CartesianVector& p) {
        return m[0] * p.x + m[1] * p.y + m[2] * p.z >= kInsideMargin &&
               m[3] * p.x + m[4] * p.y + m[5] * p.z >= kInsideMargin &&
               m[6] * p.x + m[7] * p.y + m[8] * p.z >= kInsideMargin;
    };
    for (std::size_t s = 0; s < speakers.size(); ++s) {
        if (std::ranges::find(triplet.speakers, s) != triplet.speakers.end()) continue;
        if (isInside(speakers[s].v)) return true;
    }
    return false;
}

/// Per loudspeaker, those of higher index that an arc joins it with, in increasing order.
std::vector<std::vector<std::uint16_t>> NeighboursAbove(std::span<const Arc> arcs,
                                                        std::size_t count) {
    std::vector<std::vector<std::uint16_t>> neighbours(count);
    for (const Arc& arc : arcs) neighbours[arc.from].push_back(arc.to);
    for (auto& above : neighbours) std::ranges::sort(above);
    return neighbours;
}

/// The good triples that have their three arcs and hold no other loudspeaker.
tav::Vector<Triplet> CollectTriplets(const Rating& rating, std::span<const Arc> arcs) {
    const std::span<const Ray> speakers = rating.Speakers();
    const auto neighbours = NeighboursAbove(arcs, speakers.size());
    std::vector<Triplet> triplets;
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        for (const std::uint16_t j : neighbours[i]) {
            for (const std::uint16_t k : neighbours[i]) {
                if (k <= j || !std::ranges::binary_search(neighbours[j], k)) continue;
                if (!rating.IsGood(i, j, k)) continue;
                const Triplet triplet{InverseOfColumns(speakers[i].v, speakers[j].v, speakers[k].v),
                                      {static_cast<std::uint16_t>(i), j, k}};
                if (!HoldsAnother(triplet, speakers)) triplets.push_back(triplet);
            }
        }
    }
    tav::Vector<Triplet> result(triplets.size());
    std::ranges::copy(triplets, result.begin());
    return result;
}

}  // namespace

std::array<float, 9> InverseOfColumns(const CartesianVector& a,
                                      const CartesianVector& b,
                                      const CartesianVector& c) noexcept {
    const CartesianVector bc = Cross(b, c);
    const CartesianVector ca = Cross(c, a);
    const CartesianVector ab = Cross(a, b);
    const float det = Dot(a, bc);
    const float f = det == 0.f ? 0.f : 1.f / det;
    return {bc.x * f, bc.y * f, bc.z * f, ca.x * f, ca.y * f,
            ca.z * f, ab.x * f, ab.y * f, ab.z * f};
}

tav::Vector<Triplet> Triangulate(const tav::CartesianArray& speakers) {
    if (speakers.Size() < 3 || speakers.Size() > kMostSpeakers) return {};
    const Rating rating(speakers);
    std::vector<Arc> arcs = rating.ConnectedArcs();
    RemoveCrossedArcs(rating.Speakers(), arcs);
    return CollectTriplets(rating, arcs);
}

}  // namespace Quilo
