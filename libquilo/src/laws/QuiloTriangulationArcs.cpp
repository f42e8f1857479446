// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulationArcs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

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

// Two arcs cross where the ends of each lie on different sides of the other's plane, in the same
// sense. With unit normals n, m of the planes and unit ends p, q of the first and r, s of the
// second, the four numbers m.p, -m.q, n.s, -n.r all have the same sign. Divided by |n x m| they
// are the sines of the angles between the ends and the axis on which the planes meet. This answers
// what ArcsCross would as long as no number is near a limit:
//   * two numbers of opposite sign, both beyond kSure: the arcs do not cross. The rounding of a
//     normal is at most 2e-7 / sin(0.02) = 1e-5, so both signs are right and the axis is at least
//     kSure off one of the ends, outwards. There the angles add up to too much, or, nearer than
//     0.01, the end undoes the crossing.
//   * |n x m| >= kOpen, so that the sines are right to 1e-5 / kOpen = 5e-4: with all four sines of
//     one sign and beyond kFar the arcs cross; one within kNear undoes the crossing.
// Everything else, and each arc that is nearly 0 or a half circle or has ends of extreme distance
// ("delicate"), is left to ArcsCross.
constexpr float kSure = 1e-3f;
constexpr float kOpen = 0.02f;
constexpr float kNear = 0.008f;
constexpr float kFar = 0.012f;
constexpr float kLeastArc = 0.02f;
constexpr float kLargestArc = 3.1215927f;  // pi - 0.02
constexpr float kLeastLength = 1e-7f;
constexpr float kLargestLength = 1e9f;

struct Layout {
    std::span<const Ray> speakers;
    std::vector<CartesianVector> directions;  // of the loudspeakers, unit length
};

/// An arc and what its comparison with others needs.
struct Head {
    Arc arc;
    CartesianVector normal;      // 0 when the arc is delicate
    std::vector<float> heights;  // of all loudspeakers over its plane
};

bool IsDelicate(const Layout& layout, const Arc& arc) noexcept {
    const auto isExtreme = [](const Ray& end) {
        return !(end.length >= kLeastLength && end.length <= kLargestLength);
    };
    return !(arc.angle >= kLeastArc && arc.angle <= kLargestArc) ||
           isExtreme(layout.speakers[arc.from]) || isExtreme(layout.speakers[arc.to]);
}

/// The arcs of one kind that are still there, in order, as arrays: one arc meets all of them
/// quickly.
class ArcField {
public:
    explicit ArcField(const Layout& layout) : layout_(layout) {}

    /// @param rank  place among the arcs of all kinds
    void Add(const Arc& arc, std::size_t rank);

    /// Beyond all ranks when every arc has had its turn.
    std::size_t NextRank() const noexcept {
        return next_ < arcs_.size() ? ranks_[next_] : std::numeric_limits<std::size_t>::max();
    }
    /// The next arc's turn has come.
    void TakeNext(Head& head);
    /// Removes the arcs that the head crosses, of those whose turn has not come.
    void RemoveCrossedBy(const Head& head);
    /// Removes the arcs for which `isGone`, of those whose turn has not come.
    template <class Predicate>
    void RemoveIf(Predicate isGone);

    std::span<const Arc> Arcs() const noexcept { return arcs_; }

private:
    void FindSuspects(const Head& head) noexcept;
    bool Crosses(const Head& head, std::size_t other) const noexcept;
    void Move(std::size_t to, std::size_t from) noexcept;

    const Layout& layout_;
    std::vector<Arc> arcs_;
    std::vector<std::size_t> ranks_;
    std::size_t next_ = 0;
    // Per arc: its normal, 0 where it is delicate, so that it stays suspect.
    std::vector<float> x_;
    std::vector<float> y_;
    std::vector<float> z_;
    std::vector<std::int32_t> suspect_;
};

void ArcField::Add(const Arc& arc, std::size_t rank) {
    const CartesianVector normal = IsDelicate(layout_, arc) ? CartesianVector{} : arc.normal;
    arcs_.push_back(arc);
    ranks_.push_back(rank);
    x_.push_back(normal.x);
    y_.push_back(normal.y);
    z_.push_back(normal.z);
    suspect_.push_back(0);
}

void ArcField::TakeNext(Head& head) {
    head.arc = arcs_[next_];
    head.normal = {x_[next_], y_[next_], z_[next_]};
    head.heights.resize(layout_.directions.size());
    for (std::size_t s = 0; s < head.heights.size(); ++s) {
        head.heights[s] = Dot(head.normal, layout_.directions[s]);
    }
    ++next_;
}

/// Marks the arcs for which the ends of the head are not surely on one side of their planes.
void ArcField::FindSuspects(const Head& head) noexcept {
    const CartesianVector p = layout_.directions[head.arc.from];
    const CartesianVector q = layout_.directions[head.arc.to];
    const float* const x = x_.data();
    const float* const y = y_.data();
    const float* const z = z_.data();
    std::int32_t* const suspect = suspect_.data();
    const std::size_t count = arcs_.size();
    for (std::size_t other = next_; other < count; ++other) {
        const float a = x[other] * p.x + y[other] * p.y + z[other] * p.z;
        const float b = x[other] * q.x + y[other] * q.y + z[other] * q.z;
        const bool above = std::min(a, b) > kSure;
        const bool below = std::max(a, b) < -kSure;
        suspect[other] = static_cast<std::int32_t>(!(above | below));
    }
}

bool ArcField::Crosses(const Head& head, std::size_t other) const noexcept {
    const Arc& a = head.arc;
    const Arc& b = arcs_[other];
    const CartesianVector m{x_[other], y_[other], z_[other]};
    const std::array<float, 4> side{Dot(m, layout_.directions[a.from]),
                                    -Dot(m, layout_.directions[a.to]), head.heights[b.to],
                                    -head.heights[b.from]};
    const auto [least, most] = std::ranges::minmax(side);
    if (least < -kSure && most > kSure) return false;
    if (ShareASpeaker(a, b)) return false;
    const CartesianVector axis = Cross(head.normal, m);
    const float opening = std::sqrt(Dot(axis, axis));
    if (opening >= kOpen) {  // neither is delicate
        if (least > kFar * opening || most < -kFar * opening) return true;
        for (const float s : side) {
            if (std::fabs(s) < kNear * opening) return false;
        }
    }
    return ArcsCross(layout_.speakers, a, b);
}

void ArcField::Move(std::size_t to, std::size_t from) noexcept {
    if (to == from) return;
    arcs_[to] = arcs_[from];
    ranks_[to] = ranks_[from];
    x_[to] = x_[from];
    y_[to] = y_[from];
    z_[to] = z_[from];
}

template <class Predicate>
void ArcField::RemoveIf(Predicate isGone) {
    std::size_t kept = next_;
    for (std::size_t other = next_; other < arcs_.size(); ++other) {
        if (!isGone(other)) Move(kept++, other);
    }
    arcs_.resize(kept);
}

void ArcField::RemoveCrossedBy(const Head& head) {
    FindSuspects(head);
    RemoveIf([&](std::size_t other) { return suspect_[other] != 0 && Crosses(head, other); });
}

/// Arcs between loudspeakers at exactly the listener's height: their normals are parallel.
bool IsLevel(const Arc& arc) noexcept { return arc.normal.x == 0.f && arc.normal.y == 0.f; }

/// What ArcsCross asks of each of two arcs whose normals are exactly parallel: they have no axis,
/// and the angles to it are azimuths. A ring at the listener's height has as many arcs as pairs,
/// none of which removes the others in any other way.
bool PassesWithoutAxis(std::span<const Ray> speakers, const Arc& arc) noexcept {
    const float from = AngleBetween(speakers[arc.from], Ray{});
    const float to = AngleBetween(speakers[arc.to], Ray{});
    return from > kTolerance && to > kTolerance && LiesOn(arc.angle, from, to);
}

}  // namespace

void RemoveCrossedArcs(std::span<const Ray> speakers, std::vector<Arc>& arcs) {
    // Crossing is mutual, to the last bit: an arc that a shorter one left alone leaves it alone
    // too, so each arc needs to meet only those after it.
    Layout layout{speakers, {}};
    for (const Ray& speaker : speakers) layout.directions.push_back(Unit(speaker.v));
    ArcField level(layout);
    ArcField others(layout);
    for (std::size_t rank = 0; rank < arcs.size(); ++rank) {
        (IsLevel(arcs[rank]) ? level : others).Add(arcs[rank], rank);
    }
    const auto passes = [&](const Arc& arc) { return PassesWithoutAxis(speakers, arc); };
    Head head;
    while (std::min(level.NextRank(), others.NextRank()) < arcs.size()) {
        const bool isLevel = level.NextRank() < others.NextRank();
        (isLevel ? level : others).TakeNext(head);
        others.RemoveCrossedBy(head);
        if (!isLevel) {
            level.RemoveCrossedBy(head);
        } else if (passes(head.arc)) {
            level.RemoveIf([&](std::size_t other) {
                const Arc& arc = level.Arcs()[other];
                return !ShareASpeaker(head.arc, arc) && passes(arc);
            });
        }
    }
    arcs.assign(level.Arcs().begin(), level.Arcs().end());
    arcs.insert(arcs.end(), others.Arcs().begin(), others.Arcs().end());
}

}  // namespace Quilo
