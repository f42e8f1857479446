// SPDX-License-Identifier: MIT
// Vector-base panning over a horizontal ring of loudspeakers; heights are ignored.
#pragma once

#include "laws/QuiloVbapLaw.h"
#include "pan/QuiloLayoutPanning.h"

namespace Quilo {

/// A layout as a ring round the listener.
struct RingLayout {
    RingLayout() = default;
    explicit RingLayout(const tav::CartesianArray& speakers);

    SpeakerRing ring;
    bool surroundsListener = true;  // seen from above; fewer than three need not
};

/// Feeds each source to the two loudspeakers around its azimuth. Silent until a layout comes.
class VectorBased2DPanning : public LayoutPanning<RingLayout> {
protected:
    VectorBased2DPanning(unsigned numInputs, unsigned numOutputs)
        : LayoutPanning(numInputs, numOutputs) {}

private:
    /// Throws: tav::Exception when three or more loudspeakers do not surround the listener; the new
    /// layout is in force all the same.
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_);

    /// Gives one source's gains their final size.
    virtual void Normalise(std::span<float> gains) const = 0;
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
