// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Header.h"

namespace tav {
namespace {

// clang-format off
constexpr unsigned kBitratesKbps[3][15] = {
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},  // MPEG-1, Layer II
    {0, 32, 40, 48, 56, 64, 80,  96, 112, 128, 160, 192, 224, 256, 320},  // MPEG-1, Layer III
    {0,  8, 16, 24, 32, 40, 48,  56,  64,  80,  96, 112, 128, 144, 160},  // MPEG-2 and 2.5
};
// clang-format on
constexpr unsigned kSampleRatesHz[3] = {44100, 48000, 32000};

}  // namespace

std::optional<Mp3Header> ParseMp3Header(std::uint32_t word) noexcept {
    const auto field = [word](unsigned shift, std::uint32_t mask) { return word >> shift & mask; };
    const std::uint32_t version = field(19, 3), layer = field(17, 3), bitrate = field(12, 15);
    const std::uint32_t rate = field(10, 3);
    const bool isKnown = field(21, 0x7FF) == 0x7FF && version != 1 && (layer == 1 || layer == 2) &&
                         bitrate != 15 && rate != 3 && field(0, 3) != 2;
    if (!isKnown) return std::nullopt;

    Mp3Header header;
    header.version = version == 3   ? Mp3Header::Version::Mpeg1
                     : version == 2 ? Mp3Header::Version::Mpeg2
                                    : Mp3Header::Version::Mpeg25;
    header.layer = 4 - layer;
    header.hasCheckSum = field(16, 1) == 0;
    header.bitrateKbps = kBitratesKbps[header.IsMpeg1() ? header.layer - 2 : 2][bitrate];
    header.rateIndex = rate + 3 * static_cast<unsigned>(header.version);
    header.sampleRateHz = kSampleRatesHz[rate] >> static_cast<unsigned>(header.version);
    header.isPadded = field(9, 1) != 0;
    header.mode = static_cast<Mp3Header::Mode>(field(6, 3));
    header.modeExtension = header.mode == Mp3Header::Mode::Joint ? field(4, 3) : 0;
    return header;
}

std::size_t Mp3Header::NumFrames() const noexcept { return layer == 3 && !IsMpeg1() ? 576 : 1152; }

std::size_t Mp3Header::NumBytes() const noexcept {
    return NumFrames() / 8 * 1000 * bitrateKbps / sampleRateHz + (isPadded ? 1 : 0);
}

std::size_t Mp3Header::NumSideBytes() const noexcept {
    if (IsMpeg1()) return mode == Mode::Mono ? 17 : 32;
    return mode == Mode::Mono ? 9 : 17;
}

bool Mp3Header::Continues(const Mp3Header& other) const noexcept {
    return version == other.version && layer == other.layer && rateIndex == other.rateIndex &&
           NumChannels() == other.NumChannels() && (bitrateKbps == 0) == (other.bitrateKbps == 0);
}

}  // namespace tav
