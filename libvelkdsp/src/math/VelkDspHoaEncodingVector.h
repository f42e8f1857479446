// SPDX-License-Identifier: MIT
// The gains that encode a direction into ambisonic channels.
//
// Angles are in the frame of the positions: phi counts counter-clockwise from +x, the right, so
// that channel (1, 1) points to the right and (1, -1) to the front.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspHoaLookupTable.h"
#include "math/VelkDspHoaRecurrence.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "math/VelkDspVector.h"

#include <cstdint>
#include <memory>
#include <span>

namespace tav {

/// All harmonics up to an order in one direction, in ACN order. In two dimensions these are the
/// sectoral harmonics at the true elevation, so that a source above or below weighs less in them.
/// The distance does not matter; the origin is encoded as a direction on +x. A direction that is
/// not finite leaves the gains as they are. Everything is computed in 64 bits. Thread: one at a
/// time.  Throws: std::bad_alloc where said.
class HoaEncodingVector {
public:
    /// Fast reads the gains from a table with a resolution of one degree.
    enum class Mode : std::int32_t { Precise, Fast };

    /// Throws: std::bad_alloc.
    HoaEncodingVector(unsigned order,
                      unsigned dimension,
                      SphericalHarmonic::Normalization normalization,
                      Mode mode = Mode::Precise);

    /// @param gains  the first NumChannels() are overwritten; with fewer, none is.
    /// Throws: nothing.
    void Compute(const CartesianVector& direction, std::span<float> gains) noexcept;
    /// @param gains  resized to NumChannels().  Throws: std::bad_alloc.
    void Compute(const CartesianVector& direction, Vector<float>& gains);
    void Compute(const CartesianVector& direction, Vector<double>& gains);

    /// Both throw std::bad_alloc, with nothing changed. The table of the fast mode is made at the
    /// first need and kept; an unknown mode acts as Precise.
    void SetMode(Mode mode);
    void SetNormalization(SphericalHarmonic::Normalization normalization);

    unsigned Order() const { return recurrence_.order; }
    unsigned Dimension() const { return recurrence_.dimension; }
    unsigned NumChannels() const { return numChannels_; }
    SphericalHarmonic::Normalization GetNormalization() const { return normalization_; }
    Mode GetMode() const { return mode_; }
    const HoaRecurrence& Recurrence() const { return recurrence_; }

private:
    template <class Real>
    void ComputeInto(const CartesianVector& direction, std::span<Real> gains) noexcept;

    SphericalHarmonic::Normalization normalization_;
    Mode mode_ = Mode::Precise;
    HoaRecurrence recurrence_;
    unsigned numChannels_;
    std::shared_ptr<const HoaLookupTable> table_;  // of this normalisation; null before Fast

    // scratch, whole blocks of the recurrence
    Vector<double> cosines_;  // Re w^m
    Vector<double> sines_;    // Im w^m
};

}  // namespace tav
