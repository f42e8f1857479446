// SPDX-License-Identifier: MIT
// Vector-base panning over loudspeakers in space.
#pragma once

#include "laws/QuiloTriangulation.h"
#include "laws/QuiloVbap3DLaw.h"
#include "laws/QuiloVbapLaw.h"
#include "pan/QuiloAmplitudePanning.h"

#include <cstdint>

namespace Quilo {

/// Feeds each source to the three loudspeakers around its direction.
/// Silent until a layout comes, and for sources outside all triplets.
/// Deliberate: a layout that rises nowhere by more than 1 degree above the horizontal plane is
/// silent too.                                       (VectorBasedPanners, AreSilentOnFlatLayouts)
class VectorBasedPanning : public AmplitudePanning {
public:
    struct LoudSpeaker {
        std::uint32_t index = 0;  ///< its output
        float x = 0;
        float y = 0;
        float z = 0;
    };
    using Triplet = Quilo::Triplet;

    /// The triangulation waits until gains are next computed or the state is printed.
    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    /// Appends the triplets, numbered from 1.
    void Dump(std::vector<std::string>& lines) override;

protected:
    VectorBasedPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

    void ComputeGains(unsigned,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

    /// Gives one source's gains their final size.
    virtual void Normalise(std::span<float> gains) const = 0;

private:
    void TriangulateIfNeeded();

    tav::Vector<LoudSpeaker> speakers_;
    tav::Vector<Triplet> triplets_;
    TripletBank bank_;  // the same triplets, arranged for the choice
    bool needsTriangulation_ = false;
    bool isFlat_ = true;
};

/// Amplitude panning: the gains keep their ratio.
class VbapPanning : public VectorBasedPanning {
public:
    VbapPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBasedPanning(numInputs, numOutputs) {}

protected:
    void Normalise(std::span<float> gains) const override { NormaliseAmplitude3D(gains); }
};

/// Intensity panning: the energies have the ratio of the gains.
class VbipPanning : public VectorBasedPanning {
public:
    VbipPanning(unsigned numInputs, unsigned numOutputs)
        : VectorBasedPanning(numInputs, numOutputs) {}

protected:
    void Normalise(std::span<float> gains) const override { NormaliseIntensity(gains); }
};

}  // namespace Quilo
