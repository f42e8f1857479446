// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Quilo {

/// Three numbers of each loudspeaker as three rows, the form in which kernels read a layout.
class SpeakerRows {
public:
    /// Rows can be read up to a multiple of this many numbers; surplus ones are 0.
    static constexpr std::size_t kLanes = 16;

    SpeakerRows() = default;
    explicit SpeakerRows(std::span<const tav::CartesianVector> speakers);

    std::size_t Size() const noexcept { return size_; }
    /// The first row; the next ones follow, Stride() numbers apart.
    const float* Data() const noexcept { return numbers_.data(); }
    std::ptrdiff_t Stride() const noexcept { return static_cast<std::ptrdiff_t>(stride_); }

private:
    std::size_t size_ = 0;
    std::size_t stride_ = 0;
    std::vector<float> numbers_;
};

/// The point, or one nearer where squares of its distances would not fit 32 bits.
tav::CartesianVector WithinReach(const tav::CartesianVector& point) noexcept;
/// Every point, likewise.  Throws: std::bad_alloc.
tav::CartesianArray WithinReach(const tav::CartesianArray& points);

}  // namespace Quilo
