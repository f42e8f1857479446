// SPDX-License-Identifier: MIT
// What the ambisonic panners have in common: channels, conventions, and the encoding in use.
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

/// "output #2 : Y(1,-1) (Y)" for output 1 of three dimensions; "dumpout" beyond the outputs.
std::string HoaOutputLabel(unsigned output, unsigned numOutputs, unsigned dimension);

/// The order whose channels `numOutputs` are; 0 where they are no whole order.
unsigned HoaOrderOf(unsigned numOutputs, unsigned dimension);

/// SN2D in two dimensions, SN3D otherwise.
tav::SphericalHarmonic::Normalization DefaultNormalization(unsigned dimension);
/// `wanted`, or the default of the dimension where it does not have that one.
tav::SphericalHarmonic::Normalization NormalizationFor(
    unsigned dimension, tav::SphericalHarmonic::Normalization wanted);

/// A panner that encodes directions in the channels of an order.
/// The frame is that of all positions: x right, y front. A source in front is encoded in (1, -1),
/// one on the right in (1, 1).
/// @tparam Base  Pan or AmplitudePanning
template <class Base>
class HoaEncoding : public Base {
public:
    std::string OutputLabel(unsigned output) const override;
    bool IsPlanar() const override { return dimension_ == 2; }

protected:
    using Base::controlLock_;

    /// @param numOutputs  channels of a whole order; where they are not, only (0, 0) sounds
    HoaEncoding(unsigned numInputs, unsigned numOutputs, unsigned dimension);

    tav::HoaEncodingVector& Encoding() TAV_REQUIRES(controlLock_) { return encoding_; }
    /// The gains of a source in this direction.  @param gains  at least the channels, overwritten
    void Encode(const tav::CartesianVector& source, std::span<float> gains)
        TAV_REQUIRES(controlLock_);
    /// Sets the gains of channels above the order in use to 0.
    void LimitOrder(std::span<float> gains) const TAV_REQUIRES(controlLock_);
    /// The values that Dump prints.
    virtual HoaState State() const TAV_REQUIRES(controlLock_);

private:
    using Normalization = tav::SphericalHarmonic::Normalization;
    using Mode = tav::HoaEncodingVector::Mode;

    /// Another order is in use; afterwards all sources are recomputed.
    virtual void OrderChanged(unsigned) TAV_REQUIRES(controlLock_) {}

    /// Channels above `order` glide to silence; an order beyond the outputs is the largest there
    /// is.
    void ApplyOrder(unsigned order) final TAV_REQUIRES(controlLock_);
    unsigned OrderInUse() const final TAV_REQUIRES(controlLock_) { return order_; }
    void ApplyNormalization(Normalization normalization) final TAV_REQUIRES(controlLock_);
    Normalization NormalizationInUse() const final TAV_REQUIRES(controlLock_) {
        return encoding_.GetNormalization();
    }
    void ApplyComputationMode(Mode mode) final TAV_REQUIRES(controlLock_);
    Mode ComputationModeInUse() const final TAV_REQUIRES(controlLock_) {
        return encoding_.GetMode();
    }
    std::shared_ptr<const void> MakeEncodingTable(Mode mode,
                                                  Normalization normalization) const final;
    void Describe(std::vector<std::string>& lines) const final TAV_REQUIRES(controlLock_);

    const unsigned dimension_;
    const unsigned largestOrder_;
    tav::HoaEncodingVector encoding_ TAV_GUARDED_BY(controlLock_);
    unsigned order_ TAV_GUARDED_BY(controlLock_);  // at most largestOrder_
};

extern template class HoaEncoding<Pan>;
extern template class HoaEncoding<AmplitudePanning>;

/// An ambisonic panner of fixed dimension, built from the numbers of inputs and outputs alone.
template <class Panner, unsigned dimension>
class HoaOfDimension : public Panner {
public:
    HoaOfDimension(unsigned numInputs, unsigned numOutputs)
        : Panner(numInputs, numOutputs, dimension) {}
};

}  // namespace Quilo
