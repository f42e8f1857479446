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

// Most pairs of arcs surely do not cross. They are sorted out many at a time, by products and
// sums; ArcsCross, with its arc cosines, is asked about the others alone.
//
// Two arcs, from p to q and from r to s (unit vectors), lie in planes with the unit normals n along
// p x q and m along r x s. The planes meet in the axis c = n x m, whose length is the sine of the
// angle between them. Seen from outside the sphere, with c pointing at the reader:
//
//               r
//               |            m.p = |c| sin(from p to c)     -m.q = |c| sin(from c to q)
//        p -----c----> q    -n.r = |c| sin(from r to c)      n.s = |c| sin(from c to s)
//               |
//               v            All four are positive where both arcs pass through c, all four are
//               s            negative where both pass through -c.
//
// ArcsCross asks two things of c, or of -c: each of the four ends is more than 0.01 rad away, and
// the way over it, d(p, c) + d(c, q), is at most 0.01 longer than the arc. So two arcs do not cross
//   1. where one is shorter than kLeastArc: the way is longer than 0.02 if both ends are far
//   enough;
//   2. where |c| >= kOpen and one of the four sines is below kNear, so that an end is too near, or
//      two have different signs: then the axis is kNear outside of an arc, and the way 2 kNear too
//      long. (Rounding turns a normal by 2e-7 / sin(kLeastArc) = 2e-5 at most, which over kOpen
//      changes a sine by 0.001; hence kNear = 0.008 instead of 0.01.)
//   3. where c is more than kReach beyond the end of an arc, measured from its middle. The vector
//      p + q points to the middle and is 2 cos(arc / 2) long, so that this reads
//      |c.(p + q)| < |c| 2 cos(arc / 2) cos(arc / 2 + kReach). (A point over which the way is 0.01
//      longer is at most arc / 2 + 0.005 from the middle.)
// ArcsCross is always asked where the length of c is lost in rounding, about arcs that are nearly
// half circles, and about loudspeakers at extreme distances. Where c is exactly 0 it measures the
// azimuths of the ends, so that each arc passes or fails by itself (passesWithoutAxis).
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
struct PreparedArc {
    Arc arc;
    bool passesWithoutAxis = false;  // whether ArcsCross finds a c of 0 on it
    CartesianVector normal;          // 0 where ArcsCross is always asked
    CartesianVector from;            // the ends, unit length
    CartesianVector to;
    float reach = 0;  // square of the least (c.(p + q)) / |c| in rule 3
};

PreparedArc PrepareArc(std::span<const End> ends, const Arc& arc) noexcept {
    const End& from = ends[arc.from];
    const End& to = ends[arc.to];
    const bool passes = from.azimuth > kTolerance && to.azimuth > kTolerance &&
                        LiesOn(arc.angle, from.azimuth, to.azimuth);
    PreparedArc prepared{arc, passes, {}, from.direction, to.direction, 0};
    if (from.isExtreme || to.isExtreme || !(arc.angle <= kLargestArc)) return prepared;
    const float half = 0.5f * arc.angle;
    const float reach = 2.f * std::cos(half) * std::cos(half + kReach);
    prepared.normal = arc.normal;
    prepared.reach = reach * reach;
    return prepared;
}

/// Arcs of one kind that are still there, in the order of their ranks, as arrays: so one arc is
/// compared with all of them quickly. The rank of an arc is its place by increasing angle.
class ArcField {
public:
    /// @param arcs  of all kinds, by rank
    explicit ArcField(std::span<const PreparedArc> arcs) : arcs_(arcs) {}

    void Add(std::size_t rank);

    /// Beyond all ranks when every arc has had its turn.
    std::size_t NextRank() const noexcept {
        return next_ < ranks_.size() ? ranks_[next_] : arcs_.size();
    }
    /// The next arc's turn has come.
    void TakeNext() noexcept { ++next_; }
    /// Removes what the current arc crosses, of the arcs whose turn has not come.
    void RemoveCrossedBy(const PreparedArc& current, std::span<const Ray> speakers);
    /// The same where the current arc and all of the field lie in one plane.
    void RemoveLevelWith(const PreparedArc& current);

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

    void FindSuspects(const PreparedArc& current) noexcept;
    template <class Predicate>
    void RemoveIf(Predicate isGone);
    void Move(std::size_t to, std::size_t from) noexcept;

    std::span<const PreparedArc> arcs_;
    std::vector<std::size_t> ranks_;
    std::size_t next_ = 0;
    // copied from the arcs, in the order of ranks_
    Columns normals_;
    Columns froms_;
    Columns tos_;
    std::vector<float> reaches_;
    std::vector<std::int32_t> suspect_;
};

void ArcField::Add(std::size_t rank) {
    const PreparedArc& arc = arcs_[rank];
    ranks_.push_back(rank);
    normals_.Add(arc.normal);
    froms_.Add(arc.from);
    tos_.Add(arc.to);
    reaches_.push_back(arc.reach);
    suspect_.push_back(0);
}

/// Marks the arcs that the current one may cross; see the rules above. Written without branches,
/// so that compilers take several arcs at a time.
void ArcField::FindSuspects(const PreparedArc& current) noexcept {
    const CartesianVector n = current.normal;
    const CartesianVector p = current.from;
    const CartesianVector q = current.to;
    const float currentReach = current.reach;
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
            (a * b >= 0.f) & (a * a >= square * currentReach) & (b * b >= square * reach[k]);
        const bool isOpen = square >= kOpen * kOpen;
        const bool isLost = !(square >= kLeastSquare);
        suspect[k] = static_cast<std::int32_t>(isLost | (pierces & (between | !isOpen)));
    }
}

bool Crosses(std::span<const Ray> speakers, const PreparedArc& a, const PreparedArc& b) noexcept {
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

void ArcField::RemoveCrossedBy(const PreparedArc& current, std::span<const Ray> speakers) {
    FindSuspects(current);
    RemoveIf([&](std::size_t other) {
        return suspect_[other] != 0 && Crosses(speakers, current, arcs_[ranks_[other]]);
    });
}

void ArcField::RemoveLevelWith(const PreparedArc& current) {
    if (!current.passesWithoutAxis) return;
    RemoveIf([&](std::size_t other) {
        const PreparedArc& met = arcs_[ranks_[other]];
        return met.passesWithoutAxis && !ShareASpeaker(current.arc, met.arc);
    });
}

/// Arcs between loudspeakers at exactly the listener's height: their planes are equal. A ring there
/// has as many arcs as pairs, none of which removes the others in any other way.
bool IsLevel(const Arc& arc) noexcept { return arc.normal.x == 0.f && arc.normal.y == 0.f; }

}  // namespace

void RemoveCrossedArcs(std::span<const Ray> speakers, std::vector<Arc>& arcs) {
    // Crossing is mutual, to the last bit, so an arc is compared only with those after it: the ones
    // before it have already left it alone.
    const std::vector<End> ends = MakeEnds(speakers);
    std::vector<PreparedArc> prepared;
    prepared.reserve(arcs.size());
    for (const Arc& arc : arcs) prepared.push_back(PrepareArc(ends, arc));
    // Rule 1: the shortest arcs, which stand first, stay. The others are put back at the end.
    std::erase_if(arcs, [](const Arc& arc) { return arc.angle >= kLeastArc; });
    ArcField level(prepared);
    ArcField others(prepared);
    for (std::size_t rank = arcs.size(); rank < prepared.size(); ++rank) {
        (IsLevel(prepared[rank].arc) ? level : others).Add(rank);
    }
    while (std::min(level.NextRank(), others.NextRank()) < prepared.size()) {
        const bool isLevel = level.NextRank() < others.NextRank();
        ArcField& own = isLevel ? level : others;
        const PreparedArc& current = prepared[own.NextRank()];
        own.TakeNext();
        others.RemoveCrossedBy(current, speakers);
        if (isLevel) {
            level.RemoveLevelWith(current);
        } else {
            level.RemoveCrossedBy(current, speakers);
        }
    }
    for (const ArcField* field : {&level, &others}) {
        for (const std::size_t rank : field->Ranks()) arcs.push_back(prepared[rank].arc);
    }
}

}  // namespace Quilo
