// SPDX-License-Identifier: MIT
// Numbers in byte blocks of either order, whatever the machine's own order is.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

using ByteBlock = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

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

/// The number in the first `numBytes` bytes, at most 8, at `bytes`. With constant arguments
/// compilers make one load of it.
template <std::endian order>
constexpr std::uint64_t LoadNumber(const std::uint8_t* bytes, std::size_t numBytes) noexcept {
    std::uint64_t value = 0;
    for (std::size_t k = 0; k < numBytes; ++k) {
        const std::size_t place = order == std::endian::little ? k : numBytes - 1 - k;
        value |= std::uint64_t{bytes[k]} << (8 * place);
    }
    return value;
}

/// Reads a number from the first sizeof(Number) bytes of `bytes`, which must have that many.
template <std::unsigned_integral Number>
constexpr Number GetLittleEndian(Bytes bytes) noexcept {
    return static_cast<Number>(
        LoadNumber<std::endian::little>(bytes.first(sizeof(Number)).data(), sizeof(Number)));
}
template <std::unsigned_integral Number>
constexpr Number GetBigEndian(Bytes bytes) noexcept {
    return static_cast<Number>(
        LoadNumber<std::endian::big>(bytes.first(sizeof(Number)).data(), sizeof(Number)));
}

}  // namespace tav
