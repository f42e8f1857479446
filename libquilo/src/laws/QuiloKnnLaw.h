// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspKdTreeHelper.h"

#include <span>
#include <vector>

namespace Quilo {

/// The loudspeakers nearest to a source, weighted by inverse distance, with unit energy.
/// In single precision.  Thread: control.
class KnnLaw {
public:
    /// No loudspeakers.
    KnnLaw() = default;
    /// @param speakers  in the unit of the sources, squares of their distances finite
    /// Throws: std::bad_alloc.
    explicit KnnLaw(const tav::CartesianArray& speakers);

    /// @param source  as the loudspeakers      @param numNeighbors  from 1, all where more
    /// @param gains   overwritten; 0 without loudspeakers and beyond them
    /// Allocates nothing.
    void Gains(const tav::CartesianVector& source, unsigned numNeighbors, std::span<float> gains);

    /// Whether no loudspeaker is more than 0.1 degree above or below the listener's ears.
    bool IsPlanar() const noexcept { return isPlanar_; }

private:
    tav::KdTreeHelper tree_;
    bool isPlanar_ = true;
    // of the last query; room for all loudspeakers
    std::vector<std::size_t> nearest_;
    std::vector<float> distances_;
};

}  // namespace Quilo
