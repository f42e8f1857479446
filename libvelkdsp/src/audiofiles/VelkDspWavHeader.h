// SPDX-License-Identifier: MIT
// The header of a WAV file to be written: RIFF, or RF64 if the sizes exceed 32 bits.
#pragma once

#include "audiofiles/VelkDspSampleFormat.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tav {

/// How the samples of a WAV file are written.
enum class WavFormat { Pcm8, Pcm16, Pcm24, Pcm32, Float32, Float64 };

SampleFormat SampleFormatOf(WavFormat format) noexcept;

/// The kind and amount of audio in a WAV file.
struct WavHeader {
    WavFormat format = WavFormat::Float32;
    unsigned numChannels = 0;
    std::uint32_t sampleRateHz = 0;
    std::uint64_t numFrames = 0;
    /// Which loudspeakers the channels are for; 0: none in particular.
    std::uint32_t channelMask = 0;

    /// Bytes of all channels of one frame.
    std::uint64_t FrameBytes() const noexcept;
};

/// The mask of channels with these loudspeaker labels (L, R, C, LFE, Ls, ... of the named layouts).
/// A WAV file lists its loudspeakers in one order only, so the mask is 0 where the channels stand
/// in another order, or where a label has no place in the mask.
std::uint32_t ChannelMaskOf(std::span<const std::string_view> labels) noexcept;

/// The bytes before the samples. Their number does not depend on the number of frames, so that the
/// header can be rewritten when it is known. More than two channels, or a mask, make an extensible
/// header; RF64 (EBU Tech 3306) if the size exceeds 32 bits.
ByteBlock ComposeWavHeader(const WavHeader& header);

}  // namespace tav
