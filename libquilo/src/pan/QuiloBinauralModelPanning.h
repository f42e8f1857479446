// SPDX-License-Identifier: MIT
// Two ears by models of a listener, without measured filters.
#pragma once

#include "laws/QuiloEarPaths.h"
#include "laws/QuiloSnowmanModel.h"
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

    void PublishSettings() override TAV_REQUIRES(controlLock_) {
        newest_->SetDelayKind(Settings().delayKind);
    }
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

/// Early reflections at little cost: at each ear the delay of the chosen model ("larchetjot" in
/// place of "measurement") and a gain, up to 6 dB louder at the nearer ear.
class BinauralPanningITD : public BinauralModelPanning {
public:
    BinauralPanningITD(unsigned numInputs, unsigned numOutputs)
        : BinauralModelPanning(numInputs, numOutputs, false) {}

private:
    EarPaths PathsFrom(const tav::CartesianVector& position) const override
        TAV_REQUIRES(controlLock_);
};

/// A rigid sphere as the head: at each ear the delay of the chosen model ("miller" in place of
/// "measurement") and the shadow of the sphere.
class BinauralPanningSphericalHeadModel : public BinauralModelPanning {
public:
    BinauralPanningSphericalHeadModel(unsigned numInputs, unsigned numOutputs)
        : BinauralPanningSphericalHeadModel(numInputs, numOutputs, false) {}

protected:
    BinauralPanningSphericalHeadModel(unsigned numInputs, unsigned numOutputs, bool hasTorso)
        : BinauralModelPanning(numInputs, numOutputs, hasTorso) {}

    EarPaths PathsFrom(const tav::CartesianVector& position) const override
        TAV_REQUIRES(controlLock_);
    ShadowCorners Corners() const override TAV_REQUIRES(controlLock_);

    /// 1 for a head without a size.  @param cosine  as for HeadShadowAlpha
    float HeadShadow(float cosine) const TAV_REQUIRES(controlLock_);
};

/// The same head on a second sphere, the torso, which reflects sounds from above and shadows those
/// from below: what tells the ears the elevation of a source.
class BinauralPanningSnowmanModel : public BinauralPanningSphericalHeadModel {
public:
    BinauralPanningSnowmanModel(unsigned numInputs, unsigned numOutputs)
        : BinauralPanningSphericalHeadModel(numInputs, numOutputs, true) {}

    // Every change recomputes all sources, and they glide.
    /// @param metres  clamped to 0 .. Torso::kLargestRadius; 0: no torso
    void SetTorsoRadius(float metres) { SetTorso(&Torso::radius, metres, Torso::kLargestRadius); }
    float TorsoRadius() const { return GetTorso().radius; }
    /// @param metres  clamped to 0 .. Torso::kLargestNeck
    void SetNeckHeight(float metres) { SetTorso(&Torso::neckHeight, metres, Torso::kLargestNeck); }
    float NeckHeight() const { return GetTorso().neckHeight; }
    /// @param coefficient  clamped to 0 .. 1
    void SetTorsoReflection(float coefficient) { SetTorso(&Torso::reflection, coefficient, 1.f); }
    float TorsoReflection() const { return GetTorso().reflection; }

private:
    EarPaths PathsFrom(const tav::CartesianVector& position) const override
        TAV_REQUIRES(controlLock_);
    ShadowCorners Corners() const override TAV_REQUIRES(controlLock_);
    void SetTorso(float Torso::*value, float number, float largest);
    Torso GetTorso() const;

    Torso torso_ TAV_GUARDED_BY(controlLock_);
};

}  // namespace Quilo
