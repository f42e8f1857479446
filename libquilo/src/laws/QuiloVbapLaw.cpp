// SPDX-License-Identifier: MIT
#include "laws/QuiloVbapLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace Quilo {

namespace {

constexpr double kDegPerRad = 57.295780181884766;  // of 32 bits, so that all azimuths agree
constexpr double kLargestPlainGain = 1e15;         // the squares of larger ones overflow 32 bits

double Cross(PlanePoint a, PlanePoint b) { return a.x * b.y - a.y * b.x; }

double FloorMagnitude(double value, double floor) {
    if (std::fabs(value) > floor) return value;
    return value >= 0.0 ? floor : -floor;
}

double RoundToMillionths(double value) { return std::round(value * 1e6) / 1e6; }

PlanePoint Rounded(PlanePoint p) { return {RoundToMillionths(p.x), RoundToMillionths(p.y)}; }

}  // namespace

double PlaneAzimuthDeg(PlanePoint point) {
    return tav::Wrap360(270.0 - std::atan2(point.y, point.x) * kDegPerRad) - 180.0;
}

PairGains VbapPairGains(const SpeakerPair& pair, PlanePoint source) {
    const double det =
        FloorMagnitude(Cross(pair.a, pair.b), 1e-10);  // a collinear pair stays finite
    const PairGains g{std::max((pair.b.y * source.x - pair.b.x * source.y) / det, 0.0),
                      std::max((pair.a.x * source.y - pair.a.y * source.x) / det, 0.0)};
    if (g.first == 0.0 && g.second == 0.0) {
        return {1.0, 1.0};  // Deliberate: at the listener both sound   (VbapPairGains, Nowhere...)
    }
    const double larger = std::max(g.first, g.second);
    if (larger <= kLargestPlainGain) return g;
    return {g.first / larger, g.second / larger};  // only their ratio survives the normalisation
}

SpeakerRing::SpeakerRing(const tav::CartesianArray& speakers, std::size_t numOutputs) {
    struct Speaker {
        double azimuthDeg;
        PlanePoint position;
        std::uint32_t output;
    };
    std::vector<Speaker> ring;
    for (std::size_t i = 0; i < std::min(speakers.Size(), numOutputs); ++i) {
        const PlanePoint p{static_cast<double>(speakers[i].x), static_cast<double>(speakers[i].y)};
        ring.push_back({PlaneAzimuthDeg(p), p, static_cast<std::uint32_t>(i)});
    }
    std::ranges::sort(ring, [](const Speaker& a, const Speaker& b) {
        return std::tie(a.azimuthDeg, a.output) < std::tie(b.azimuthDeg, b.output);
    });
    for (std::size_t p = 0; p < ring.size(); ++p) {
        const Speaker& next = ring[(p + 1) % ring.size()];
        azimuthsDeg_.push_back(ring[p].azimuthDeg);
        pairs_.push_back(
            {{Rounded(ring[p].position), Rounded(next.position)}, ring[p].output, next.output});
    }
}

const SpeakerRing::Pair& SpeakerRing::PairAround(double azimuthDeg) const {
    // The first loudspeaker, from the second one on, that is not before the source ends its pair.
    const auto end = std::lower_bound(azimuthsDeg_.begin() + 1, azimuthsDeg_.end(), azimuthDeg);
    const bool beyondBoth = end == azimuthsDeg_.end() || azimuthDeg < azimuthsDeg_.front();
    return beyondBoth ? pairs_.back()
                      : pairs_[static_cast<std::size_t>(end - azimuthsDeg_.begin()) - 1];
}

void Vbap2DGains(const SpeakerRing& ring,
                 const tav::CartesianVector& source,
                 std::span<float> gains) {
    std::ranges::fill(gains, 0.f);
    if (ring.Empty()) return;
    const PlanePoint p{static_cast<double>(source.x), static_cast<double>(source.y)};
    const SpeakerRing::Pair& pair = ring.PairAround(PlaneAzimuthDeg(p));
    const PairGains g = VbapPairGains(pair.positions, p);
    gains[pair.firstOutput] += static_cast<float>(g.first);
    gains[pair.secondOutput] += static_cast<float>(g.second);
}

void NormaliseAmplitude2D(std::span<float> gains) {
    float energy = 0.f;
    for (const float g : gains) energy += g * g;
    const auto factor =
        static_cast<float>(1.0 / std::max(std::sqrt(static_cast<double>(energy)), 1e-10));
    for (float& g : gains) g *= factor;
}

void NormaliseIntensity(std::span<float> gains) {
    const float sum = std::max(std::accumulate(gains.begin(), gains.end(), 0.f), 1e-20f);
    for (float& g : gains) g = std::sqrt(g / sum);
}

}  // namespace Quilo
