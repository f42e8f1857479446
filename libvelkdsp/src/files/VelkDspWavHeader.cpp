// SPDX-License-Identifier: MIT
#include "files/VelkDspWavHeader.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <array>
#include <istream>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

namespace tav {
namespace {

constexpr std::uint16_t kTagPcm = 1;
constexpr std::uint16_t kTagFloat = 3;
constexpr std::uint16_t kTagExtensible = 0xFFFE;
constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;  // RF64: the 64-bit size is in the ds64 chunk
constexpr std::size_t kChunkHeadBytes = 8;
constexpr std::size_t kDs64Bytes = 28;
constexpr std::size_t kMostFormatBytes = 40;

// The bytes after the format tag in the sub-format of an extensible header.
constexpr std::array<std::uint8_t, 14> kSubFormatTail = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                         0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

struct WavFormatRow {
    WavFormat format;
    std::uint16_t tag;
    std::uint16_t bits;
};

constexpr WavFormatRow kWavFormats[] = {
    {WavFormat::Pcm16, kTagPcm, 16},
    {WavFormat::Pcm24, kTagPcm, 24},
    {WavFormat::Pcm32, kTagPcm, 32},
    {WavFormat::Float32, kTagFloat, 32},
};

const WavFormatRow& RowOf(WavFormat format) noexcept {
    return *std::ranges::find(kWavFormats, format, &WavFormatRow::format);
}

using Bytes = std::span<const std::uint8_t>;

struct ChunkHead {
    std::string id;
    std::uint64_t size;
};

/// One pass over the chunks of a file.
class HeaderReader {
public:
    HeaderReader(std::istream& stream, const std::string& name) : stream_(stream), name_(name) {
        stream_.seekg(0, std::ios::end);
        const std::streamoff end = stream_.tellg();
        stream_.seekg(0);
        if (!stream_ || end < 0) Fail("cannot be read");
        end_ = static_cast<std::uint64_t>(end);
    }

    WavHeader Read() {
        ReadRiffHead();
        std::optional<WavHeader> header;
        for (;;) {
            const ChunkHead chunk = ReadChunkHead();
            if (chunk.size > end_ - position_) Fail("the " + chunk.id + " chunk is cut short");
            if (chunk.id == "data") return WithFrames(header, chunk.size);
            const std::uint64_t next = position_ + chunk.size + chunk.size % 2;
            if (chunk.id == "fmt ") header = ReadFormat(chunk.size);
            if (chunk.id == "ds64") ReadDs64(chunk.size);
            Seek(next);
        }
    }

private:
    [[noreturn]] void Fail(const std::string& fault) const {
        throw Exception(name_ + ": " + fault);
    }

    ByteBlock Take(std::size_t count) {
        ByteBlock bytes(count);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(stream_.get());
        if (!stream_) Fail("cannot be read");
        position_ += count;
        return bytes;
    }

    void Seek(std::uint64_t position) {
        // The padding byte of the last chunk is missing in many files.
        position_ = std::min(position, end_);
        stream_.seekg(static_cast<std::streamoff>(position_));
    }

    static std::string IdOf(Bytes bytes) {
        std::string id(bytes.begin(), bytes.begin() + 4);
        // It is shown in messages.
        std::ranges::replace_if(
            id, [](char c) { return c < ' ' || c > '~'; }, '?');
        return id;
    }

    void ReadRiffHead() {
        constexpr std::size_t kRiffBytes = 12;
        if (end_ < kRiffBytes) Fail("is no WAV file");
        const ByteBlock head = Take(kRiffBytes);
        const std::string id = IdOf(head);
        isRf64_ = id == "RF64";
        if ((id != "RIFF" && !isRf64_) || IdOf(Bytes(head).subspan(8)) != "WAVE") {
            Fail("is no WAV file");
        }
    }

    ChunkHead ReadChunkHead() {
        if (end_ - position_ < kChunkHeadBytes) Fail("has no data chunk");
        const ByteBlock head = Take(kChunkHeadBytes);
        ChunkHead chunk{IdOf(head), GetLittleEndian<std::uint32_t>(Bytes(head).subspan(4))};
        if (isRf64_ && chunk.id == "data" && chunk.size == kSizeElsewhere) {
            if (!dataBytes_) Fail("has no ds64 chunk before its data chunk");
            chunk.size = *dataBytes_;
        }
        return chunk;
    }

    void ReadDs64(std::uint64_t size) {
        if (size < kDs64Bytes) Fail("the ds64 chunk is too small");
        dataBytes_ = GetLittleEndian<std::uint64_t>(Bytes(Take(kDs64Bytes)).subspan(8));
    }

    WavHeader ReadFormat(std::uint64_t size) {
        if (size < 16) Fail("the fmt chunk is too small");
        const ByteBlock block =
            Take(static_cast<std::size_t>(std::min<std::uint64_t>(size, kMostFormatBytes)));
        const Bytes bytes(block);
        const auto word = [&](std::size_t at) {
            return GetLittleEndian<std::uint16_t>(bytes.subspan(at));
        };
        const std::uint16_t bits = word(14);

        WavHeader header;
        header.format = FormatOf(TagOf(bytes), bits);
        header.numChannels = word(2);
        header.sampleRateHz = GetLittleEndian<std::uint32_t>(bytes.subspan(4));
        if (header.numChannels == 0) Fail("has no channels");
        if (header.sampleRateHz == 0) Fail("has a sample rate of 0");
        if (word(12) != header.FrameBytes()) Fail("has frames of an impossible size");
        return header;
    }

    std::uint16_t TagOf(Bytes format) const {
        const auto tag = GetLittleEndian<std::uint16_t>(format);
        if (tag != kTagExtensible) return tag;
        if (format.size() < kMostFormatBytes) Fail("the fmt chunk is too small");
        if (!std::ranges::equal(format.subspan(26, kSubFormatTail.size()), kSubFormatTail)) {
            Fail("has an unknown sample format");
        }
        return GetLittleEndian<std::uint16_t>(format.subspan(24));
    }

    WavFormat FormatOf(std::uint16_t tag, std::uint16_t bits) const {
        for (const WavFormatRow& row : kWavFormats) {
            if (row.tag == tag && row.bits == bits) return row.format;
        }
        Fail("has an unsupported sample format (tag " + std::to_string(tag) + ", " +
             std::to_string(bits) + " bits)");
    }

    WavHeader WithFrames(std::optional<WavHeader> header, std::uint64_t dataBytes) const {
        if (!header) Fail("has no fmt chunk before its data chunk");
        if (dataBytes % header->FrameBytes() != 0) Fail("the data chunk ends inside a frame");
        header->numFrames = dataBytes / header->FrameBytes();
        return *header;
    }

    std::istream& stream_;
    const std::string& name_;
    std::uint64_t position_ = 0;
    std::uint64_t end_ = 0;
    bool isRf64_ = false;
    std::optional<std::uint64_t> dataBytes_;
};

void PutId(ByteBlock& bytes, std::string_view id) {
    bytes.insert(bytes.end(), id.begin(), id.end());
}

}  // namespace

unsigned BytesPerSample(WavFormat format) noexcept { return RowOf(format).bits / 8u; }

std::uint64_t WavHeader::FrameBytes() const noexcept {
    return std::uint64_t{numChannels} * BytesPerSample(format);
}

WavHeader ReadWavHeader(std::istream& stream, const std::string& name) {
    return HeaderReader(stream, name).Read();
}

ByteBlock ComposeWavHeader(const WavHeader& header) {
    const bool isFloat = header.format == WavFormat::Float32;
    const std::uint64_t dataBytes = header.numFrames * header.FrameBytes();
    const unsigned formatBytes = isFloat ? 18 : 16;
    const std::uint64_t headBytes =
        12 + (8 + kDs64Bytes) + (8 + formatBytes) + (isFloat ? 12u : 0u) + 8;
    const std::uint64_t riffBytes = headBytes - 8 + dataBytes + dataBytes % 2;
    const bool isRf64 = riffBytes >= kSizeElsewhere;
    const auto size = [&](std::uint64_t bytes) { return isRf64 ? kSizeElsewhere : bytes; };

    ByteBlock bytes;
    bytes.reserve(static_cast<std::size_t>(headBytes));
    PutId(bytes, isRf64 ? "RF64" : "RIFF");
    PutLittleEndian(bytes, size(riffBytes), 4);
    PutId(bytes, "WAVE");
    // Space for the 64-bit sizes; a chunk that readers ignore if the file does not need them.
    PutId(bytes, isRf64 ? "ds64" : "JUNK");
    PutLittleEndian(bytes, kDs64Bytes, 4);
    PutLittleEndian(bytes, isRf64 ? riffBytes : 0, 8);
    PutLittleEndian(bytes, isRf64 ? dataBytes : 0, 8);
    PutLittleEndian(bytes, isRf64 ? header.numFrames : 0, 8);
    PutLittleEndian(bytes, 0, 4);
    PutId(bytes, "fmt ");
    PutLittleEndian(bytes, formatBytes, 4);
    PutLittleEndian(bytes, RowOf(header.format).tag, 2);
    PutLittleEndian(bytes, header.numChannels, 2);
    PutLittleEndian(bytes, header.sampleRateHz, 4);
    PutLittleEndian(bytes, header.sampleRateHz * header.FrameBytes(), 4);
    PutLittleEndian(bytes, header.FrameBytes(), 2);
    PutLittleEndian(bytes, RowOf(header.format).bits, 2);
    if (isFloat) {
        PutLittleEndian(bytes, 0, 2);  // no extension
        PutId(bytes, "fact");
        PutLittleEndian(bytes, 4, 4);
        PutLittleEndian(bytes, std::min<std::uint64_t>(header.numFrames, kSizeElsewhere), 4);
    }
    PutId(bytes, "data");
    PutLittleEndian(bytes, size(dataBytes), 4);
    return bytes;
}

}  // namespace tav
