// SPDX-License-Identifier: MIT
// How audio files store a sample, and the way from there to 32-bit floats and back.
#pragma once

#include "files/VelkDspByteOrder.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace tav {

struct SampleFormat {
    enum class Coding : std::uint8_t {
        Unsigned,  // one byte, silence is 128
        Signed,    // two's complement of 1 to 4 bytes
        Float,     // IEEE 754 of 4 or 8 bytes
        ALaw,      // ITU-T G.711, one byte
        MuLaw,     // likewise
    };

    Coding coding = Coding::Float;
    unsigned numBytes = 4;
    std::endian order = std::endian::little;

    /// Whether the coding exists in that many bytes.
    bool IsKnown() const noexcept;
};

/// Interleaved frames to channels, each from frame `start` on. Full scale of integers becomes 1,
/// that of the laws of G.711 likewise (their 13 and 14 bits stand in the upper bits of 16); floats
/// are not changed, 64 bits are rounded to 32.
/// @param frames  whole frames
/// @pre  format.IsKnown()
void DecodeFrames(const SampleFormat& format,
                  Bytes frames,
                  unsigned numChannels,
                  float* const* channels,
                  std::size_t start) noexcept;

/// The way back for what the writer offers: unsigned, signed and float samples in little-endian
/// order. Integers are rounded to nearest, halves away from zero, and clip; NaN becomes 0 in them.
/// @param frames  room for whole frames
void EncodeFrames(const SampleFormat& format,
                  std::span<std::uint8_t> frames,
                  unsigned numChannels,
                  const float* const* channels,
                  std::size_t start) noexcept;

}  // namespace tav
