// SPDX-License-Identifier: MIT
// Reads OSC packets in place: neither allocates nor throws, so that it may run in any thread.
//
// All that is read is a view of the packet's bytes. Every size is compared with what is left before
// anything is read. OSCInputStream is the same with exceptions and copies.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace tav {

/// What was wrong with a packet.
enum class OscFault : std::uint8_t {
    None,
    NoInt32,
    NoInt64,
    NoFloat,
    NoDouble,
    NoTimeTag,
    Padding,
    NoString,
    NoTerminator,
    NoBlob,
    BlobEnds,
    NoTypeTags,
    TypeTagsExpected,
    UnknownTypeTag,
    NoArgumentReader,
    NoBundle,
    BundleExpected,
    NoElementSize,
    ElementSizeInvalid,
    NoElementContent,
    ElementContentInvalid,
    MessageSizeWrong,
    BundleSizeWrong,
    TooDeep,
    PacketInvalid,
};

/// One argument, in place. Numbers have both forms.
struct OscValue {
    char tag = 'F';  // as on the wire
    double number = 0.0;
    std::int64_t integer = 0;
    std::string_view text{};
    std::span<const std::byte> blob{};
};

/// A message that was read and found right; its views last as long as the packet.
struct OscMessageView {
    std::string_view address;
    std::string_view tags;  // without the comma
    std::span<const std::byte> arguments;
};

/// A place in a packet, which moves on behind whatever was read. After the first fault nothing more
/// is to be read.
class OscReader {
public:
    /// Bundles inside bundles beyond this are refused.
    static constexpr int kDeepestBundle = 32;

    explicit OscReader(std::span<const std::byte> bytes) noexcept : rest_(bytes) {}

    OscFault Fault() const noexcept TAV_NONBLOCKING { return fault_; }
    /// The offending character after OscFault::UnknownTypeTag.
    char UnknownTag() const noexcept TAV_NONBLOCKING { return unknownTag_; }
    std::size_t NumLeft() const noexcept TAV_NONBLOCKING { return rest_.size(); }
    /// The next byte.  @pre  there is one
    std::byte Next() const noexcept TAV_NONBLOCKING { return rest_.front(); }

    // Each returns false, with the fault noted, when there is no such item.
    bool ReadInt32(std::int32_t& value) noexcept TAV_NONBLOCKING;
    bool ReadInt64(std::int64_t& value) noexcept TAV_NONBLOCKING;
    bool ReadFloat(float& value) noexcept TAV_NONBLOCKING {
        std::uint32_t word = 0;
        if (!ReadWord(word, OscFault::NoFloat)) return false;
        value = std::bit_cast<float>(word);
        return true;
    }
    bool ReadDouble(double& value) noexcept TAV_NONBLOCKING;
    bool ReadTimeTag(std::uint64_t& value) noexcept TAV_NONBLOCKING;
    bool ReadString(std::string_view& text) noexcept TAV_NONBLOCKING;
    bool ReadBlob(std::span<const std::byte>& bytes) noexcept TAV_NONBLOCKING;
    bool ReadTypeTags(std::string_view& tags) noexcept TAV_NONBLOCKING;
    bool ReadArgument(char tag, OscValue& value) noexcept TAV_NONBLOCKING;
    bool ReadMessage(OscMessageView& message) noexcept TAV_NONBLOCKING;
    /// "#bundle" and the time tag; the elements follow.
    bool ReadBundleStart(std::uint64_t& timeTag) noexcept TAV_NONBLOCKING;
    /// The size of an element and its first byte, which is "/" or "#"; only its size is passed.
    bool ReadElementStart(std::size_t& size, char& kind) noexcept TAV_NONBLOCKING;

    /// Reads one packet and calls `use(message)` for each message, before those behind it are read.
    template <class Use>
    bool ReadPacket(const Use& use) noexcept(kIsNoexcept<Use>);

    bool Fail(OscFault fault) noexcept TAV_NONBLOCKING {
        fault_ = fault;
        return false;
    }

private:
    template <class Use>
    static constexpr bool kIsNoexcept = std::is_nothrow_invocable_v<const Use&, OscMessageView&>;
    template <class Use>
    bool PassMessage(const Use& use) noexcept(kIsNoexcept<Use>);
    /// @param size  of the whole bundle; elements are read as long as they begin before its end
    template <class Use>
    bool ReadBundle(const Use& use, std::size_t size, int depth) noexcept(kIsNoexcept<Use>);
    bool Take(std::size_t count, std::span<const std::byte>& bytes) noexcept TAV_NONBLOCKING;
    bool SkipPadding(std::size_t itemSize) noexcept TAV_NONBLOCKING;
    template <class Word>
    bool ReadWord(Word& word, OscFault fault) noexcept TAV_NONBLOCKING {
        if (rest_.size() < sizeof(Word)) return Fail(fault);
        word = 0;
        for (std::size_t k = 0; k < sizeof(Word); ++k) {
            word = (word << 8) | std::to_integer<Word>(rest_[k]);
        }
        rest_ = rest_.subspan(sizeof(Word));
        return true;
    }

    std::span<const std::byte> rest_;
    OscFault fault_ = OscFault::None;
    char unknownTag_ = '\0';
};

/// The text of a fault.  @param unknownTag  see OscReader::UnknownTag
std::string OscFaultText(OscFault fault, char unknownTag);

template <class Use>
bool OscReader::ReadPacket(const Use& use) noexcept(kIsNoexcept<Use>) {
    const char kind = rest_.empty() ? '/' : static_cast<char>(rest_.front());
    if (kind != '/' && kind != '#') return Fail(OscFault::PacketInvalid);
    return kind == '/' ? PassMessage(use) : ReadBundle(use, NumLeft(), 0);
}

template <class Use>
bool OscReader::PassMessage(const Use& use) noexcept(kIsNoexcept<Use>) {
    OscMessageView message;
    if (!ReadMessage(message)) return false;
    use(message);
    return true;
}

template <class Use>
bool OscReader::ReadBundle(const Use& use, std::size_t size, int depth) noexcept(kIsNoexcept<Use>) {
    if (depth > kDeepestBundle) return Fail(OscFault::TooDeep);
    const std::size_t begin = NumLeft();
    std::uint64_t timeTag = 0;
    if (!ReadBundleStart(timeTag)) return false;
    while (begin - NumLeft() < size) {
        std::size_t elementSize = 0;
        char kind = '/';
        if (!ReadElementStart(elementSize, kind)) return false;
        const std::size_t start = NumLeft();
        if (kind == '/' ? !PassMessage(use) : !ReadBundle(use, elementSize, depth + 1))
            return false;
        if (start - NumLeft() != elementSize) {
            return Fail(kind == '/' ? OscFault::MessageSizeWrong : OscFault::BundleSizeWrong);
        }
    }
    return true;
}

}  // namespace tav
