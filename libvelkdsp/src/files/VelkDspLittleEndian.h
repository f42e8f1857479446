// SPDX-License-Identifier: MIT
// Little-endian numbers in byte blocks, whatever the machine's own order is.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

using ByteBlock = std::vector<std::uint8_t>;

/// Fills `bytes`, at most 8 of them, with the lowest bytes of `value`.
inline void StoreLittleEndian(std::span<std::uint8_t> bytes, std::uint64_t value) noexcept {
    for (std::size_t k = 0; k < bytes.size(); ++k) {
        bytes[k] = static_cast<std::uint8_t>(value >> (8 * k));
    }
}

/// Appends the lowest `numBytes` bytes of `value`.
inline void PutLittleEndian(ByteBlock& bytes, std::uint64_t value, unsigned numBytes) {
    bytes.resize(bytes.size() + numBytes);
    StoreLittleEndian(std::span(bytes).last(numBytes), value);
}

/// Reads a number from the first sizeof(Number) bytes of `bytes`, which must have that many.
template <std::unsigned_integral Number>
Number GetLittleEndian(std::span<const std::uint8_t> bytes) noexcept {
    std::uint64_t value = 0;
    for (std::size_t k = 0; k < sizeof(Number); ++k) value |= std::uint64_t{bytes[k]} << (8 * k);
    return static_cast<Number>(value);
}

}  // namespace tav
