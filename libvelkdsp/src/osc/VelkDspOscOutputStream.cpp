// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscOutputStream.h"

#include <bit>

namespace tav {

template <class Word>
void OSCOutputStream::WriteWord(Word word) {
    for (int shift = 8 * (static_cast<int>(sizeof(Word)) - 1); shift >= 0; shift -= 8) {
        bytes_.push_back(static_cast<std::byte>((word >> shift) & 0xFF));
    }
}

void OSCOutputStream::WriteBytes(std::span<const std::byte> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void OSCOutputStream::Pad() {
    while (bytes_.size() % 4 != 0) bytes_.push_back(std::byte{0});
}

void OSCOutputStream::WriteInt32(std::int32_t value) {
    WriteWord(std::bit_cast<std::uint32_t>(value));
}

void OSCOutputStream::WriteInt64(std::int64_t value) {
    WriteWord(std::bit_cast<std::uint64_t>(value));
}

void OSCOutputStream::WriteFloat(float value) { WriteWord(std::bit_cast<std::uint32_t>(value)); }

void OSCOutputStream::WriteTimeTag(std::uint64_t value) { WriteWord(value); }

void OSCOutputStream::WriteString(std::string_view text) {
    WriteBytes(std::as_bytes(std::span(text.substr(0, text.find('\0')))));
    bytes_.push_back(std::byte{0});
    Pad();
}

void OSCOutputStream::WriteBlob(std::span<const std::byte> bytes) {
    WriteInt32(static_cast<std::int32_t>(bytes.size()));
    WriteBytes(bytes);
    Pad();
}

void OSCOutputStream::WriteArgument(const OSCArgument& argument) {
    switch (argument.Tag()) {
        case 'i': return WriteInt32(argument.Int32());
        case 'h': return WriteInt64(argument.Int64());
        case 'f': return WriteFloat(argument.Float());
        case 's': return WriteString(argument.String());
        case 'b': return WriteBlob(argument.Bytes());
        default: return;  // T, F
    }
}

void OSCOutputStream::WriteMessage(const OSCMessage& message) {
    // An empty text is the address "/", whose slash OSCAddress has removed.
    WriteString(message.AddressText().empty() ? "/" : message.AddressText());
    WriteString("," + message.TypeTags());
    for (const OSCArgument& argument : message.Arguments()) WriteArgument(argument);
}

void OSCOutputStream::WriteBundle(const OSCBundle& bundle) {
    WriteString("#bundle");
    WriteTimeTag(bundle.TimeTag());
    for (const OSCBundle::Element& element : bundle.Elements()) {
        OSCOutputStream content;
        if (element.IsMessage()) {
            content.WriteMessage(element.Message());
        } else {
            content.WriteBundle(element.Bundle());
        }
        WriteBlob(content.bytes_);  // a size and so many bytes, a multiple of four
    }
}

}  // namespace tav
