// SPDX-License-Identifier: MIT
// Vector-base panning over a horizontal ring of loudspeakers; heights are ignored.
#pragma once

#include "laws/QuiloVbapLaw.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// Feeds each source to the two loudspeakers around its azimuth. Silent until a layout comes.
class VectorBased2DPanning : public AmplitudePanning {
protected:
    VectorBased2DPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

private:
    /// Throws: tav::Exception when three or more loudspeakers do not surround the listener; the new
    /// layout is in force all the same.
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_);

    /// Gives one source's gains their final size.
    virtual void Normalise(std::span<float> gains) const = 0;

    SpeakerRing ring_ TAV_GUARDED_BY(controlLock_);
};

/// Amplitude panning: the gains keep their ratio.
class Vbap2DPanning : public VectorBased2DPanning {
public:
    Vbap2DPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBased2DPanning(numInputs, numOutputs) {}

private:
    void Normalise(std::span<float> gains) const override { NormaliseAmplitude2D(gains); }
};

/// Intensity panning: the energies have the ratio of the gains.
class Vbip2DPanning : public VectorBased2DPanning {
public:
    Vbip2DPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBased2DPanning(numInputs, numOutputs) {}

private:
    void Normalise(std::span<float> gains) const override { NormaliseIntensity(gains); }
};

}  // namespace Quilo
