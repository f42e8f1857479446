// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscReader.h"

#include <array>
#include <bit>
#include <cstring>

namespace tav {

namespace {

constexpr const char* kTexts[] = {
    "",
    "OSC input stream exhausted while reading int32",
    "OSC input stream exhausted while reading int64",
    "OSC input stream exhausted while reading float",
    "OSC input stream exhausted while reading double",
    "OSC input stream exhausted while reading time tag",
    "OSC input stream format error: missing padding zeros",
    "OSC input stream exhausted while reading string",
    "OSC input stream exhausted before finding null terminator of string",
    "OSC input stream exhausted while reading blob",
    "OSC input stream exhausted before reaching end of blob",
    "OSC input stream exhausted while reading type tag string",
    "OSC input stream format error: expected type tag string",
    "OSC input stream format error: encountered unsupported type tag : ",
    "OSC input stream: internal error while reading message argument",
    "OSC input stream exhausted while reading bundle",
    "OSC input stream format error: bundle does not start with string '#bundle'",
    "OSC input stream exhausted while reading bundle element size",
    "OSC input stream format error: invalid bundle element size",
    "OSC input stream exhausted while reading bundle element content",
    "OSC input stream: invalid bundle element content",
    "OSC input stream format error: wrong element content size encountered while reading message",
    "OSC input stream format error: wrong element content size encountered while reading bundle",
    "OSC input stream format error: too many nested bundles",
    "OSC input stream: invalid packet content",
};
static_assert(std::size(kTexts) == static_cast<std::size_t>(OscFault::PacketInvalid) + 1);

/// What is known of a type tag: the bytes of its argument, or that these tell themselves how many
/// they are, or that there is no way to read it, or that there is no such tag.
constexpr std::uint8_t kTellsItself = 0xFD, kUnreadable = 0xFE, kUnknownTag = 0xFF;

constexpr auto kArgumentBytes = [] {
    std::array<std::uint8_t, 256> sizes{};
    sizes.fill(kUnknownTag);
    sizes['F'] = sizes['T'] = 0;
    sizes['i'] = sizes['f'] = 4;
    sizes['h'] = sizes['d'] = 8;
    sizes['s'] = sizes['b'] = kTellsItself;
    sizes['I'] = sizes['N'] = kUnreadable;
    return sizes;
}();

std::uint8_t ArgumentBytes(char tag) noexcept TAV_NONBLOCKING {
    return kArgumentBytes[static_cast<unsigned char>(tag)];
}

constexpr std::size_t kSmallestBundle = 16;  // "#bundle" with its zero, and the time tag

const char* Chars(std::span<const std::byte> bytes) noexcept TAV_NONBLOCKING {
    return reinterpret_cast<const char*>(bytes.data());
}

}  // namespace

std::string OscFaultText(OscFault fault, char unknownTag) {
    std::string text = kTexts[static_cast<std::size_t>(fault)];
    if (fault == OscFault::UnknownTypeTag) text += unknownTag;
    return text;
}

bool OscReader::Take(std::size_t count,
                     std::span<const std::byte>& bytes) noexcept TAV_NONBLOCKING {
    if (rest_.size() < count) return false;
    bytes = rest_.first(count);
    rest_ = rest_.subspan(count);
    return true;
}

bool OscReader::SkipPadding(std::size_t itemSize) noexcept TAV_NONBLOCKING {
    const std::size_t count = (0 - itemSize) % 4;
    if (rest_.size() < count) return Fail(OscFault::Padding);
    for (std::size_t k = 0; k < count; ++k) {
        if (rest_[k] != std::byte{0}) return Fail(OscFault::Padding);
    }
    rest_ = rest_.subspan(count);
    return true;
}

bool OscReader::ReadInt32(std::int32_t& value) noexcept TAV_NONBLOCKING {
    std::uint32_t word = 0;
    if (!ReadWord(word, OscFault::NoInt32)) return false;
    value = std::bit_cast<std::int32_t>(word);
    return true;
}

bool OscReader::ReadInt64(std::int64_t& value) noexcept TAV_NONBLOCKING {
    std::uint64_t word = 0;
    if (!ReadWord(word, OscFault::NoInt64)) return false;
    value = std::bit_cast<std::int64_t>(word);
    return true;
}

bool OscReader::ReadDouble(double& value) noexcept TAV_NONBLOCKING {
    std::uint64_t word = 0;
    if (!ReadWord(word, OscFault::NoDouble)) return false;
    value = std::bit_cast<double>(word);
    return true;
}

bool OscReader::ReadTimeTag(std::uint64_t& value) noexcept TAV_NONBLOCKING {
    return ReadWord(value, OscFault::NoTimeTag);
}

bool OscReader::ReadString(std::string_view& text) noexcept TAV_NONBLOCKING {
    if (NumLeft() < 4) return Fail(OscFault::NoString);
    const void* const end = std::memchr(rest_.data(), 0, rest_.size());
    if (end == nullptr) return Fail(OscFault::NoTerminator);
    const auto length = static_cast<std::size_t>(static_cast<const char*>(end) - Chars(rest_));
    text = {Chars(rest_), length};
    rest_ = rest_.subspan(length + 1);
    return SkipPadding(length + 1);
}

bool OscReader::ReadBlob(std::span<const std::byte>& bytes) noexcept TAV_NONBLOCKING {
    if (NumLeft() < 4) return Fail(OscFault::NoBlob);
    std::int32_t size = 0;
    ReadInt32(size);
    // Deliberate: the remainder, not the rounded size, so that an empty blob at the very end of a
    // packet is refused.
    const std::int64_t needed = (std::int64_t{size} + 3) % 4;
    if (static_cast<std::int64_t>(NumLeft()) < needed) return Fail(OscFault::BlobEnds);
    if (size < 0 || !Take(static_cast<std::size_t>(size), bytes)) return Fail(OscFault::BlobEnds);
    return SkipPadding(bytes.size());
}

bool OscReader::ReadTypeTags(std::string_view& tags) noexcept TAV_NONBLOCKING {
    if (NumLeft() < 4) return Fail(OscFault::NoTypeTags);
    const std::string_view text(Chars(rest_), rest_.size());
    if (text.front() != ',') return Fail(OscFault::TypeTagsExpected);
    std::size_t end = 1;
    for (; end < text.size() && text[end] != '\0'; ++end) {
        if (ArgumentBytes(text[end]) != kUnknownTag) continue;
        unknownTag_ = text[end];
        return Fail(OscFault::UnknownTypeTag);
    }
    if (end == text.size()) return Fail(OscFault::NoTypeTags);
    tags = text.substr(1, end - 1);
    rest_ = rest_.subspan(end + 1);
    return SkipPadding(end + 1);
}

bool OscReader::ReadArgument(char tag, OscValue& value) noexcept TAV_NONBLOCKING {
    value.tag = tag;
    switch (tag) {
        case 'F':
        case 'T': return true;
        case 'i': {
            std::int32_t number = 0;
            if (!ReadInt32(number)) return false;
            value.integer = number;
            value.number = number;
            return true;
        }
        case 'h':
            if (!ReadInt64(value.integer)) return false;
            value.number = static_cast<double>(value.integer);
            return true;
        case 'f': {
            float number = 0.f;
            if (!ReadFloat(number)) return false;
            value.number = static_cast<double>(number);
            return true;
        }
        case 'd': return ReadDouble(value.number);
        case 's': return ReadString(value.text);
        case 'b': return ReadBlob(value.blob);
        default: return Fail(OscFault::NoArgumentReader);  // I, N
    }
}

bool OscReader::ReadMessage(OscMessageView& message) noexcept TAV_NONBLOCKING {
    if (!ReadString(message.address) || !ReadTypeTags(message.tags)) return false;
    const auto start = rest_;
    for (const char tag : message.tags) {
        const std::size_t size = ArgumentBytes(tag);
        if (size < kTellsItself && size <= rest_.size()) {
            rest_ = rest_.subspan(size);
            continue;
        }
        OscValue value;
        if (!ReadArgument(tag, value)) return false;
    }
    message.arguments = start.first(start.size() - rest_.size());
    return true;
}

bool OscReader::ReadBundleStart(std::uint64_t& timeTag) noexcept TAV_NONBLOCKING {
    if (NumLeft() < kSmallestBundle) return Fail(OscFault::NoBundle);
    std::string_view name;
    if (!ReadString(name)) return false;
    if (name != "#bundle") return Fail(OscFault::BundleExpected);
    return ReadTimeTag(timeTag);
}

bool OscReader::ReadElementStart(std::size_t& size, char& kind) noexcept TAV_NONBLOCKING {
    if (NumLeft() < 4) return Fail(OscFault::NoElementSize);
    std::int32_t signedSize = 0;
    ReadInt32(signedSize);
    if (signedSize < 4) return Fail(OscFault::ElementSizeInvalid);
    size = static_cast<std::size_t>(signedSize);
    if (NumLeft() < size) return Fail(OscFault::NoElementContent);
    kind = static_cast<char>(rest_.front());
    if (kind != '/' && kind != '#') return Fail(OscFault::ElementContentInvalid);
    return true;
}

}  // namespace tav
