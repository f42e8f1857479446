// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3File.h"

#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspMp3Decoder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tav {
namespace {

/// A file is read whole; this is some fifteen hours.
constexpr std::uint64_t kMostMp3FileBytes = std::uint64_t{2} << 30;

constexpr std::size_t kMostRubbish = 262144;  // bytes before the first frame
constexpr std::size_t kDecoderDelay = 529;    // of hybrid and polyphase filter bank, in samples

bool HasText(Bytes bytes, std::size_t at, std::string_view text) noexcept {
    return at + text.size() <= bytes.size() &&
           std::ranges::equal(bytes.subspan(at, text.size()), text);
}

/// The bytes between the tags at the beginning (ID3v2) and at the end (ID3v1).
Bytes WithoutTags(Bytes bytes) noexcept {
    constexpr std::size_t kHeadBytes = 10, kLastTagBytes = 128;
    while (bytes.size() >= kHeadBytes && HasText(bytes, 0, "ID3")) {
        std::size_t size = 0;
        for (std::size_t k = 6; k < kHeadBytes; ++k) size = size << 7 | (bytes[k] & 0x7Fu);
        const bool hasFoot = (bytes[5] & 0x10) != 0;
        size += hasFoot ? 2 * kHeadBytes : kHeadBytes;
        bytes = bytes.subspan(std::min(size, bytes.size()));
    }
    if (bytes.size() >= kLastTagBytes && HasText(bytes, bytes.size() - kLastTagBytes, "TAG")) {
        bytes = bytes.first(bytes.size() - kLastTagBytes);
    }
    return bytes;
}

/// A frame in the file.
struct Mp3Place {
    Mp3Header header;
    std::size_t start = 0;
    std::size_t numBytes = 0;
    bool isBehindGap = false;
};

/// Finds the frames of the stream, which is what its first two frames agree to be.
class FrameFinder {
public:
    explicit FrameFinder(Bytes bytes) noexcept : bytes_(bytes) {}

    std::vector<Mp3Place> FindAll() {
        std::vector<Mp3Place> places;
        std::size_t at = 0;
        while (at < bytes_.size() && !IsFirst(at)) {
            if (++at > kMostRubbish) return places;
        }
        // A frame counts when another one follows: else bytes of it are missing, or it is none. The
        // last of all may stand before rubbish.
        std::optional<Mp3Place> last;
        bool isBehindGap = false;
        while (at < bytes_.size()) {
            const auto header = HeaderAt(at);
            const bool isWhole =
                header && header->Continues(first_) && at + LengthOf(*header) <= bytes_.size();
            const bool isFrame = isWhole && IsFollowed(at, *header);
            if (isFrame) {
                places.push_back({*header, at, LengthOf(*header), isBehindGap});
                last.reset();
            } else if (isWhole && !isBehindGap) {
                last = {*header, at, LengthOf(*header), false};
            }
            at += isFrame ? LengthOf(*header) : 1;
            isBehindGap = !isFrame;
        }
        if (last) places.push_back(*last);
        return places;
    }

private:
    std::optional<Mp3Header> HeaderAt(std::size_t at) const noexcept {
        if (at + Mp3Header::kNumBytes > bytes_.size() || bytes_[at] != 0xFF) return std::nullopt;
        return ParseMp3Header(GetBigEndian<std::uint32_t>(bytes_.subspan(at)));
    }

    std::size_t LengthOf(const Mp3Header& header) const noexcept {
        return header.NumBytes() + (header.bitrateKbps == 0 ? freeBytes_ : 0);
    }

    /// Whether another frame of the same stream, or the end, stands where this one ends.
    bool IsFollowed(std::size_t at, const Mp3Header& header) const noexcept {
        const std::size_t next = at + LengthOf(header);
        if (next >= bytes_.size()) return next == bytes_.size();
        const auto following = HeaderAt(next);
        return following && following->Continues(header);
    }

    bool IsFirst(std::size_t at) noexcept {
        const auto header = HeaderAt(at);
        if (!header) return false;
        first_ = *header;
        return header->bitrateKbps == 0 ? FindFreeLength(at) : IsFollowed(at, *header);
    }

    /// In free format the length is where the next two frames are.
    bool FindFreeLength(std::size_t at) noexcept {
        const std::size_t padding = first_.NumBytes();
        const std::size_t most = std::min(kMostMp3FrameBytes, bytes_.size() - at);
        const std::size_t least =
            Mp3Header::kNumBytes + padding + (first_.layer == 3 ? first_.NumSideBytes() : 8);
        for (std::size_t length = least; length < most; ++length) {
            const auto second = HeaderAt(at + length);
            if (!second || !second->Continues(first_)) continue;
            freeBytes_ = length - padding;
            if (IsFollowed(at + length, *second)) return true;
        }
        return false;
    }

    Bytes bytes_;
    Mp3Header first_;
    std::size_t freeBytes_ = 0;  // of a frame in free format without its padding
};

/// What an encoder says in the first frame, which has no sound then.
struct EncoderTag {
    std::optional<std::size_t> numFrames;  // of MPEG, behind this one
    std::size_t delay = 0;                 // samples before the sound, made by the encoder
    std::size_t padding = 0;               // samples behind it
    bool hasDelay = false;
};

std::optional<EncoderTag> ReadEncoderTag(const Mp3Header& header, Bytes frame) noexcept {
    if (header.layer != 3) return std::nullopt;
    if (HasText(frame, Mp3Header::kNumBytes + 32, "VBRI")) return EncoderTag{};
    // Some encoders leave out the check sum of this frame, although its header announces one.
    const auto isTag = [&](std::size_t place) {
        return HasText(frame, place, "Xing") || HasText(frame, place, "Info");
    };
    std::size_t at = Mp3Header::kNumBytes + header.NumSideBytes();
    if (header.hasCheckSum && isTag(at + 2)) at += 2;
    if (!isTag(at)) return std::nullopt;
    EncoderTag tag;
    if (at + 8 > frame.size()) return tag;
    const auto flags = GetBigEndian<std::uint32_t>(frame.subspan(at + 4));
    at += 8;
    if ((flags & 1) != 0 && at + 4 <= frame.size()) {
        tag.numFrames = GetBigEndian<std::uint32_t>(frame.subspan(at));
    }
    constexpr std::size_t kFieldBytes[] = {4, 4, 100, 4};  // frames, bytes, table, quality
    for (std::size_t field = 0; field < 4; ++field) {
        if ((flags >> field & 1) != 0) at += kFieldBytes[field];
    }
    // 9 bytes of name, 12 of other facts, then two numbers of 12 bits.
    constexpr std::size_t kDelayPlace = 21;
    if (at + kDelayPlace + 3 > frame.size() || frame[at] == 0) return tag;
    const Bytes delays = frame.subspan(at + kDelayPlace);
    tag.delay = std::size_t{delays[0]} << 4 | delays[1] >> 4;
    tag.padding = (delays[1] & 15u) << 8 | delays[2];
    tag.hasDelay = true;
    return tag;
}

/// The samples of the stream that are sound, of all that are decoded.
struct SoundRange {
    std::size_t begin = 0;
    std::size_t end = 0;
};

SoundRange RangeOf(const EncoderTag& tag, std::size_t numFound, std::size_t promised) noexcept {
    SoundRange range{0, numFound};
    if (!tag.hasDelay) return range;
    range.begin = std::min(tag.delay + kDecoderDelay, numFound);
    const std::size_t cut = tag.padding - std::min(tag.padding, kDecoderDelay);
    const std::size_t end = promised - std::min(cut, promised);
    if (numFound <= promised) range.end = std::clamp(end, range.begin, numFound);
    return range;
}

/// Copies what of `count` decoded samples, the first of which is number `position`, is in range.
void CopySound(const std::array<std::vector<float>, 2>& decoded,
               std::size_t position,
               std::size_t count,
               const SoundRange& range,
               AudioBuffer& audio) {
    const std::size_t first = std::max(position, range.begin);
    const std::size_t last = std::min(position + count, range.end);
    for (unsigned channel = 0; channel < audio.NumChannels() && first < last; ++channel) {
        const std::span<const float> from =
            std::span(decoded[channel]).subspan(first - position, last - first);
        std::ranges::copy(from, audio.Channel(channel).subspan(first - range.begin).begin());
    }
}

}  // namespace

AudioBuffer ReadMp3(ByteSource& source, AudioFileInfo& info) {
    if (source.Size() > kMostMp3FileBytes) source.Fail("is too large for an MP3 file");
    source.Seek(0);
    const ByteBlock file = source.Take(static_cast<std::size_t>(source.Size()));
    const Bytes bytes = WithoutTags(file);
    std::vector<Mp3Place> places = FrameFinder(bytes).FindAll();
    if (places.empty()) source.Fail("is no audio file of a known kind");

    const Mp3Header& first = places.front().header;
    const std::optional<EncoderTag> tag =
        ReadEncoderTag(first, bytes.subspan(places.front().start, places.front().numBytes));
    const std::span<const Mp3Place> frames = std::span(places).subspan(tag ? 1 : 0);
    const std::size_t perFrame = first.NumFrames();
    const std::size_t numFound = frames.size() * perFrame;
    const std::size_t promised = tag && tag->numFrames ? *tag->numFrames * perFrame : numFound;
    // Where frames are missing in the middle the last one is still the last.
    const bool endIsThere = std::ranges::any_of(frames, &Mp3Place::isBehindGap);
    const SoundRange range =
        RangeOf(tag.value_or(EncoderTag{}), numFound, endIsThere ? numFound : promised);
    if (promised > numFound) info.missingFrames = promised - numFound;

    AudioBuffer audio(first.NumChannels(), range.end - range.begin, first.sampleRateHz);
    std::array<std::vector<float>, 2> decoded{std::vector<float>(perFrame),
                                              std::vector<float>(perFrame)};
    float* const channels[] = {decoded[0].data(), decoded[1].data()};
    const auto decoder = std::make_unique<Mp3Decoder>();  // some 60 KB
    for (std::size_t k = 0; k < frames.size(); ++k) {
        const Mp3Place& place = frames[k];
        if (place.isBehindGap) decoder->ForgetPast();
        const Bytes frame = bytes.subspan(place.start, place.numBytes);
        if (!decoder->Decode(place.header, frame, channels)) info.damagedFrames += perFrame;
        CopySound(decoded, k * perFrame, perFrame, range, audio);
    }
    return audio;
}

}  // namespace tav
