// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulationArcs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

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
constexpr float kLargestLength = 1e7f;

/// The arcs that are still there, as arrays, so that one arc meets all of them quickly.
class ArcField {
public:
    ArcField(std::span<const Ray> speakers, std::vector<Arc>& arcs);

    void RemoveCrossed();

private:
    bool IsDelicate(const Arc& arc) const noexcept;
    void FindSuspects(std::size_t head) noexcept;
    bool Crosses(std::size_t head, std::size_t other) const noexcept;
    void RemoveCrossedBy(std::size_t head);
    void Move(std::size_t to, std::size_t from) noexcept;

    std::span<const Ray> speakers_;
    std::vector<Arc>& arcs_;
    std::vector<CartesianVector> directions_;  // of the loudspeakers, unit length
    std::vector<float> heights_;               // of the loudspeakers, over the plane of the head
    // Per arc: its normal, 0 where it is delicate, so that it stays suspect.
    std::vector<float> x_;
    std::vector<float> y_;
    std::vector<float> z_;
    std::vector<std::int32_t> suspect_;
};

ArcField::ArcField(std::span<const Ray> speakers, std::vector<Arc>& arcs)
    : speakers_(speakers),
      arcs_(arcs),
      heights_(speakers.size()),
      suspect_(arcs.size()) {
    for (const Ray& speaker : speakers) directions_.push_back(Unit(speaker.v));
    for (auto* component : {&x_, &y_, &z_}) component->reserve(arcs.size());
    for (const Arc& arc : arcs) {
        const CartesianVector normal = IsDelicate(arc) ? CartesianVector{} : arc.normal;
        x_.push_back(normal.x);
        y_.push_back(normal.y);
        z_.push_back(normal.z);
    }
}

bool ArcField::IsDelicate(const Arc& arc) const noexcept {
    const auto isExtreme = [](const Ray& end) {
        return !(end.length >= kLeastLength && end.length <= kLargestLength);
    };
    return !(arc.angle >= kLeastArc && arc.angle <= kLargestArc) ||
           isExtreme(speakers_[arc.from]) || isExtreme(speakers_[arc.to]);
}

void ArcField::RemoveCrossed() {
    for (std::size_t head = 0; head < arcs_.size(); ++head) RemoveCrossedBy(head);
}

/// Marks the arcs after the head for which its ends are not surely on one side of their planes.
void ArcField::FindSuspects(std::size_t head) noexcept {
    const CartesianVector p = directions_[arcs_[head].from];
    const CartesianVector q = directions_[arcs_[head].to];
    const float* const x = x_.data();
    const float* const y = y_.data();
    const float* const z = z_.data();
    std::int32_t* const suspect = suspect_.data();
    const std::size_t count = arcs_.size();
    for (std::size_t other = head + 1; other < count; ++other) {
        const float a = x[other] * p.x + y[other] * p.y + z[other] * p.z;
        const float b = x[other] * q.x + y[other] * q.y + z[other] * q.z;
        const bool above = std::min(a, b) > kSure;
        const bool below = std::max(a, b) < -kSure;
        suspect[other] = static_cast<std::int32_t>(!(above | below));
    }
}

bool ArcField::Crosses(std::size_t head, std::size_t other) const noexcept {
    const Arc& a = arcs_[head];
    const Arc& b = arcs_[other];
    const CartesianVector m{x_[other], y_[other], z_[other]};
    const std::array<float, 4> side{Dot(m, directions_[a.from]), -Dot(m, directions_[a.to]),
                                    heights_[b.to], -heights_[b.from]};
    const auto [least, most] = std::ranges::minmax(side);
    if (least < -kSure && most > kSure) return false;
    if (ShareASpeaker(a, b)) return false;
    const CartesianVector axis = Cross({x_[head], y_[head], z_[head]}, m);
    const float opening = std::sqrt(Dot(axis, axis));
    if (opening >= kOpen) {  // neither is delicate
        if (least > kFar * opening || most < -kFar * opening) return true;
        for (const float s : side) {
            if (std::fabs(s) < kNear * opening) return false;
        }
    }
    return ArcsCross(speakers_, a, b);
}

void ArcField::Move(std::size_t to, std::size_t from) noexcept {
    if (to == from) return;
    arcs_[to] = arcs_[from];
    x_[to] = x_[from];
    y_[to] = y_[from];
    z_[to] = z_[from];
}

void ArcField::RemoveCrossedBy(std::size_t head) {
    const CartesianVector n{x_[head], y_[head], z_[head]};
    for (std::size_t s = 0; s < heights_.size(); ++s) heights_[s] = Dot(n, directions_[s]);
    FindSuspects(head);
    std::size_t kept = head + 1;
    for (std::size_t other = head + 1; other < arcs_.size(); ++other) {
        if (suspect_[other] != 0 && Crosses(head, other)) continue;
        Move(kept++, other);
    }
    arcs_.resize(kept);
}

}  // namespace

void RemoveCrossedArcs(std::span<const Ray> speakers, std::vector<Arc>& arcs) {
    // Crossing is mutual, to the last bit: an arc that a shorter one left alone leaves it alone
    // too, so each arc needs to meet only those after it.
    ArcField(speakers, arcs).RemoveCrossed();
}

}  // namespace Quilo
