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
    bool SupportsSpread() const override { return true; }
    bool IsPlanar() const override { return false; }

protected:
    AmplitudePanning(unsigned numInputs, unsigned numOutputs);

    void ProcessToHost(const tav::HostDrain& host,
                       float* const* outputs,
                       const float* const* inputs,
                       unsigned frames) noexcept TAV_NONBLOCKING override;

    /// The row of a source, or silence while it is muted.
    void SetGains(unsigned index, std::span<const float> gains, bool immediate)
        TAV_REQUIRES(controlLock_);
    /// Percent, 0 .. 100.
    float StoredSpread(unsigned index) const override TAV_REQUIRES(controlLock_) {
        return spreads_[index];
    }
    void ApplySourceSpread(unsigned index, float spread) override TAV_REQUIRES(controlLock_);
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);

private:
    /// The law: the gains of one source at its position; nothing is set.
    /// @param index   whose spread and other properties count, below the number of inputs
    /// @param source  metres, finite      @param gains  one per output, overwritten, finite
    virtual void ComputeGains(unsigned index,
                              const tav::CartesianVector& source,
                              std::span<float> gains) TAV_REQUIRES(controlLock_) = 0;

    void ComputeSource(unsigned index, bool immediate, bool) override TAV_REQUIRES(controlLock_);
    /// Nothing here: a law without loudspeakers ignores them.
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);

    tav::SignalMatrix matrix_;
    tav::Vector<float> spreads_ TAV_GUARDED_BY(controlLock_);  // one per source, percent
    tav::Vector<float> row_ TAV_GUARDED_BY(controlLock_);      // of one source, while computed
};

}  // namespace Quilo
