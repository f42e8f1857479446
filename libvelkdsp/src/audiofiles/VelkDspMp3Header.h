// SPDX-License-Identifier: MIT
// The four bytes at the beginning of each frame of an MPEG audio stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tav {

struct Mp3Header {
    enum class Version : std::uint8_t { Mpeg1, Mpeg2, Mpeg25 };
    enum class Mode : std::uint8_t { Stereo, Joint, Dual, Mono };

    Version version = Version::Mpeg1;
    unsigned layer = 3;  // 2 or 3
    bool hasCheckSum = false;
    unsigned bitrateKbps = 0;  // 0: free format, every frame has the length of the first
    unsigned sampleRateHz = 44100;
    unsigned rateIndex = 0;  // 44100, 48000, 32000 Hz, their halves, their quarters
    bool isPadded = false;
    Mode mode = Mode::Stereo;
    unsigned modeExtension = 0;  // of Mode::Joint

    bool IsMpeg1() const noexcept { return version == Version::Mpeg1; }
    unsigned NumChannels() const noexcept { return mode == Mode::Mono ? 1 : 2; }
    unsigned NumGranules() const noexcept { return IsMpeg1() ? 2 : 1; }  // of Layer III
    std::size_t NumFrames() const noexcept;                              // samples of each channel
    /// The length in bytes, header included; of free format nothing but the padding.
    std::size_t NumBytes() const noexcept;
    std::size_t NumSideBytes() const noexcept;  // of Layer III
    /// Whether both may be frames of one stream.
    bool Continues(const Mp3Header& other) const noexcept;

    static constexpr std::size_t kNumBytes = 4;
};

/// @param word  the four bytes, the first of them highest
/// @return nothing for what is no header of Layer II or III
/// Thread: any.
std::optional<Mp3Header> ParseMp3Header(std::uint32_t word) noexcept;

}  // namespace tav
