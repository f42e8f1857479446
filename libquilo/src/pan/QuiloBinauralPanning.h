// SPDX-License-Identifier: MIT
// What all panners for two ears share: the listener.
#pragma once

#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloBinauralSettings.h"
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
    /// Samples: one millisecond, whatever is taken off the delays; none where nearer ears are not
    /// delayed.
    unsigned Latency() const override;

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
    /// What is taken off the delays of the ears.  @param percent  clamped to 0 .. 100
    void SetDelayReduction(float percent);
    float DelayReduction() const;
    /// What delays read between samples.  @param code  of tav::DelayKind
    void SetDelayKind(unsigned code);
    unsigned DelayKind() const;

    /// How long filters take to change, and how; where there are none it is only kept.
    /// @param ms  0 or more, clamped
    void SetCrossfadeTime(float ms);
    float CrossfadeTime() const;
    void SetCrossfadeShape(tav::FadeShape shape);
    tav::FadeShape CrossfadeShape() const;

protected:
    BinauralPanning(unsigned numInputs, unsigned numOutputs);

    /// Where the listener finds a source; finite.
    tav::CartesianVector RelativePosition(unsigned index) const TAV_REQUIRES(controlLock_);
    /// The same; ahead where it is too near to the centre of the head to have a direction.
    tav::CartesianVector HeardPosition(unsigned index) const TAV_REQUIRES(controlLock_);
    const InterauralTimeDifference& Itd() const TAV_REQUIRES(controlLock_) { return itd_; }
    const BinauralSettings& Settings() const TAV_REQUIRES(controlLock_) { return settings_; }
    /// The settings have changed; sources are recomputed next where that is needed.
    virtual void PublishSettings() TAV_REQUIRES(controlLock_) {}
    /// What the delays of the ears are multiplied by.
    virtual float DelayPart() const TAV_REQUIRES(controlLock_) {
        return (100.f - delayReduction_) * 0.01f;
    }
    /// Sources go through delays.
    virtual bool HasDelays() const TAV_REQUIRES(controlLock_) { return true; }

private:
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}

    tav::CartesianVector listener_ TAV_GUARDED_BY(controlLock_);
    float listenerAngle_ TAV_GUARDED_BY(controlLock_) = 0.f;  // radians
    double angleCos_ TAV_GUARDED_BY(controlLock_) = 1.0;      // of listenerAngle_
    double angleSin_ TAV_GUARDED_BY(controlLock_) = 0.0;
    InterauralTimeDifference itd_ TAV_GUARDED_BY(controlLock_);
    float delayReduction_ TAV_GUARDED_BY(controlLock_) = 0.f;  // percent
    BinauralSettings settings_ TAV_GUARDED_BY(controlLock_);
};

}  // namespace Quilo
