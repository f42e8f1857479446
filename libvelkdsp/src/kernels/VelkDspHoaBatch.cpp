// SPDX-License-Identifier: MIT
#include "kernels/VelkDspHoaBatch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace tav {

namespace {

constexpr auto kCount = static_cast<std::size_t>(kHoaDirections);

using Block = std::array<float, 3 * kCount>;

/// @param directions  at most kCount; the remaining columns keep their values
void Fill(Block& block, std::span<const CartesianVector> directions) {
    for (std::size_t k = 0; k < directions.size(); ++k) {
        const CartesianVector& d = directions[k];
        const bool isOrigin = d.x == 0.f && d.y == 0.f && d.z == 0.f;
        block[k] = isOrigin ? std::copysign(1.f, d.x) : d.x;
        block[k + kCount] = d.y;
        block[k + 2 * kCount] = d.z;
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
    const auto from = [&](std::size_t i) {
        const auto rest = directions.subspan(std::min(i, directions.size()));
        return rest.first(std::min(kCount, rest.size()));
    };
    // A block is filled number by number and read as vectors, for which a processor waits until
    // all of its stores have reached the cache. So the next one is filled while one is encoded.
    Block blocks[2];
    for (Block& block : blocks) block.fill(1.f);  // any direction but 0, for unused columns
    Fill(blocks[0], from(0));
    for (std::size_t i = 0; i < directions.size(); i += kCount) {
        const std::size_t count = from(i).size();
        Fill(blocks[(i / kCount + 1) % 2], from(i + kCount));
        kernels.encode(tables, blocks[i / kCount % 2].data(), channels.Data());
        kernels.turn(channels.Data(), static_cast<std::ptrdiff_t>(numChannels), gains.Row(i).data(),
                     static_cast<std::ptrdiff_t>(gains.Columns()),
                     static_cast<std::ptrdiff_t>(count));
    }
}

}  // namespace tav
