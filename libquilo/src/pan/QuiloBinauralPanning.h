// SPDX-License-Identifier: MIT
// What all panners for two ears share: the listener.
#pragma once

#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloPan.h"

#include <string_view>

namespace Quilo {

/// Two outputs, left and right ear; loudspeaker positions do not enter. Sources stand where they
/// are while the listener moves and turns: every change recomputes all of them, and they glide.
class BinauralPanning : public Pan {
public:
    static constexpr float kLargestHeadRadius = 1.f;  // metres

    std::string OutputLabel(unsigned output) const override;
    bool IsPlanar() const override { return false; }

    /// Metres, in the frame of the sources.
    void SetListenerPosition(const tav::CartesianVector& position);
    tav::CartesianVector ListenerPosition() const;
    /// The head turns to the right.
    void SetListenerAngle(float deg);
    float ListenerAngle() const;

    /// @param metres  clamped to 0 .. kLargestHeadRadius
    void SetHeadRadius(float metres);
    float HeadRadius() const;
    void SetItdModel(InterauralTimeDifference::Type model);
    /// An unknown word is "measurement".
    void SetItdModel(std::string_view keyword);
    InterauralTimeDifference::Type ItdModel() const;
    void SetItdLatencyMode(InterauralTimeDifference::LatencyMode mode);
    /// An unknown word is "fixedlatency".
    void SetItdLatencyMode(std::string_view keyword);
    InterauralTimeDifference::LatencyMode ItdLatencyMode() const;

protected:
    BinauralPanning(unsigned numInputs, unsigned numOutputs);

    /// Where the listener finds a source; finite.
    tav::CartesianVector RelativePosition(unsigned index) const TAV_REQUIRES(controlLock_);
    /// The same; ahead where it is too near to the centre of the head to have a direction.
    tav::CartesianVector HeardPosition(unsigned index) const TAV_REQUIRES(controlLock_);
    /// Samples: one millisecond, or none where nearer ears are not delayed.
    unsigned BaseLatency() const;
    const InterauralTimeDifference& Itd() const TAV_REQUIRES(controlLock_) { return itd_; }

private:
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}

    tav::CartesianVector listener_ TAV_GUARDED_BY(controlLock_);
    float listenerAngle_ TAV_GUARDED_BY(controlLock_) = 0.f;  // radians
    double angleCos_ TAV_GUARDED_BY(controlLock_) = 1.0;      // of listenerAngle_
    double angleSin_ TAV_GUARDED_BY(controlLock_) = 0.0;
    InterauralTimeDifference itd_ TAV_GUARDED_BY(controlLock_);
};

}  // namespace Quilo
