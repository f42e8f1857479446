// SPDX-License-Identifier: MIT
// Distance-based panning: sources walk between the loudspeakers, which may stand anywhere.
#pragma once

#include "laws/QuiloDbapLaw.h"
#include "math/VelkDspConvexHull2D.h"
#include "pan/QuiloAmplitudePanning.h"

#include <array>

namespace Quilo {

/// Every loudspeaker plays every source, the nearer the louder. Silent until a layout comes.
class DbapPanning : public AmplitudePanning {
public:
    /// Percent along each axis, 0 .. 100.
    struct SpreadByDirection {
        float x = 0;
        float y = 0;
        float z = 0;

        friend bool operator==(const SpreadByDirection&, const SpreadByDirection&) = default;
    };

    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    /// Which of the spreads of a source counts.
    void SetSpreadingMode(SpreadingMode mode) override;
    /// An unknown word is "omni".
    void SetSpreadingMode(std::string_view keyword) override;
    void SetSpread(float spread) override;
    /// @param values  x, y, z in percent, for all sources; fewer are ignored
    void SetSpreadsByDirection(std::span<const float> values) override;
    /// @param values  x, y, z in percent; fewer are ignored
    void SetSpreadByDirection(unsigned index, std::span<const float> values) override;

    SpreadingMode GetSpreadingMode() const;
    /// x, y, z in percent; zeros for an index out of range.
    std::array<float, 3> SourceSpreadByDirection(unsigned index) const;

    /// Whether sources outside the loudspeakers are silent.
    void SetMuteOutside(bool on);
    bool MuteOutside() const;

    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

protected:
    DbapPanning(unsigned numInputs, unsigned numOutputs, bool isPlanar);

    const SpeakerCloud& Cloud() const { return cloud_; }
    bool MutesOutside() const { return muteOutside_; }

private:
    /// A new layout is in `speakers`; the cloud has it already.
    virtual void LayoutChanged(const tav::CartesianArray& speakers);
    /// What is left of a source where it stands.
    virtual float Loudness(const tav::CartesianVector& source) const = 0;

    DbapMetric MetricOf(unsigned index, const tav::CartesianVector& source) const;

    SpeakerCloud cloud_;
    tav::Vector<SpreadByDirection> directionalSpreads_;  // one per source
    SpreadingMode spreadingMode_ = SpreadingMode::Omni;
    bool muteOutside_ = false;
    bool isPlanar_;
};

/// Horizontal distances. Beyond the hull of the loudspeakers as seen from above a source becomes
/// softer with the distance, or silent.
class DbapPanning2D : public DbapPanning {
public:
    DbapPanning2D(unsigned numInputs, unsigned numOutputs)
        : DbapPanning(numInputs, numOutputs, true) {}

private:
    void LayoutChanged(const tav::CartesianArray& speakers) override;
    float Loudness(const tav::CartesianVector& source) const override;

    tav::ConvexHull2D hull_;
};

/// Distances in space.
class DbapPanning3D : public DbapPanning {
public:
    DbapPanning3D(unsigned numInputs, unsigned numOutputs)
        : DbapPanning(numInputs, numOutputs, false) {}

private:
    float Loudness(const tav::CartesianVector& source) const override;
};

}  // namespace Quilo
