// SPDX-License-Identifier: MIT
// Ambisonic encoding: the outputs are harmonics of the sound field, in ACN order.
#pragma once

#include "math/VelkDspHoaEncodingVector.h"
#include "pan/QuiloAmplitudePanning.h"

namespace Quilo {

/// What the description of an ambisonic panner says beyond its type.
struct HoaState {
    unsigned order = 0;
    tav::SphericalHarmonic::Normalization normalization =
        tav::SphericalHarmonic::Normalization::SN3D;
    bool nearfieldCompensation = false;
    bool highPass = false;
    float speakersRadius = 1.f;  ///< metres
    tav::HoaEncodingVector::Mode mode = tav::HoaEncodingVector::Mode::Precise;
};
/// Appends a line for each.
void AppendHoaLines(std::vector<std::string>& lines, const HoaState& state);

/// "output #2 : Y(1,-1) (Y)" for output 1 of three dimensions.  @param output  below the outputs
std::string HoaOutputLabel(unsigned output, unsigned dimension);

/// The order whose channels `numOutputs` are; 0 where they are no whole order.
unsigned HoaOrderOf(unsigned numOutputs, unsigned dimension);

/// SN2D in two dimensions, SN3D otherwise.
tav::SphericalHarmonic::Normalization DefaultNormalization(unsigned dimension);
/// `wanted`, or the default of the dimension where it does not have that one.
tav::SphericalHarmonic::Normalization NormalizationFor(
    unsigned dimension, tav::SphericalHarmonic::Normalization wanted);

/// The gains of a source are the harmonics in its direction; its distance does not matter.
/// The frame is that of all positions: x right, y front. A source in front is encoded in (1, -1),
/// one on the right in (1, 1).
class HOAPanning : public AmplitudePanning {
public:
    /// @param numOutputs  channels of a whole order; where they are not, only (0, 0) sounds
    HOAPanning(unsigned numInputs, unsigned numOutputs, unsigned dimension);

    std::string OutputLabel(unsigned output) const override;
    unsigned GetOrder() const override;
    /// Channels above `order` glide to silence; an order beyond the outputs is the largest there
    /// is.
    void SetOrder(unsigned order) override;
    void SetNormalization(tav::SphericalHarmonic::Normalization normalization) override;
    tav::SphericalHarmonic::Normalization GetNormalization() const override;
    void SetComputationMode(std::string_view keyword) override;
    void SetComputationMode(tav::HoaEncodingVector::Mode mode) override;
    tav::HoaEncodingVector::Mode GetComputationMode() const override;
    bool IsPlanar() const override { return encoding_.Dimension() == 2; }
    void Dump(std::vector<std::string>& lines) override;

protected:
    void ComputeGains(unsigned,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

private:
    void RecomputeAll(bool immediate) override;
    /// Silence above the order in use.
    void LimitOrder(std::span<float> gains) const;

    tav::HoaEncodingVector encoding_;
    unsigned order_;  // at most that of the encoding
};

class HOA2DPanning : public HOAPanning {
public:
    HOA2DPanning(unsigned numInputs, unsigned numOutputs) : HOAPanning(numInputs, numOutputs, 2) {}
};

class HOA3DPanning : public HOAPanning {
public:
    HOA3DPanning(unsigned numInputs, unsigned numOutputs) : HOAPanning(numInputs, numOutputs, 3) {}
};

}  // namespace Quilo
