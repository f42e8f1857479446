// SPDX-License-Identifier: MIT
#include "laws/QuiloSnowmanModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Quilo {

namespace {

// Differences of paths: in 64 bits, as for interaural delays.
constexpr double kMsPerMetre = 1000.0 / 343.2;
constexpr double kAbove = 0.001;     // metres: how far a source inside is taken out
constexpr double kFarthest = 1e6;    // metres
constexpr double kDeepShadow = 0.9;  // what is lost behind its middle, far above the corner
constexpr int kMostSteps = 40;
constexpr double kSmallestStep = 1e-9;  // radians

struct Vector {
    double x, y, z;

    friend Vector operator-(const Vector& a, const Vector& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend Vector operator+(const Vector& a, const Vector& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend Vector operator*(double f, const Vector& v) { return {f * v.x, f * v.y, f * v.z}; }
    double Length() const { return std::sqrt(x * x + y * y + z * z); }
};

double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

/// 0 .. pi
double AngleBetween(const Vector& a, const Vector& b) {
    const double lengths = a.Length() * b.Length();
    return lengths > 0.0 ? std::acos(std::clamp(Dot(a, b) / lengths, -1.0, 1.0)) : 0.0;
}

double Root(double square) { return std::sqrt(std::max(square, 0.0)); }

Vector CentreOf(const Snowman& s) {
    return {0.0, 0.0,
            -(static_cast<double>(s.headRadius) + static_cast<double>(s.torso.neckHeight) +
              static_cast<double>(s.torso.radius))};
}

Vector PositionOf(const tav::CartesianVector& p) {
    const Vector v{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
    const double distance = v.Length();
    return distance > kFarthest ? kFarthest / distance * v : v;
}

/// The plane of the centre of the torso, the ear and the source, in which all rays lie.
struct Plane {
    double radius;           // of the torso
    Vector toEar, toSource;  // from the centre of the torso
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
double TurnToReflection(const Plane& plane) {
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

void AddShadow(const Plane& plane, TorsoPaths& paths) {
    const double square = plane.radius * plane.radius;
    const double around = Root(plane.ear * plane.ear - square) +
                          Root(plane.source * plane.source - square) +
                          plane.radius * plane.AngleInShadow();
    paths.directDelayMs = static_cast<float>((around - plane.straight) * kMsPerMetre);
    paths.reflectedDelayMs = paths.directDelayMs;
    const double seen = AngleBetween(plane.toSource - plane.toEar, -1.0 * plane.toEar);
    const double half = std::asin(std::min(plane.radius / plane.ear, 1.0));  // of the torso
    const double depth = std::clamp(1.0 - seen / half, 0.0, 1.0);
    const double sine = std::sin(0.5 * std::numbers::pi * depth);
    paths.shadow = static_cast<float>(1.0 - kDeepShadow * sine * sine);
}

void AddReflection(const Plane& plane, Ear ear, float coefficient, TorsoPaths& paths) {
    const double turn = TurnToReflection(plane);
    const double path =
        plane.ToSurface(plane.ear, turn) + plane.ToSurface(plane.source, plane.angle - turn);
    paths.reflectedDelayMs = static_cast<float>((path - plane.straight) * kMsPerMetre);
    const double cosine = std::cos(plane.Incidence(plane.ear, turn));
    paths.reflectedGain = coefficient * static_cast<float>(std::max(cosine, 0.0));
    // The point of reflection lies on the way from above the ear to above the source.
    const Vector up = 1.0 / plane.ear * plane.toEar;
    const Vector across = plane.toSource - Dot(plane.toSource, up) * up;
    const double length = across.Length();
    const Vector aside = length > 0.0 ? std::sin(turn) / length * across : Vector{};
    const Vector arrival = plane.radius * (std::cos(turn) * up + aside) - plane.toEar;
    const double distance = arrival.Length();
    if (distance == 0.0) return;
    paths.reflectedCosine = static_cast<float>(static_cast<double>(ear) * arrival.x / distance);
}

}  // namespace

tav::CartesianVector OutsideTorso(const Snowman& listener, const tav::CartesianVector& source) {
    const double least = static_cast<double>(listener.torso.radius) + kAbove;
    const Vector centre = CentreOf(listener), from = PositionOf(source) - centre;
    const double distance = from.Length();
    if (listener.torso.radius <= 0.f || distance >= least) return source;
    const Vector out =
        centre + (distance > 0.0 ? least / distance * from : Vector{0.0, 0.0, least});
    return {static_cast<float>(out.x), static_cast<float>(out.y), static_cast<float>(out.z)};
}

TorsoPaths TorsoPathsTo(Ear ear, const Snowman& listener, const tav::CartesianVector& source) {
    TorsoPaths paths;
    if (listener.torso.radius <= 0.f) return paths;
    const Vector centre = CentreOf(listener);
    const Vector at{static_cast<double>(ear) * static_cast<double>(listener.headRadius), 0.0, 0.0};
    const Plane plane{static_cast<double>(listener.torso.radius), at - centre,
                      PositionOf(source) - centre};
    if (plane.AngleInShadow() > 0.0) {
        AddShadow(plane, paths);
    } else {
        AddReflection(plane, ear, listener.torso.reflection, paths);
    }
    return paths;
}

}  // namespace Quilo
