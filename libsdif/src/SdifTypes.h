// SPDX-License-Identifier: MIT
// What an SDIF file is made of. All of it is big-endian.
//
//     file    "SDIF", size (8), versions of format and types; ASCII chunks; frames
//     chunk   "1NVT", "1TYP" or "1IDS", size, text
//     frame   signature, size, time (seconds), stream, number of matrices; the matrices
//     matrix  signature, type, rows, columns; elements, row by row; zeros up to a multiple of 8
//
// Signatures are four letters, sizes count the bytes that follow them and are 32 bits wide. Chunks
// and frames begin at multiples of 8.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sdif {

/// A file that is no SDIF file, is cut off, or contradicts itself; what cannot be written.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Of the elements of a matrix. The low byte is their size in bytes.
enum class ElementType : std::uint32_t {
    Float32 = 0x0004,
    Float64 = 0x0008,
    Int8 = 0x0101,
    Int16 = 0x0102,
    Int32 = 0x0104,
    Int64 = 0x0108,
    UInt8 = 0x0201,
    UInt16 = 0x0202,
    UInt32 = 0x0204,
    UInt64 = 0x0208,
    Text = 0x0301  // UTF-8 or other bytes; as numbers 0 to 255
};

struct FrameHeader {
    std::string signature;
    double time = 0.0;  ///< seconds
    std::int32_t stream = 0;
    std::uint32_t numMatrices = 0;
};

struct MatrixHeader {
    std::string signature;
    ElementType type = ElementType::Float32;  ///< of a read header any number
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
};

/// Names and values in the order of the file; a name may stand there more than once.
using NameValues = std::vector<std::pair<std::string, std::string>>;

namespace Signatures {
inline constexpr std::string_view kFile = "SDIF";
inline constexpr std::string_view kNameValues = "1NVT";
inline constexpr std::string_view kTypes = "1TYP";
inline constexpr std::string_view kStreams = "1IDS";
}  // namespace Signatures

inline constexpr std::uint64_t kAlignment = 8;

/// Bytes that are missing to the next multiple of kAlignment.
constexpr std::uint64_t PaddingOf(std::uint64_t size) noexcept {
    return (kAlignment - size % kAlignment) % kAlignment;
}

}  // namespace Sdif
