// SPDX-License-Identifier: MIT
// Distance-based panning among loudspeakers that may stand anywhere.
#pragma once

#include "laws/QuiloDbapLaw.h"
#include "math/VelkDspConvexHull2D.h"
#include "pan/QuiloLayoutPanning.h"

#include <array>

namespace Quilo {

/// A layout with its outline as seen from above.
struct DbapLayout {
    DbapLayout() = default;
    explicit DbapLayout(const tav::CartesianArray& speakers);

    SpeakerCloud cloud;
    tav::ConvexHull2D hull;
};

/// Every loudspeaker plays every source, the nearer the louder. Silent until a layout comes.
class DbapPanning : public LayoutPanning<DbapLayout> {
public:
    /// Percent along each axis, 0 .. 100.
    struct SpreadByDirection {
        float x = 0;
        float y = 0;
        float z = 0;

        friend bool operator==(const SpreadByDirection&, const SpreadByDirection&) = default;
    };

    SpreadingMode GetSpreadingMode() const;
    /// x, y, z in percent; zeros for an index out of range.
    std::array<float, 3> SourceSpreadByDirection(unsigned index) const;

    /// Whether sources outside the loudspeakers are silent.
    void SetMuteOutside(bool on);
    bool MuteOutside() const;

protected:
    DbapPanning(unsigned numInputs, unsigned numOutputs, bool isPlanar);

    bool MutesOutside() const TAV_REQUIRES(controlLock_) { return muteOutside_; }

private:
    /// The factor that the place of a source puts on all of its gains.
    virtual float Loudness(const tav::CartesianVector& source) const TAV_REQUIRES(controlLock_) = 0;

    void ApplySpreadingMode(SpreadingMode mode) override TAV_REQUIRES(controlLock_);
    void ApplySpread(float spread) override TAV_REQUIRES(controlLock_);
    /// @param values  x, y, z in percent; fewer are ignored
    void ApplySpreadByDirection(unsigned index, std::span<const float> values) override
        TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);

    DbapMetric MetricOf(unsigned index, const tav::CartesianVector& source) const
        TAV_REQUIRES(controlLock_);

    tav::Vector<SpreadByDirection> directionalSpreads_ TAV_GUARDED_BY(controlLock_);  // per source
    SpreadingMode spreadingMode_ TAV_GUARDED_BY(controlLock_) = SpreadingMode::Omni;
    bool muteOutside_ TAV_GUARDED_BY(controlLock_) = false;
    const bool isPlanar_;
};

/// Distances are horizontal. Outside the hull of the loudspeakers, as seen from above, a source
/// becomes softer with the distance, or silent.
class DbapPanning2D : public DbapPanning {
public:
    DbapPanning2D(unsigned numInputs, unsigned numOutputs)
        : DbapPanning(numInputs, numOutputs, true) {}

private:
    float Loudness(const tav::CartesianVector& source) const override TAV_REQUIRES(controlLock_);
};

/// Distances are those in space.
class DbapPanning3D : public DbapPanning {
public:
    DbapPanning3D(unsigned numInputs, unsigned numOutputs)
        : DbapPanning(numInputs, numOutputs, false) {}

private:
    float Loudness(const tav::CartesianVector& source) const override TAV_REQUIRES(controlLock_);
};

}  // namespace Quilo
