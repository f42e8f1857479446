// SPDX-License-Identifier: MIT
// Vector-base panning over loudspeakers in space.
#pragma once

#include "laws/QuiloVbap3DLaw.h"
#include "laws/QuiloVbapLaw.h"
#include "pan/QuiloLayoutPanning.h"

namespace Quilo {

/// A layout in space, ready for vector-base panning. Making one takes as long as Triangulate.
struct TripletLayout {
    TripletLayout() = default;
    explicit TripletLayout(const tav::CartesianArray& speakers);

    /// Before normalisation; all 0 on a flat layout.
    void Gains(const tav::CartesianVector& source, std::span<float> gains) const noexcept;

    TripletBank triplets;
    bool isFlat = true;
};

/// Feeds each source to the three loudspeakers around its direction.
/// Silent until a layout comes, and for sources outside all triplets.
/// Deliberate: a layout that rises nowhere by more than 1 degree above the horizontal plane is
/// silent too.                                       (VectorBasedPanners, AreSilentOnFlatLayouts)
class VectorBasedPanning : public LayoutPanning<TripletLayout> {
protected:
    VectorBasedPanning(unsigned numInputs, unsigned numOutputs)
        : LayoutPanning(numInputs, numOutputs) {}

private:
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_);
    /// Appends the triplets, numbered from 1.
    void Describe(std::vector<std::string>& lines) const override TAV_REQUIRES(controlLock_);

    /// Gives one source's gains their final size.
    virtual void Normalise(std::span<float> gains) const = 0;
};

/// Amplitude panning: the gains keep their ratio.
class VbapPanning : public VectorBasedPanning {
public:
    VbapPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBasedPanning(numInputs, numOutputs) {}

private:
    void Normalise(std::span<float> gains) const override { NormaliseAmplitude3D(gains); }
};

/// Intensity panning: the energies have the ratio of the gains.
class VbipPanning : public VectorBasedPanning {
public:
    VbipPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBasedPanning(numInputs, numOutputs) {}

private:
    void Normalise(std::span<float> gains) const override { NormaliseIntensity(gains); }
};

}  // namespace Quilo
