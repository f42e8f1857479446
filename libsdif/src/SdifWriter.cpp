// SPDX-License-Identifier: MIT
#include "SdifWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace Sdif {

namespace {

constexpr std::uint32_t kFormatVersion = 3;
constexpr std::uint32_t kTypesVersion = 1;

std::string BigEndian(std::uint64_t value, std::uint32_t numBytes) {
    std::string bytes;
    for (std::uint32_t k = numBytes; k-- > 0;) bytes += static_cast<char>(value >> (8 * k) & 0xff);
    return bytes;
}

std::string Size(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max()) throw Error("too large for SDIF");
    return BigEndian(size, 4);
}

std::string Signature(std::string_view signature) {
    if (signature.size() != 4) throw Error("a signature has four letters");
    return std::string(signature);
}

template <class T>
std::uint64_t Whole(double value) noexcept {
    using Limits = std::numeric_limits<T>;
    const double rounded = std::nearbyint(value);
    if (!(rounded > static_cast<double>(Limits::min()))) {
        return static_cast<std::uint64_t>(std::isnan(value) ? T{0} : Limits::min());
    }
    // The largest of 64 bits is no double; the next one above is.
    if (rounded >= static_cast<double>(Limits::max())) {
        return static_cast<std::uint64_t>(Limits::max());
    }
    return static_cast<std::uint64_t>(static_cast<T>(rounded));
}

std::uint64_t Bits(ElementType type, double value) {
    switch (type) {
        case ElementType::Float32: return std::bit_cast<std::uint32_t>(static_cast<float>(value));
        case ElementType::Float64: return std::bit_cast<std::uint64_t>(value);
        case ElementType::Int8: return Whole<std::int8_t>(value);
        case ElementType::Int16: return Whole<std::int16_t>(value);
        case ElementType::Int32: return Whole<std::int32_t>(value);
        case ElementType::Int64: return Whole<std::int64_t>(value);
        case ElementType::UInt8:
        case ElementType::Text: return Whole<std::uint8_t>(value);
        case ElementType::UInt16: return Whole<std::uint16_t>(value);
        case ElementType::UInt32: return Whole<std::uint32_t>(value);
        case ElementType::UInt64: return Whole<std::uint64_t>(value);
    }
    throw Error("matrix with elements of an unknown type");
}

std::string Encode(const Matrix& matrix) {
    if (matrix.values.size() != std::uint64_t{matrix.rows} * matrix.columns) {
        throw Error("matrix with another number of elements than it says");
    }
    const auto type = static_cast<std::uint32_t>(matrix.type);
    std::string bytes = Signature(matrix.signature) + BigEndian(type, 4) +
                        BigEndian(matrix.rows, 4) + BigEndian(matrix.columns, 4);
    for (const double value : matrix.values)
        bytes += BigEndian(Bits(matrix.type, value), type & 0xff);
    bytes.append(PaddingOf(bytes.size()), '\0');
    return bytes;
}

void CheckPair(const std::string& name, const std::string& value) {
    const bool fits = !name.empty() && name.find_first_of(" \t\r\n;{}") == std::string::npos &&
                      value.find_first_of(";{}") == std::string::npos;
    if (!fits) throw Error("\"" + name + "\" and its value cannot be written as a pair");
}

}  // namespace

Writer::Writer(std::ostream& stream) : stream_(stream) {
    Put(std::string(Signatures::kFile) + BigEndian(8, 4) + BigEndian(kFormatVersion, 4) +
        BigEndian(kTypesVersion, 4));
}

void Writer::WriteNameValues(const NameValues& pairs) {
    std::string text = "{\n";
    for (const auto& [name, value] : pairs) {
        CheckPair(name, value);
        text.append(name).append(1, '\t').append(value).append(";\n");
    }
    text += "}";
    text.append(PaddingOf(text.size()), ' ');
    Put(Signature(Signatures::kNameValues) + Size(text.size()) + text);
}

void Writer::WriteFrame(std::string_view signature,
                        double time,
                        std::int32_t stream,
                        std::span<const Matrix> matrices) {
    std::string body = BigEndian(Bits(ElementType::Float64, time), 8) +
                       BigEndian(static_cast<std::uint32_t>(stream), 4) + Size(matrices.size());
    for (const Matrix& matrix : matrices) body += Encode(matrix);
    Put(Signature(signature) + Size(body.size()) + body);
}

void Writer::Put(const std::string& bytes) {
    stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream_) throw Error("file cannot be written");
}

}  // namespace Sdif
