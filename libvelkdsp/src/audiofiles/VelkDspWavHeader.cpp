// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspWavHeader.h"

#include "audiofiles/VelkDspWavTags.h"

#include <algorithm>
#include <iterator>

namespace tav {
namespace {

using Coding = SampleFormat::Coding;

struct WavFormatRow {
    WavFormat format;
    Coding coding;
    unsigned numBytes;
};

constexpr WavFormatRow kWavFormats[] = {
    {WavFormat::Pcm8, Coding::Unsigned, 1}, {WavFormat::Pcm16, Coding::Signed, 2},
    {WavFormat::Pcm24, Coding::Signed, 3},  {WavFormat::Pcm32, Coding::Signed, 4},
    {WavFormat::Float32, Coding::Float, 4}, {WavFormat::Float64, Coding::Float, 8},
};

struct MaskRow {
    std::string_view label;
    std::uint32_t bit;
};

// clang-format off
// Channels stand in the order of the bits of the mask. Surrounds have the place of the back pair
// where nothing stands behind them, as in a file of 5.1.
constexpr MaskRow kMaskBits[] = {
    {"L",   0x1},    {"FL",   0x1},    {"R",    0x2},    {"FR",   0x2},    {"C",   0x4},     {"FC",  0x4},
    {"LFE", 0x8},    {"LFE1", 0x8},    {"Ls",   0x10},   {"BL",   0x10},   {"Lrs", 0x10},    {"LB",  0x10},
    {"Rs",  0x20},   {"BR",   0x20},   {"Rrs",  0x20},   {"RB",   0x20},   {"FLc", 0x40},    {"FRc", 0x80},
    {"BC",  0x100},  {"Lss",  0x200},  {"LS",   0x200},  {"SiL",  0x200},  {"Rss", 0x400},   {"RS",  0x400},
    {"SiR", 0x400},  {"TpC",  0x800},  {"Ltf",  0x1000}, {"TpFL", 0x1000}, {"TpFC", 0x2000}, {"Rtf", 0x4000},
    {"TpFR", 0x4000}, {"Ltr", 0x8000}, {"Ltb",  0x8000}, {"TpBL", 0x8000}, {"TpBC", 0x10000},
    {"Rtr", 0x20000}, {"Rtb", 0x20000}, {"TpBR", 0x20000},
};
// clang-format on

void PutId(ByteBlock& bytes, std::string_view id) {
    bytes.insert(bytes.end(), id.begin(), id.end());
}

std::uint16_t TagOf(const SampleFormat& format) noexcept {
    return std::ranges::find(kWavTags, format.coding, &WavTagRow::coding)->tag;
}

void PutFormatChunk(ByteBlock& bytes, const WavHeader& header) {
    const SampleFormat format = SampleFormatOf(header.format);
    const bool isExtensible = header.numChannels > 2 || header.channelMask != 0;
    const bool isFloat = format.coding == Coding::Float;
    const unsigned numBits = 8 * format.numBytes;
    PutId(bytes, "fmt ");
    PutLittleEndian(
        bytes, isExtensible ? kExtensibleFormatBytes : kPlainFormatBytes + (isFloat ? 2 : 0), 4);
    PutLittleEndian(bytes, isExtensible ? kTagExtensible : TagOf(format), 2);
    PutLittleEndian(bytes, header.numChannels, 2);
    PutLittleEndian(bytes, header.sampleRateHz, 4);
    PutLittleEndian(bytes, header.sampleRateHz * header.FrameBytes(), 4);
    PutLittleEndian(bytes, header.FrameBytes(), 2);
    PutLittleEndian(bytes, numBits, 2);
    if (isExtensible) {
        PutLittleEndian(bytes, 22, 2);
        PutLittleEndian(bytes, numBits, 2);  // all bits are valid
        PutLittleEndian(bytes, header.channelMask, 4);
        PutLittleEndian(bytes, TagOf(format), 2);
        bytes.insert(bytes.end(), kSubFormatTail.begin(), kSubFormatTail.end());
    } else if (isFloat) {
        PutLittleEndian(bytes, 0, 2);  // no extension
    }
    if (!isFloat) return;
    PutId(bytes, "fact");
    PutLittleEndian(bytes, 4, 4);
    PutLittleEndian(bytes, std::min<std::uint64_t>(header.numFrames, kSizeElsewhere), 4);
}

}  // namespace

SampleFormat SampleFormatOf(WavFormat format) noexcept {
    const auto& row = *std::ranges::find(kWavFormats, format, &WavFormatRow::format);
    return {row.coding, row.numBytes, std::endian::little};
}

std::uint64_t WavHeader::FrameBytes() const noexcept {
    return std::uint64_t{numChannels} * SampleFormatOf(format).numBytes;
}

std::uint32_t ChannelMaskOf(std::span<const std::string_view> labels) noexcept {
    std::uint32_t mask = 0;
    for (const std::string_view label : labels) {
        const auto row = std::ranges::find(kMaskBits, label, &MaskRow::label);
        if (row == std::end(kMaskBits) || row->bit <= mask) return 0;  // bits below may be set
        mask |= row->bit;
    }
    return mask;
}

ByteBlock ComposeWavHeader(const WavHeader& header) {
    ByteBlock format;
    PutFormatChunk(format, header);
    const std::uint64_t dataBytes = header.numFrames * header.FrameBytes();
    const std::uint64_t headBytes =
        12 + (kChunkHeadBytes + kDs64Bytes) + format.size() + kChunkHeadBytes;
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
    bytes.insert(bytes.end(), format.begin(), format.end());
    PutId(bytes, "data");
    PutLittleEndian(bytes, size(dataBytes), 4);
    return bytes;
}

}  // namespace tav
