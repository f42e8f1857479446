// SPDX-License-Identifier: MIT
// Numbers of the WAV format that its reader and its writer share.
#pragma once

#include "audiofiles/VelkDspSampleFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tav {

inline constexpr std::uint16_t kTagPcm = 1;
inline constexpr std::uint16_t kTagFloat = 3;
inline constexpr std::uint16_t kTagExtensible = 0xFFFE;
inline constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;  // RF64: the size is in the ds64 chunk
inline constexpr std::size_t kChunkHeadBytes = 8;
inline constexpr std::size_t kDs64Bytes = 28;
inline constexpr std::size_t kPlainFormatBytes = 16;
inline constexpr std::size_t kExtensibleFormatBytes = 40;
inline constexpr std::size_t kBroadcastBytes = 346;  // as far as it is read

/// The bytes after the format tag in the sub-format of an extensible header.
inline constexpr std::array<std::uint8_t, 14> kSubFormatTail = {
    0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

struct WavTagRow {
    std::uint16_t tag;
    SampleFormat::Coding coding;
};

/// The first row that fits counts: single bytes are unsigned, wider integers have a sign.
inline constexpr WavTagRow kWavTags[] = {
    {kTagPcm, SampleFormat::Coding::Unsigned}, {kTagPcm, SampleFormat::Coding::Signed},
    {kTagFloat, SampleFormat::Coding::Float},  {6, SampleFormat::Coding::ALaw},
    {7, SampleFormat::Coding::MuLaw},
};

}  // namespace tav
