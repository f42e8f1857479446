// SPDX-License-Identifier: MIT
// Writes OSC packets: what OSCInputStream reads, byte by byte the same.
#pragma once

#include "osc/VelkDspOscBundle.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tav {

/// Appends to a packet.  Throws: std::bad_alloc.
class OSCOutputStream {
public:
    const std::vector<std::byte>& Bytes() const noexcept { return bytes_; }
    void Clear() noexcept { bytes_.clear(); }

    void WriteInt32(std::int32_t value);
    void WriteInt64(std::int64_t value);
    void WriteFloat(float value);
    void WriteTimeTag(std::uint64_t value);
    /// Ends at the first zero character, if there is one.
    void WriteString(std::string_view text);
    void WriteBlob(std::span<const std::byte> bytes);
    void WriteArgument(const OSCArgument& argument);
    void WriteMessage(const OSCMessage& message);
    void WriteBundle(const OSCBundle& bundle);

private:
    template <class Word>
    void WriteWord(Word word);
    void WriteBytes(std::span<const std::byte> bytes);
    void Pad();

    std::vector<std::byte> bytes_;
};

}  // namespace tav
