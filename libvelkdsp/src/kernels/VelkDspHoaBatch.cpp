// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaBatch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace tav {

namespace {

constexpr auto kCount = static_cast<std::size_t>(kHoaDirections);

using Block = std::array<double, 3 * kCount>;

/// @param directions  at most kCount; the remaining columns keep their values
void Fill(Block& block, std::span<const CartesianVector> directions) {
    for (std::size_t k = 0; k < directions.size(); ++k) {
        const CartesianVector& d = directions[k];
        const bool isOrigin = d.x == 0.f && d.y == 0.f && d.z == 0.f;
        const auto x = static_cast<double>(d.x);
        block[k] = isOrigin ? std::copysign(1.0, x) : x;
        block[k + kCount] = static_cast<double>(d.y);
        block[k + 2 * kCount] = static_cast<double>(d.z);
    }
}

}  // namespace

const HoaKernels& HoaKernels::Scalar() noexcept {
    static constexpr HoaKernels kNone{nullptr, nullptr};
    return kNone;
}

void ComputeHoaGains(HoaEncodingVector& encoding,
                     std::span<const CartesianVector> directions,
                     Matrix<float>& gains,
                     const HoaKernels& kernels) {
    using Mode = HoaEncodingVector::Mode;
    if (kernels.encode == nullptr || encoding.Dimension() != 3 ||
        encoding.GetMode() == Mode::Fast) {
        for (std::size_t i = 0; i < directions.size(); ++i) {
            encoding.Compute(directions[i], gains.Row(i));
        }
        return;
    }
    const std::size_t numChannels = encoding.NumChannels();
    if (gains.Columns() < numChannels) return;
    const HoaRecurrence& recurrence = encoding.Recurrence();
    const HoaTables tables{static_cast<std::ptrdiff_t>(recurrence.order),
                           recurrence.sectoral.Data(), recurrence.last.Data(),
                           recurrence.before.Data()};
    Vector<float> channels(numChannels * kCount);
    Block block;
    block.fill(1.0);  // any direction but 0, for unused columns
    for (std::size_t i = 0; i < directions.size(); i += kCount) {
        const std::size_t count = std::min(kCount, directions.size() - i);
        Fill(block, directions.subspan(i, count));
        kernels.encode(tables, block.data(), channels.Data());
        kernels.turn(channels.Data(), static_cast<std::ptrdiff_t>(numChannels), gains.Row(i).data(),
                     static_cast<std::ptrdiff_t>(gains.Columns()),
                     static_cast<std::ptrdiff_t>(count));
    }
}

}  // namespace tav
