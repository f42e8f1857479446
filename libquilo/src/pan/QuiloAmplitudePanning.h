// SPDX-License-Identifier: MIT
// Base of every panner whose outputs are weighted mixes of its inputs.
//
// It owns the gain matrix and turns a position into one row of gains through the law of the derived
// class. Storing, comparing, gliding, muting and spreads live here, so that a panner is only its
// law and, where it has one, its loudspeaker layout.
#pragma once

#include "pan/QuiloPan.h"
#include "processors/VelkDspSignalMatrix.h"

namespace Quilo {

class AmplitudePanning : public Pan {
public:
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    void SetSourcePosition(unsigned index,
                           const tav::CartesianVector& position,
                           bool immediate,
                           bool force) override;
    /// Nothing here: a law without loudspeakers ignores them.
    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    void SetSourceSpread(unsigned index, float spread) override;
    bool SupportsSpread() const override { return true; }
    bool IsPlanar() const override { return false; }
    float SourceSpread(unsigned index) const override;

    /// The law: gains of one source, for this panner's own use and for panners made of others;
    /// nothing is set.
    /// @param index   whose spread and other properties count, below the number of inputs
    /// @param source  metres, finite      @param gains  one per output, overwritten, finite
    /// Thread: control, under the control lock.
    virtual void ComputeGains(unsigned index,
                              const tav::CartesianVector& source,
                              std::span<float> gains) = 0;

protected:
    AmplitudePanning(unsigned numInputs, unsigned numOutputs);

    /// The row of a source, or silence while it is muted.  The control lock is held.
    void SetGains(unsigned index, std::span<const float> gains, bool immediate);

private:
    void ApplySampleRate() override;
    void ApplyInterpolationTime(float ms) override;

    tav::SignalMatrix matrix_;
    tav::Vector<float> spreads_;  // one per source, 0 .. 100
    tav::Vector<float> row_;      // one source's gains while they are computed
};

}  // namespace Quilo
