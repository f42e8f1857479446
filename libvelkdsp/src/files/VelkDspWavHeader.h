// SPDX-License-Identifier: MIT
// The header of a WAV file: RIFF, or RF64 if the sizes exceed 32 bits.
#pragma once

#include "files/VelkDspLittleEndian.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace tav {

/// How the samples of a WAV file are stored.
enum class WavFormat { Pcm16, Pcm24, Pcm32, Float32 };

unsigned BytesPerSample(WavFormat format) noexcept;

/// The kind and amount of audio in a WAV file.
struct WavHeader {
    WavFormat format = WavFormat::Float32;
    unsigned numChannels = 0;
    std::uint32_t sampleRateHz = 0;
    std::uint64_t numFrames = 0;

    /// Bytes of all channels of one frame.
    std::uint64_t FrameBytes() const noexcept;
};

/// Reads up to the first sample and leaves the stream there. Chunks that are not needed are
/// skipped; sizes are checked against the stream, so the frames promised are in it.
/// @param name  names the stream in messages
/// Throws: tav::Exception "NAME: FAULT".
WavHeader ReadWavHeader(std::istream& stream, const std::string& name);

/// The bytes before the samples. Their number depends on the format only, so that the header can be
/// rewritten when the length is known. RF64 (EBU Tech 3306) if the size exceeds 32 bits.
ByteBlock ComposeWavHeader(const WavHeader& header);

}  // namespace tav
