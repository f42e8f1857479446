// SPDX-License-Identifier: MIT
// Two ears by models of a listener, without measured filters.
#pragma once

#include "laws/QuiloEarPaths.h"
#include "pan/QuiloBinauralPanning.h"
#include "pan/QuiloDelayAndFilterBank.h"
#include "processors/VelkDspHandOver.h"

#include <memory>
#include <vector>

namespace Quilo {

/// What these panners share: a model gives a source its paths to the ears, a bank plays them.
/// Everything glides, there are no filters to be exchanged. A source within 0.01 mm of the centre
/// of the head is heard as from ahead. Distance delays nothing and takes nothing away.
class BinauralModelPanning : public BinauralPanning {
public:
    unsigned Latency() const override { return BaseLatency(); }
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

protected:
    BinauralModelPanning(unsigned numInputs, unsigned numOutputs, bool hasTorso);

    /// Delays at both ears by the model of the listener.
    /// @param substitute  for "measurement", where nothing is measured
    EarDelays DelaysFrom(const tav::CartesianVector& position,
                         InterauralTimeDifference::Type substitute) const
        TAV_REQUIRES(controlLock_);

private:
    /// @param position  as the listener finds the source
    virtual EarPaths PathsFrom(const tav::CartesianVector& position) const
        TAV_REQUIRES(controlLock_) = 0;
    virtual ShadowCorners Corners() const TAV_REQUIRES(controlLock_) { return {}; }

    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_) { newest_->Reset(); }
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_) { glideMs_ = ms; }
    void RecomputeAll(bool immediate) override TAV_REQUIRES(controlLock_);
    void ComputeSource(unsigned index, bool immediate, bool force) override
        TAV_REQUIRES(controlLock_);

    const bool hasTorso_;
    float glideMs_ TAV_GUARDED_BY(controlLock_) = kDefaultInterpolationTimeMs;
    DelayAndFilterBank* newest_ TAV_GUARDED_BY(controlLock_) = nullptr;  // where targets go
    // shared: control writes, audio reads
    tav::HandOver<DelayAndFilterBank> banks_;
    // audio only
    std::vector<const float*> inputs_;
};

/// A rigid sphere as the head: at each ear the delay of the chosen model ("miller" in place of
/// "measurement") and the shadow of the sphere.
class BinauralPanningSphericalHeadModel : public BinauralModelPanning {
public:
    BinauralPanningSphericalHeadModel(unsigned numInputs, unsigned numOutputs)
        : BinauralModelPanning(numInputs, numOutputs, false) {}

private:
    EarPaths PathsFrom(const tav::CartesianVector& position) const override
        TAV_REQUIRES(controlLock_);
    ShadowCorners Corners() const override TAV_REQUIRES(controlLock_);
};

}  // namespace Quilo
