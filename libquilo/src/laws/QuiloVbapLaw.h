// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspVector.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Quilo {

/// Vector-base panning in the horizontal plane, in double precision.
/// The source's direction is written as a sum of the two loudspeaker vectors that enclose it; the
/// factors are the gains.  Thread: control.  Throws: nothing but for lack of memory.
/// @see "Virtual sound source positioning using vector base amplitude panning", JAES 45(6), 1997

struct PlanePoint {
    double x = 0.0;
    double y = 0.0;
};

struct SpeakerPair {
    PlanePoint a;
    PlanePoint b;
};

struct PairGains {
    double first = 0.0;
    double second = 0.0;
};

/// Gains before normalisation, never negative and never both 0; of any finite size.
/// A source at the listener, or one that lies behind both loudspeakers, gets 1 and 1.
PairGains VbapPairGains(const SpeakerPair& pair, PlanePoint source);

/// Navigational azimuth in degrees, [-180, 180); 90 at the origin.
double PlaneAzimuthDeg(PlanePoint point);

/// Loudspeakers by increasing azimuth, and the pairs of neighbours among them.
class SpeakerRing {
public:
    /// One pair: entry p of the ring and the one after it, the last joined with the first.
    struct Pair {
        SpeakerPair positions;  ///< rounded to six decimals
        std::uint32_t firstOutput = 0;
        std::uint32_t secondOutput = 0;
    };

    SpeakerRing() = default;

    /// Loudspeakers of equal azimuth keep their order.
    /// @param speakers  metres, z ignored; element i feeds output i
    /// @param numOutputs  surplus loudspeakers are ignored
    SpeakerRing(const tav::CartesianArray& speakers, std::size_t numOutputs);

    bool Empty() const { return pairs_.empty(); }

    /// The first pair whose loudspeakers enclose an azimuth of [-180, 180); the pair across the
    /// wrap for all others. The ring must not be empty.  Cost: O(log loudspeakers).
    const Pair& PairAround(double azimuthDeg) const;

private:
    std::vector<double> azimuthsDeg_;  // increasing; loudspeaker p
    std::vector<Pair> pairs_;          // pair p joins loudspeakers p and p + 1
};

/// Gains of one source over a ring, before normalisation: two outputs at most are above 0.
/// An empty ring leaves all of them at 0.
/// @param source  metres, any finite point; z is ignored
/// @param gains   one per output, overwritten
void Vbap2DGains(const SpeakerRing& ring,
                 const tav::CartesianVector& source,
                 std::span<float> gains);

/// Scales gains so that their squares add up to 1. Zeros stay, and so do gains far below 1e-10.
void NormaliseAmplitude2D(std::span<float> gains);

/// Turns gains into the square roots of their shares, so that their squares sum to 1; zeros stay.
void NormaliseIntensity(std::span<float> gains);

}  // namespace Quilo
