// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscInputStream.h"

#include "text/VelkDspException.h"

namespace tav {

namespace {

constexpr SourceSite kInputStreamSite{"libvelkdsp/src/osc/VelkDspOscInputStream", 0};

OSCArgument ArgumentOf(const OscValue& value) {
    switch (value.tag) {
        case 'i': return OSCArgument(static_cast<std::int32_t>(value.integer));
        case 'h': return OSCArgument(value.integer);
        case 's': return OSCArgument(std::string(value.text));
        case 'b': return OSCArgument(OSCArgument::Blob(value.blob.begin(), value.blob.end()));
        case 'f':
        case 'd': return OSCArgument(value.number);
        default: return OSCArgument(value.tag == 'T');
    }
}

}  // namespace

OSCMessage CopyOf(const OscMessageView& view) {
    OSCMessage message(view.address);
    OscReader reader(view.arguments);
    for (const char tag : view.tags) {
        OscValue value;
        reader.ReadArgument(tag, value);
        message.Add(ArgumentOf(value));
    }
    return message;
}

void OSCInputStream::Require(bool isRead) const {
    if (isRead) return;
    throw Exception(OscFaultText(reader_.Fault(), reader_.UnknownTag()), kInputStreamSite);
}

std::int32_t OSCInputStream::ReadInt32() {
    std::int32_t value = 0;
    Require(reader_.ReadInt32(value));
    return value;
}

std::int64_t OSCInputStream::ReadInt64() {
    std::int64_t value = 0;
    Require(reader_.ReadInt64(value));
    return value;
}

float OSCInputStream::ReadFloat() {
    float value = 0.f;
    Require(reader_.ReadFloat(value));
    return value;
}

double OSCInputStream::ReadDouble() {
    double value = 0.0;
    Require(reader_.ReadDouble(value));
    return value;
}

std::uint64_t OSCInputStream::ReadTimeTag() {
    std::uint64_t value = 0;
    Require(reader_.ReadTimeTag(value));
    return value;
}

std::string OSCInputStream::ReadString() {
    std::string_view text;
    Require(reader_.ReadString(text));
    return std::string(text);
}

OSCArgument::Blob OSCInputStream::ReadBlob() {
    std::span<const std::byte> bytes;
    Require(reader_.ReadBlob(bytes));
    return {bytes.begin(), bytes.end()};
}

std::string OSCInputStream::ReadTypeTags() {
    std::string_view tags;
    Require(reader_.ReadTypeTags(tags));
    return std::string(tags);
}

OSCMessage OSCInputStream::ReadMessage() {
    OscMessageView view;
    Require(reader_.ReadMessage(view));
    return CopyOf(view);
}

OSCBundle OSCInputStream::ReadBundle() { return ReadBundle(NumLeft(), 0); }

OSCBundle OSCInputStream::ReadBundle(std::size_t size, int depth) {
    if (depth > OscReader::kDeepestBundle) Require(reader_.Fail(OscFault::TooDeep));
    const std::size_t begin = NumLeft();
    std::uint64_t timeTag = 0;
    Require(reader_.ReadBundleStart(timeTag));
    OSCBundle bundle(timeTag);
    while (begin - NumLeft() < size) {
        OSCBundle::Element element = ReadElement(depth);
        if (element.IsMessage()) {
            bundle.Add(element.Message());
        } else {
            bundle.Add(element.Bundle());
        }
    }
    return bundle;
}

OSCBundle::Element OSCInputStream::ReadBundleElement() { return ReadElement(0); }

OSCBundle::Element OSCInputStream::ReadElement(int depth) {
    std::size_t size = 0;
    char kind = '/';
    Require(reader_.ReadElementStart(size, kind));
    const std::size_t begin = NumLeft();
    OSCBundle::Element element = kind == '/' ? OSCBundle::Element(ReadMessage())
                                             : OSCBundle::Element(ReadBundle(size, depth + 1));
    if (begin - NumLeft() == size) return element;
    Require(reader_.Fail(kind == '/' ? OscFault::MessageSizeWrong : OscFault::BundleSizeWrong));
    return element;
}

OSCPacket OSCInputStream::ReadPacket() {
    // The first byte decides; an empty packet is no message.
    const char kind = NumLeft() > 0 ? static_cast<char>(reader_.Next()) : '/';
    if (kind == '#') return ReadBundle();
    if (kind != '/') Require(reader_.Fail(OscFault::PacketInvalid));
    return ReadMessage();
}

}  // namespace tav
