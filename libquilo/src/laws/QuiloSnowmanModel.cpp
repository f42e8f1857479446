// SPDX-License-Identifier: MIT
#include "laws/QuiloSnowmanModel.h"

#include "laws/QuiloNearFieldLaw.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Quilo {

namespace {

// Differences of paths: in 64 bits, as for interaural delays.
constexpr double kTorsoMsPerMetre = 1000.0 / kSpeedOfSound;
constexpr double kAbove = 0.001;         // metres: how far a source inside is taken out
constexpr double kFarthestSource = 1e6;  // metres
constexpr double kDeepShadow = 0.9;      // what is lost behind its middle, far above the corner
constexpr int kMostSteps = 40;
constexpr double kSmallestStep = 1e-9;  // radians

struct RayVector {
    double x = 0.0, y = 0.0, z = 0.0;

    friend RayVector operator-(const RayVector& a, const RayVector& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend RayVector operator+(const RayVector& a, const RayVector& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend RayVector operator*(double f, const RayVector& v) { return {f * v.x, f * v.y, f * v.z}; }
    friend double Dot(const RayVector& a, const RayVector& b) {
        return a.x * b.x + a.y * b.y + a.z * b.z;
    }
    double Length() const { return std::sqrt(x * x + y * y + z * z); }
};

/// 0 .. pi
double AngleBetween(const RayVector& a, const RayVector& b) {
    const double lengths = a.Length() * b.Length();
    return lengths > 0.0 ? std::acos(std::clamp(Dot(a, b) / lengths, -1.0, 1.0)) : 0.0;
}

double Root(double square) { return std::sqrt(std::max(square, 0.0)); }

RayVector CentreOf(const Snowman& s) {
    return {0.0, 0.0,
            -(static_cast<double>(s.headRadius) + static_cast<double>(s.torso.neckHeight) +
              static_cast<double>(s.torso.radius))};
}

RayVector PositionOf(const tav::CartesianVector& p) {
    const RayVector v{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
    const double distance = v.Length();
    return distance > kFarthestSource ? kFarthestSource / distance * v : v;
}

/// The plane of the centre of the torso, the ear and the source, in which all rays lie.
struct RayPlane {
    double radius = 0.0;        // of the torso
    RayVector toEar, toSource;  // from the centre of the torso
    double ear = toEar.Length(), source = toSource.Length();
    double angle = AngleBetween(toEar, toSource);  // at the centre
    double straight = (toSource - toEar).Length();

    /// From the centre: how far the tangent point is turned away from something at this distance.
    double TurnToTangent(double distance) const {
        return std::acos(std::min(radius / distance, 1.0));
    }
    /// Between the tangent points; below 0 where ear and source see each other.
    double AngleInShadow() const { return angle - TurnToTangent(ear) - TurnToTangent(source); }
    /// Of incidence, at a point of the torso this much away from something at the distance.
    double Incidence(double distance, double turn) const {
        return std::atan2(distance * std::sin(turn), distance * std::cos(turn) - radius);
    }
    double ToSurface(double distance, double turn) const {
        return Root(distance * distance + radius * radius -
                    2.0 * distance * radius * std::cos(turn));
    }
};

/// How far the point of reflection is turned from the ear, seen from the centre: where the sine of
/// the difference between both angles of incidence is 0. It grows from the ear to the source.
/// Newton's steps, halves where these lead out.
double TurnToReflection(const RayPlane& plane) {
    const double perTorso = 1.0 / plane.radius, perEar = 1.0 / plane.ear;
    const double perSource = 1.0 / plane.source;
    const double heights = (plane.ear - plane.radius) + (plane.source - plane.radius);
    double low = 0.0, high = plane.angle;
    double turn = heights > 0.0 ? high * (plane.ear - plane.radius) / heights : 0.0;
    for (int step = 0; step < kMostSteps; ++step) {
        const double rest = plane.angle - turn;
        const double sinTurn = std::sin(turn), cosTurn = std::cos(turn);
        const double sinRest = std::sin(rest), cosRest = std::cos(rest);
        const double value = (sinTurn * cosRest - cosTurn * sinRest) * perTorso -
                             sinTurn * perSource + sinRest * perEar;
        const double slope = 2.0 * (cosTurn * cosRest + sinTurn * sinRest) * perTorso -
                             cosTurn * perSource - cosRest * perEar;
        (value < 0.0 ? low : high) = turn;
        const double next = turn - value / slope;
        const bool isWithin = next > low && next < high;
        const double before = std::exchange(turn, isWithin ? next : 0.5 * (low + high));
        if (std::abs(turn - before) < kSmallestStep) break;
    }
    return turn;
}

void AddShadow(const RayPlane& plane, TorsoPaths& paths) {
    const double square = plane.radius * plane.radius;
    const double around = Root(plane.ear * plane.ear - square) +
                          Root(plane.source * plane.source - square) +
                          plane.radius * plane.AngleInShadow();
    paths.directDelayMs = static_cast<float>((around - plane.straight) * kTorsoMsPerMetre);
    paths.reflectedDelayMs = paths.directDelayMs;
    const double seen = AngleBetween(plane.toSource - plane.toEar, -1.0 * plane.toEar);
    const double half = std::asin(std::min(plane.radius / plane.ear, 1.0));  // of the torso
    const double depth = std::clamp(1.0 - seen / half, 0.0, 1.0);
    const double sine = std::sin(0.5 * std::numbers::pi * depth);
    paths.shadow = static_cast<float>(1.0 - kDeepShadow * sine * sine);
}

void AddReflection(const RayPlane& plane, Ear ear, float coefficient, TorsoPaths& paths) {
    const double turn = TurnToReflection(plane);
    const double path =
        plane.ToSurface(plane.ear, turn) + plane.ToSurface(plane.source, plane.angle - turn);
    paths.reflectedDelayMs = static_cast<float>((path - plane.straight) * kTorsoMsPerMetre);
    const double cosine = std::cos(plane.Incidence(plane.ear, turn));
    paths.reflectedGain = coefficient * static_cast<float>(std::max(cosine, 0.0));
    // The point of reflection lies on the way from above the ear to above the source.
    const RayVector up = 1.0 / plane.ear * plane.toEar;
    const RayVector across = plane.toSource - Dot(plane.toSource, up) * up;
    const double length = across.Length();
    const RayVector aside = length > 0.0 ? std::sin(turn) / length * across : RayVector{};
    const RayVector arrival = plane.radius * (std::cos(turn) * up + aside) - plane.toEar;
    const double distance = arrival.Length();
    if (distance == 0.0) return;
    paths.reflectedCosine = static_cast<float>(static_cast<double>(ear) * arrival.x / distance);
}

}  // namespace

tav::CartesianVector OutsideTorso(const Snowman& listener, const tav::CartesianVector& source) {
    const double least = static_cast<double>(listener.torso.radius) + kAbove;
    const RayVector centre = CentreOf(listener), from = PositionOf(source) - centre;
    const double distance = from.Length();
    if (listener.torso.radius <= 0.f || distance >= least) return source;
    const RayVector out =
        centre + (distance > 0.0 ? least / distance * from : RayVector{0.0, 0.0, least});
    return {static_cast<float>(out.x), static_cast<float>(out.y), static_cast<float>(out.z)};
}

TorsoPaths TorsoPathsTo(Ear ear, const Snowman& listener, const tav::CartesianVector& source) {
    TorsoPaths paths;
    if (listener.torso.radius <= 0.f) return paths;
    const RayVector centre = CentreOf(listener);
    const RayVector at{static_cast<double>(ear) * static_cast<double>(listener.headRadius), 0.0,
                       0.0};
    const RayPlane plane{static_cast<double>(listener.torso.radius), at - centre,
                         PositionOf(source) - centre};
    if (plane.AngleInShadow() > 0.0) {
        AddShadow(plane, paths);
    } else {
        AddReflection(plane, ear, listener.torso.reflection, paths);
    }
    return paths;
}

}  // namespace Quilo
