// SPDX-License-Identifier: MIT
// Bits of a byte block, the highest of each byte first.
#pragma once

#include "files/VelkDspByteOrder.h"

#include <cstddef>
#include <cstdint>

namespace tav {

/// Behind the end there are zeros, so a damaged stream needs no check at every read; Position tells
/// afterwards whether more was read than there is.  Thread: any.
class Mp3BitReader {
public:
    explicit Mp3BitReader(Bytes bytes, std::size_t position = 0) noexcept
        : bytes_(bytes),
          position_(position) {}

    /// In bits from the beginning.
    std::size_t Position() const noexcept { return position_; }
    void Skip(std::size_t numBits) noexcept { position_ += numBits; }

    /// The next 32 bits, the first of them highest.
    std::uint32_t Peek() const noexcept {
        const std::size_t first = position_ / 8;
        const std::uint64_t bits = first + 8 <= bytes_.size()
                                       ? LoadNumber<std::endian::big>(bytes_.data() + first, 8)
                                       : LoadNearTheEnd(first);
        return static_cast<std::uint32_t>(bits << (position_ % 8) >> 32);
    }

    /// @param numBits  0 to 32
    std::uint32_t Take(unsigned numBits) noexcept {
        const std::uint64_t bits = Peek();
        position_ += numBits;
        return static_cast<std::uint32_t>(bits >> (32 - numBits));
    }

private:
    std::uint64_t LoadNearTheEnd(std::size_t first) const noexcept {
        std::uint64_t bits = 0;
        for (std::size_t k = first; k < first + 8; ++k) {
            bits = bits << 8 | (k < bytes_.size() ? bytes_[k] : 0);
        }
        return bits;
    }

    Bytes bytes_;
    std::size_t position_;
};

}  // namespace tav
