// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspStoredSamples.h"
#include "audiofiles/VelkDspWavTags.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace tav {
namespace {

/// One pass over the chunks. What stands behind the samples is read if it can be and ignored if it
/// cannot: many programs leave rubbish there.
class WavChunks {
public:
    WavChunks(ByteSource& source, bool is64Bit, AudioFileInfo& info)
        : source_(source),
          is64Bit_(is64Bit),
          info_(info) {}

    StoredSamples Read() {
        if (source_.Left() < 8) source_.Fail("is no WAV file");
        riffBytes_ = TakeWord();
        if (source_.TakeId() != "WAVE") source_.Fail("is no WAV file");
        while (source_.Left() >= kChunkHeadBytes) {
            const std::string id = source_.TakeId();
            const std::uint32_t word = TakeWord();
            const bool isSound = id == "data" && !samplesFound_;
            const std::uint64_t size = isSound ? SizeOfData(word) : word;
            if (isSound) {
                FindSamples(size);
            } else if (size > source_.Left()) {
                if (samplesFound_) break;
                source_.Fail("the " + id + " chunk is cut short");
            }
            const std::uint64_t next = source_.Position() + std::min(size, source_.Left());
            ReadChunk(id, size);
            source_.Seek(next + size % 2);  // beyond an odd chunk stands a padding byte
        }
        if (!samplesFound_) source_.Fail("has no data chunk");
        return stored_;
    }

private:
    std::uint32_t TakeWord() { return GetLittleEndian<std::uint32_t>(source_.Take(4)); }

    void ReadChunk(const std::string& id, std::uint64_t size) {
        if (id == "ds64" && !samplesFound_) ReadDs64(size);
        if (id == "fmt " && !samplesFound_) ReadFormat(size);
        if (id == "bext") ReadBroadcast(size);
    }

    void ReadDs64(std::uint64_t size) {
        if (size < kDs64Bytes) source_.Fail("the ds64 chunk is too small");
        const ByteBlock sizes = source_.Take(kDs64Bytes);
        const auto wholeBytes = GetLittleEndian<std::uint64_t>(Bytes(sizes));
        dataBytes_ = GetLittleEndian<std::uint64_t>(Bytes(sizes).subspan(8));
        isUnfinished_ = wholeBytes == 0 && *dataBytes_ == 0;
    }

    /// The size of the data chunk, which may stand elsewhere or be unknown: programs that write
    /// into a pipe, or were stopped while they wrote, leave the sizes of their first moment.
    std::uint64_t SizeOfData(std::uint32_t size) const {
        if (is64Bit_ && size == kSizeElsewhere && !isUnfinished_) {
            if (!dataBytes_) source_.Fail("has no ds64 chunk before its data chunk");
            return *dataBytes_;
        }
        const bool isOpen = size == kSizeElsewhere || (size == 0 && riffBytes_ == 0);
        return isOpen ? source_.Left() : size;
    }

    void FindSamples(std::uint64_t size) {
        if (stored_.numChannels == 0) source_.Fail("has no fmt chunk before its data chunk");
        const std::uint64_t frameBytes = stored_.FrameBytes();
        const std::uint64_t promised = size / frameBytes + (size % frameBytes != 0 ? 1 : 0);
        stored_.position = source_.Position();
        stored_.numFrames = std::min(size, source_.Left()) / frameBytes;
        info_.missingFrames = promised - stored_.numFrames;
        samplesFound_ = true;
    }

    void ReadFormat(std::uint64_t size) {
        if (size < kPlainFormatBytes) source_.Fail("the fmt chunk is too small");
        const ByteBlock block = source_.Take(
            static_cast<std::size_t>(std::min<std::uint64_t>(size, kExtensibleFormatBytes)));
        const Bytes bytes(block);
        const auto word = [&](std::size_t at) {
            return GetLittleEndian<std::uint16_t>(bytes.subspan(at));
        };
        stored_.numChannels = word(2);
        stored_.sampleRateHz = GetLittleEndian<std::uint32_t>(bytes.subspan(4));
        stored_.format = FormatOf(TagOf(bytes), word(14));
        if (stored_.numChannels == 0) source_.Fail("has no channels");
        if (stored_.sampleRateHz == 0) source_.Fail("has a sample rate of 0");
        if (word(12) != stored_.FrameBytes()) source_.Fail("has frames of an impossible size");
    }

    std::uint16_t TagOf(Bytes format) {
        const auto tag = GetLittleEndian<std::uint16_t>(format);
        if (tag != kTagExtensible) return tag;
        if (format.size() < kExtensibleFormatBytes) source_.Fail("the fmt chunk is too small");
        if (!std::ranges::equal(format.subspan(26, kSubFormatTail.size()), kSubFormatTail)) {
            source_.Fail("has an unknown sample format");
        }
        info_.channelMask = GetLittleEndian<std::uint32_t>(format.subspan(20));
        return GetLittleEndian<std::uint16_t>(format.subspan(24));
    }

    SampleFormat FormatOf(std::uint16_t tag, unsigned bits) const {
        const unsigned numBytes = (bits + 7) / 8;  // samples of 20 bits fill the upper ones of 24
        for (const WavTagRow& row : kWavTags) {
            const SampleFormat format{row.coding, numBytes, std::endian::little};
            if (row.tag == tag && format.IsKnown()) return format;
        }
        source_.Fail("has an unsupported sample format (tag " + std::to_string(tag) + ", " +
                     std::to_string(bits) + " bits)");
    }

    /// Texts end at their first zero or fill their field.
    void ReadBroadcast(std::uint64_t size) {
        if (size < kBroadcastBytes || source_.Left() < kBroadcastBytes) return;
        const ByteBlock block = source_.Take(kBroadcastBytes);
        const auto text = [&](std::size_t at, std::size_t length) {
            const Bytes field = Bytes(block).subspan(at, length);
            return std::string(field.begin(), std::ranges::find(field, 0));
        };
        info_.broadcast = BroadcastInfo{text(0, 256), text(256, 32), text(320, 10), text(330, 8),
                                        GetLittleEndian<std::uint64_t>(Bytes(block).subspan(338))};
    }

    ByteSource& source_;
    bool is64Bit_;
    AudioFileInfo& info_;
    std::uint32_t riffBytes_ = 0;
    std::optional<std::uint64_t> dataBytes_;  // as the ds64 chunk says
    bool isUnfinished_ = false;               // whose sizes nobody has written
    bool samplesFound_ = false;
    StoredSamples stored_;
};

}  // namespace

StoredSamples FindWavSamples(ByteSource& source, bool is64Bit, AudioFileInfo& info) {
    return WavChunks(source, is64Bit, info).Read();
}

}  // namespace tav
