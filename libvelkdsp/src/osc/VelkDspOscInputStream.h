// SPDX-License-Identifier: MIT
// Reads OSC packets into messages and bundles of their own.
//
// The checks are those of OscReader; here a fault is a tav::Exception with its text.
#pragma once

#include "osc/VelkDspOscBundle.h"
#include "osc/VelkDspOscReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace tav {

/// Bytes in memory, which must outlive it.
class MemoryInputStream {
public:
    explicit MemoryInputStream(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}
    MemoryInputStream(const void* bytes, std::size_t size) noexcept
        : bytes_(static_cast<const std::byte*>(bytes), size) {}

    std::span<const std::byte> Bytes() const noexcept { return bytes_; }

private:
    std::span<const std::byte> bytes_;
};

/// A packet is a message or a bundle.
using OSCPacket = std::variant<OSCMessage, OSCBundle>;

/// Each call moves on behind what it has read, padding included.
/// Throws: tav::Exception when there is no such item; then nothing more is to be read.
class OSCInputStream {
public:
    explicit OSCInputStream(const MemoryInputStream& stream) noexcept : reader_(stream.Bytes()) {}

    std::size_t NumLeft() const noexcept { return reader_.NumLeft(); }

    std::int32_t ReadInt32();
    std::int64_t ReadInt64();
    float ReadFloat();
    double ReadDouble();
    std::uint64_t ReadTimeTag();
    std::string ReadString();
    OSCArgument::Blob ReadBlob();
    /// Without the comma.
    std::string ReadTypeTags();
    OSCMessage ReadMessage();
    /// Goes on to the end of the stream.
    OSCBundle ReadBundle();
    OSCBundle::Element ReadBundleElement();
    OSCPacket ReadPacket();

private:
    OSCBundle ReadBundle(std::size_t size, int depth);
    OSCBundle::Element ReadElement(int depth);
    void Require(bool isRead) const;

    OscReader reader_;
};

/// A copy of a message that was read in place.
OSCMessage CopyOf(const OscMessageView& view);

}  // namespace tav
