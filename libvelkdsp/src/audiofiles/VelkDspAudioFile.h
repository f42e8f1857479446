// SPDX-License-Identifier: MIT
// Audio files of every format that is known here, read whole.
#pragma once

#include "containers/VelkDspAudioBuffer.h"

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

namespace tav {

/// Where a broadcast recording comes from (the bext chunk, EBU Tech 3285).
struct BroadcastInfo {
    std::string description;
    std::string originator;
    std::string date;              // yyyy-mm-dd
    std::string time;              // hh:mm:ss
    std::uint64_t firstFrame = 0;  // frames since midnight
};

/// What a file says beside its samples.
struct AudioFileInfo {
    /// Frames that the header promises and the file does not have.
    std::uint64_t missingFrames = 0;
    /// Frames of an MP3 file whose data are damaged or missing; what was before them dies away
    /// there.
    std::uint64_t damagedFrames = 0;
    /// Loudspeakers of the channels as in WAVE_FORMAT_EXTENSIBLE; 0 where the file names none.
    std::uint32_t channelMask = 0;
    std::optional<BroadcastInfo> broadcast;
};

/// Reads a file by its content, whatever its name is:
///   WAV   RIFF, RF64 and BW64; integers of 1 to 4 bytes, floats of 4 and 8, A-law, µ-law
///   AIFF, AIFC   NONE, twos, sowt, raw, in24, in32, fl32, fl64, alaw, ulaw
///   MP3   MPEG-1, 2 and 2.5, Layers II and III, without the delays that the encoder has noted
/// Full scale of integers becomes 1; floats are not changed. A file that is cut short gives what is
/// there, in whole frames, and says in `info` how much is missing.
/// @param info  may be null
/// Thread: control.  Throws: tav::Exception "FILE: FAULT".
AudioBuffer ReadAudioFile(const std::filesystem::path& path, AudioFileInfo* info = nullptr);

/// The same of a stream that can seek. @param name  names it in messages
AudioBuffer ReadAudioStream(std::istream& stream,
                            const std::string& name,
                            AudioFileInfo* info = nullptr);

}  // namespace tav
