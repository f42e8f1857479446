// SPDX-License-Identifier: MIT
#include "SdifReader.h"

#include <algorithm>
#include <bit>
#include <type_traits>

namespace Sdif {

namespace {

constexpr std::uint64_t kGeneralHeaderSize = 16;
constexpr std::uint64_t kFrameHeaderSize = 16;  // what its size counts
constexpr std::uint64_t kMatrixHeaderSize = 16;
constexpr std::uint64_t kNowhere = ~std::uint64_t{0};
constexpr std::string_view kBlanks{" \t\r\n\0", 5};

std::uint64_t BigEndian(std::string_view bytes) noexcept {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

template <class T>
double Whole(std::uint64_t bits) noexcept {
    return static_cast<double>(static_cast<T>(static_cast<std::make_unsigned_t<T>>(bits)));
}

/// @param bits  those of the element, the rest 0
double Number(ElementType type, std::uint64_t bits) {
    switch (type) {
        case ElementType::Float32:
            return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        case ElementType::Float64: return std::bit_cast<double>(bits);
        case ElementType::Int8: return Whole<std::int8_t>(bits);
        case ElementType::Int16: return Whole<std::int16_t>(bits);
        case ElementType::Int32: return Whole<std::int32_t>(bits);
        case ElementType::Int64: return Whole<std::int64_t>(bits);
        case ElementType::UInt8:
        case ElementType::UInt16:
        case ElementType::UInt32:
        case ElementType::UInt64:
        case ElementType::Text: return static_cast<double>(bits);
    }
    throw Error("matrix with elements of an unknown type");
}

std::string_view Trimmed(std::string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// "{ name value; name value; }", once or more. The name ends at the first blank.
void AppendPairs(std::string_view text, NameValues& pairs) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(";{}"), text.size());
        const std::string_view entry = Trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (entry.empty()) continue;
        const std::size_t nameEnd = std::min(entry.find_first_of(kBlanks), entry.size());
        pairs.emplace_back(entry.substr(0, nameEnd), Trimmed(entry.substr(nameEnd)));
    }
}

bool IsChunk(std::string_view signature) noexcept {
    using namespace Signatures;
    return signature == kNameValues || signature == kTypes || signature == kStreams;
}

}  // namespace

Reader::Reader(std::istream& stream) : stream_(stream) {
    stream_.seekg(0, std::ios::end);
    const std::streamoff size = stream_.tellg();
    if (!stream_ || size < 0) throw Error("file cannot be read");
    size_ = position_ = static_cast<std::uint64_t>(size);
    MoveTo(0);
    if (size_ < kGeneralHeaderSize || ReadSignature(size_) != Signatures::kFile) {
        throw Error("not an SDIF file");
    }
    const std::uint64_t rest = ReadWord(size_);
    if (rest > Left(size_)) throw Error("general header is cut off");
    MoveTo(position_ + rest);
}

NameValues Reader::ReadNameValues() {
    NameValues pairs;
    while (Left(size_) >= 8) {
        const std::uint64_t start = position_;
        const std::string signature = ReadSignature(size_);
        if (!IsChunk(signature)) {
            MoveTo(start);
            break;
        }
        const std::uint64_t length = ReadWord(size_);
        if (length > Left(size_)) throw Error("ASCII chunk is cut off");
        const std::uint64_t end = position_ + length;
        if (signature == Signatures::kNameValues) AppendPairs(Read(length, end), pairs);
        // Some writers count the padding in the size, others do not.
        MoveTo(std::min(end + PaddingOf(end), size_));
    }
    frameEnd_ = position_;
    return pairs;
}

std::optional<FrameHeader> Reader::NextFrame() {
    MoveTo(frameEnd_);
    matricesLeft_ = 0;
    if (Left(size_) == 0) return std::nullopt;
    FrameHeader frame;
    frame.signature = ReadSignature(size_);
    const std::uint64_t length = ReadWord(size_);
    if (length < kFrameHeaderSize) throw Error("frame is shorter than its header");
    frameEnd_ = position_ + length;
    frame.time = Number(ElementType::Float64, BigEndian(Read(8, frameEnd_)));
    frame.stream = static_cast<std::int32_t>(ReadWord(frameEnd_));
    frame.numMatrices = matricesLeft_ = ReadWord(frameEnd_);
    nextMatrix_ = position_;
    return frame;
}

std::optional<MatrixHeader> Reader::NextMatrix() {
    if (nextMatrix_ == kNowhere) throw Error("matrix is cut off");
    if (matricesLeft_ == 0) return std::nullopt;
    --matricesLeft_;
    MoveTo(nextMatrix_);
    if (Left(frameEnd_) < kMatrixHeaderSize) throw Error("matrix header is cut off");
    matrix_.signature = ReadSignature(frameEnd_);
    matrix_.type = static_cast<ElementType>(ReadWord(frameEnd_));
    matrix_.rows = ReadWord(frameEnd_);
    matrix_.columns = ReadWord(frameEnd_);
    const std::uint64_t elementSize = static_cast<std::uint32_t>(matrix_.type) & 0xff;
    const std::uint64_t count = std::uint64_t{matrix_.rows} * matrix_.columns;
    const bool isCutOff = elementSize != 0 && count > Left(frameEnd_) / elementSize;
    const std::uint64_t length = isCutOff ? 0 : count * elementSize;
    // The last padding of a frame may be missing.
    const std::uint64_t padded = std::min(length + PaddingOf(length), Left(frameEnd_));
    nextMatrix_ = isCutOff ? kNowhere : position_ + padded;
    return matrix_;
}

std::vector<double> Reader::ReadMatrix() {
    if (nextMatrix_ == kNowhere) throw Error("matrix is cut off");
    // Refuses elements of unknown type, whose size may be 0 and their number anything.
    Number(matrix_.type, 0);
    const std::uint64_t elementSize = static_cast<std::uint32_t>(matrix_.type) & 0xff;
    const std::string bytes =
        Read(std::uint64_t{matrix_.rows} * matrix_.columns * elementSize, frameEnd_);
    std::vector<double> values;
    values.reserve(bytes.size() / elementSize);
    for (std::string_view rest = bytes; !rest.empty(); rest.remove_prefix(elementSize)) {
        values.push_back(Number(matrix_.type, BigEndian(rest.substr(0, elementSize))));
    }
    return values;
}

std::string Reader::Read(std::uint64_t count, std::uint64_t end) {
    if (count > Left(end)) throw Error("file is cut off");
    std::string bytes(static_cast<std::size_t>(count), '\0');
    stream_.read(bytes.data(), static_cast<std::streamsize>(count));
    if (!stream_) throw Error("file cannot be read");
    position_ += count;
    return bytes;
}

std::uint32_t Reader::ReadWord(std::uint64_t end) {
    return static_cast<std::uint32_t>(BigEndian(Read(4, end)));
}

std::string Reader::ReadSignature(std::uint64_t end) { return Read(4, end); }

void Reader::MoveTo(std::uint64_t position) {
    if (position == position_) return;  // a seek would empty the stream's buffer
    if (position > size_) throw Error("file is cut off");
    stream_.seekg(static_cast<std::streamoff>(position));
    if (!stream_) throw Error("file cannot be read");
    position_ = position;
}

}  // namespace Sdif
