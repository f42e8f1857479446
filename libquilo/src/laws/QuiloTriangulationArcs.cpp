// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulationArcs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Quilo {

using tav::CartesianVector;

namespace {

constexpr float kTolerance = 0.01f;  // radians: ends this near to a crossing undo it

CartesianVector Unit(const CartesianVector& v) noexcept {
    const float length = std::sqrt(Dot(v, v));
    if (!(length > 0.f)) return v;
    return {v.x / length, v.y / length, v.z / length};
}

float AzimuthMagnitude(const CartesianVector& v) noexcept {
    const double azimuth = std::atan2(static_cast<double>(v.y), static_cast<double>(v.x));
    return std::fabs(static_cast<float>(azimuth));
}

/// Whether the point `c` lies on the arc: its angles to the two ends add up to the arc's.
bool LiesOn(float arcAngle, float fromAngle, float toAngle) noexcept {
    return std::fabs(arcAngle - (toAngle + fromAngle)) <= kTolerance;
}

bool ShareASpeaker(const Arc& a, const Arc& b) noexcept {
    return a.from == b.from || a.from == b.to || a.to == b.from || a.to == b.to;
}

}  // namespace

float Dot(const CartesianVector& a, const CartesianVector& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

CartesianVector Cross(const CartesianVector& a, const CartesianVector& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Ray MakeRay(const CartesianVector& v) noexcept { return {v, std::sqrt(Dot(v, v))}; }

CartesianVector UnitNormal(const CartesianVector& a, const CartesianVector& b) noexcept {
    return Unit(Cross(a, b));
}

float AngleBetween(const Ray& a, const Ray& b) noexcept {
    if (a.length == 0.f) return b.length == 0.f ? 0.f : AzimuthMagnitude(b.v);
    if (b.length == 0.f) return AzimuthMagnitude(a.v);
    const float cosine = Dot(a.v, b.v) / (a.length * b.length);
    // Comparisons in this order turn the cosine of an overflow, which is no number, into 1.
    const float clamped = cosine < 1.f ? (cosine > -1.f ? cosine : -1.f) : 1.f;
    return static_cast<float>(std::acos(static_cast<double>(clamped)));
}

bool ArcsCross(std::span<const Ray> speakers, const Arc& a, const Arc& b) noexcept {
    const Ray point = MakeRay(Unit(Cross(a.normal, b.normal)));
    const Ray opposite{{-point.v.x, -point.v.y, -point.v.z}, point.length};
    const std::array<const Ray*, 4> ends{&speakers[a.from], &speakers[a.to], &speakers[b.from],
                                         &speakers[b.to]};
    std::array<float, 4> toPoint{};
    std::array<float, 4> toOpposite{};
    for (std::size_t end = 0; end < ends.size(); ++end) {
        toPoint[end] = AngleBetween(*ends[end], point);
        toOpposite[end] = AngleBetween(*ends[end], opposite);
        if (toPoint[end] <= kTolerance || toOpposite[end] <= kTolerance) return false;
    }
    const auto onBoth = [&](const std::array<float, 4>& to) {
        return LiesOn(a.angle, to[0], to[1]) && LiesOn(b.angle, to[2], to[3]);
    };
    return onBoth(toPoint) || onBoth(toOpposite);
}

namespace {

// The planes of two arcs meet on an axis, and the arcs cross where it pierces both. Most arcs
// surely do not; they are sorted out many at a time, and ArcsCross is asked about the others alone:
//   * An arc below kLeastArc crosses nothing: a point more than 0.01 off both its ends is on a way
//     that is more than 0.01 longer.
//   * With unit normals n, m of the planes and unit ends p, q of the first arc and r, s of the
//     second, m.p, -m.q, n.s, -n.r over |n x m| are the sines of the angles between the ends and
//     the axis, of one sign where it pierces both. The rounding of a normal is at most
//     2e-7 / sin(kLeastArc) = 2e-5, so with |n x m| >= kOpen they are right to 1e-3: one within
//     kNear undoes the crossing, and two beyond it, of opposite sign, are too far outwards.
//   * Else, and with every axis: where an arc lets a way be 0.01 longer, half of that way leads
//     from its middle to the furthest point. An axis kReach beyond half an arc misses it.
//   * Two planes whose axis vanishes in rounding are measured by azimuths, each arc for itself.
// Each arc that is nearly a half circle or has ends of extreme distance is left to ArcsCross.
constexpr float kOpen = 0.02f;
constexpr float kNear = 0.008f;
constexpr float kReach = 0.008f;
constexpr float kLeastSquare = 1e-30f;  // a sum of squares below has lost its digits
constexpr float kLeastArc = 0.0099f;
constexpr float kLargestArc = 3.1215927f;  // pi - 0.02
constexpr float kLeastLength = 1e-7f;
constexpr float kLargestLength = 1e9f;

/// A loudspeaker as the end of many arcs.
struct End {
    CartesianVector direction;  // unit length
    float azimuth = 0;          // what AngleBetween makes of its angle to no direction
    bool isExtreme = false;
};

std::vector<End> MakeEnds(std::span<const Ray> speakers) {
    std::vector<End> ends;
    for (const Ray& speaker : speakers) {
        const bool isFine = speaker.length >= kLeastLength && speaker.length <= kLargestLength;
        ends.push_back({Unit(speaker.v), AngleBetween(speaker, Ray{}), !isFine});
    }
    return ends;
}

/// An arc, and what its comparison with others needs.
struct Head {
    Arc arc;
    bool passesWithoutAxis = false;  // what ArcsCross asks of it where the planes have no axis
    CartesianVector normal;          // 0: left to ArcsCross
    CartesianVector from;            // the ends, unit length
    CartesianVector to;
    float reach = 0;  // square of the least part of an axis along from + to
};

Head MakeHead(std::span<const End> ends, const Arc& arc) noexcept {
    const End& from = ends[arc.from];
    const End& to = ends[arc.to];
    const bool passes = from.azimuth > kTolerance && to.azimuth > kTolerance &&
                        LiesOn(arc.angle, from.azimuth, to.azimuth);
    Head head{arc, passes, {}, from.direction, to.direction, 0};
    if (from.isExtreme || to.isExtreme || !(arc.angle <= kLargestArc)) return head;
    const float half = 0.5f * arc.angle;
    const float reach = 2.f * std::cos(half) * std::cos(half + kReach);
    head.normal = arc.normal;
    head.reach = reach * reach;
    return head;
}

/// The arcs of one kind that are still there, by rank, as arrays: one arc meets all of them
/// quickly.
class ArcField {
public:
    /// @param heads  of all kinds; the place of one is its rank
    explicit ArcField(std::span<const Head> heads) : heads_(heads) {}

    void Add(std::size_t rank);

    /// Beyond all ranks when every arc has had its turn.
    std::size_t NextRank() const noexcept {
        return next_ < ranks_.size() ? ranks_[next_] : heads_.size();
    }
    /// The next arc's turn has come.
    void TakeNext() noexcept { ++next_; }
    /// Removes the arcs that the head crosses, of those whose turn has not come.
    void RemoveCrossedBy(const Head& head, std::span<const Ray> speakers);
    /// The same for a field and a head that have one plane.
    void RemoveLevelWith(const Head& head);

    std::span<const std::size_t> Ranks() const noexcept { return ranks_; }

private:
    /// Positions in three arrays.
    struct Columns {
        std::vector<float> x;
        std::vector<float> y;
        std::vector<float> z;

        void Add(const CartesianVector& v) {
            x.push_back(v.x);
            y.push_back(v.y);
            z.push_back(v.z);
        }
        void Move(std::size_t to, std::size_t from) noexcept {
            x[to] = x[from];
            y[to] = y[from];
            z[to] = z[from];
        }
    };

    void FindSuspects(const Head& head) noexcept;
    template <class Predicate>
    void RemoveIf(Predicate isGone);
    void Move(std::size_t to, std::size_t from) noexcept;

    std::span<const Head> heads_;
    std::vector<std::size_t> ranks_;
    std::size_t next_ = 0;
    // out of the heads
    Columns normals_;
    Columns froms_;
    Columns tos_;
    std::vector<float> reaches_;
    std::vector<std::int32_t> suspect_;
};

void ArcField::Add(std::size_t rank) {
    const Head& head = heads_[rank];
    ranks_.push_back(rank);
    normals_.Add(head.normal);
    froms_.Add(head.from);
    tos_.Add(head.to);
    reaches_.push_back(head.reach);
    suspect_.push_back(0);
}

/// Marks the arcs that the head may cross.
void ArcField::FindSuspects(const Head& head) noexcept {
    const CartesianVector n = head.normal;
    const CartesianVector p = head.from;
    const CartesianVector q = head.to;
    const float headReach = head.reach;
    const float* const mx = normals_.x.data();
    const float* const my = normals_.y.data();
    const float* const mz = normals_.z.data();
    const float* const rx = froms_.x.data();
    const float* const ry = froms_.y.data();
    const float* const rz = froms_.z.data();
    const float* const sx = tos_.x.data();
    const float* const sy = tos_.y.data();
    const float* const sz = tos_.z.data();
    const float* const reach = reaches_.data();
    std::int32_t* const suspect = suspect_.data();
    const std::size_t count = ranks_.size();
    for (std::size_t k = next_; k < count; ++k) {
        const float x = n.y * mz[k] - n.z * my[k];
        const float y = n.z * mx[k] - n.x * mz[k];
        const float z = n.x * my[k] - n.y * mx[k];
        const float square = x * x + y * y + z * z;

        const float mp = mx[k] * p.x + my[k] * p.y + mz[k] * p.z;
        const float mq = -(mx[k] * q.x + my[k] * q.y + mz[k] * q.z);
        const float ns = n.x * sx[k] + n.y * sy[k] + n.z * sz[k];
        const float nr = -(n.x * rx[k] + n.y * ry[k] + n.z * rz[k]);
        const float least = std::min(std::min(mp, mq), std::min(ns, nr));
        const float most = std::max(std::max(mp, mq), std::max(ns, nr));
        const float tooNear = kNear * kNear * square;
        const bool between = ((least > 0.f) & (least * least >= tooNear)) |
                             ((most < 0.f) & (most * most >= tooNear));

        const float a = x * (p.x + q.x) + y * (p.y + q.y) + z * (p.z + q.z);
        const float b = x * (rx[k] + sx[k]) + y * (ry[k] + sy[k]) + z * (rz[k] + sz[k]);
        const bool pierces =
            (a * b >= 0.f) & (a * a >= square * headReach) & (b * b >= square * reach[k]);
        const bool isOpen = square >= kOpen * kOpen;
        const bool isLost = !(square >= kLeastSquare);
        suspect[k] = static_cast<std::int32_t>(isLost | (pierces & (between | !isOpen)));
    }
}

bool Crosses(std::span<const Ray> speakers, const Head& a, const Head& b) noexcept {
    if (ShareASpeaker(a.arc, b.arc)) return false;
    const CartesianVector axis = Cross(a.arc.normal, b.arc.normal);
    if (Dot(axis, axis) == 0.f) return a.passesWithoutAxis && b.passesWithoutAxis;
    return ArcsCross(speakers, a.arc, b.arc);
}

void ArcField::Move(std::size_t to, std::size_t from) noexcept {
    if (to == from) return;
    ranks_[to] = ranks_[from];
    for (Columns* columns : {&normals_, &froms_, &tos_}) columns->Move(to, from);
    reaches_[to] = reaches_[from];
}

template <class Predicate>
void ArcField::RemoveIf(Predicate isGone) {
    std::size_t kept = next_;
    for (std::size_t other = next_; other < ranks_.size(); ++other) {
        if (!isGone(other)) Move(kept++, other);
    }
    ranks_.resize(kept);
}

void ArcField::RemoveCrossedBy(const Head& head, std::span<const Ray> speakers) {
    FindSuspects(head);
    RemoveIf([&](std::size_t other) {
        return suspect_[other] != 0 && Crosses(speakers, head, heads_[ranks_[other]]);
    });
}

void ArcField::RemoveLevelWith(const Head& head) {
    if (!head.passesWithoutAxis) return;
    RemoveIf([&](std::size_t other) {
        const Head& met = heads_[ranks_[other]];
        return met.passesWithoutAxis && !ShareASpeaker(head.arc, met.arc);
    });
}

/// Arcs between loudspeakers at exactly the listener's height: their planes are equal. A ring there
/// has as many arcs as pairs, none of which removes the others in any other way.
bool IsLevel(const Arc& arc) noexcept { return arc.normal.x == 0.f && arc.normal.y == 0.f; }

}  // namespace

void RemoveCrossedArcs(std::span<const Ray> speakers, std::vector<Arc>& arcs) {
    // Crossing is mutual, to the last bit: an arc that a shorter one left alone leaves it alone
    // too, so each arc needs to meet only those after it.
    const std::vector<End> ends = MakeEnds(speakers);
    std::vector<Head> heads;
    heads.reserve(arcs.size());
    for (const Arc& arc : arcs) heads.push_back(MakeHead(ends, arc));
    std::erase_if(arcs, [](const Arc& arc) { return arc.angle >= kLeastArc; });
    ArcField level(heads);
    ArcField others(heads);
    for (std::size_t rank = arcs.size(); rank < heads.size(); ++rank) {
        (IsLevel(heads[rank].arc) ? level : others).Add(rank);
    }
    while (std::min(level.NextRank(), others.NextRank()) < heads.size()) {
        const bool isLevel = level.NextRank() < others.NextRank();
        ArcField& own = isLevel ? level : others;
        const Head& head = heads[own.NextRank()];
        own.TakeNext();
        others.RemoveCrossedBy(head, speakers);
        if (isLevel) {
            level.RemoveLevelWith(head);
        } else {
            level.RemoveCrossedBy(head, speakers);
        }
    }
    for (const ArcField* field : {&level, &others}) {
        for (const std::size_t rank : field->Ranks()) arcs.push_back(heads[rank].arc);
    }
}

}  // namespace Quilo
