// SPDX-License-Identifier: MIT
// WAV files, written piece by piece.
#pragma once

#include "audiofiles/VelkDspWavHeader.h"
#include "containers/VelkDspAudioBuffer.h"
#include "files/VelkDspFileReplacement.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace tav {

/// Writes a WAV file that appears only when it is complete, in Close.
/// Pattern: Write* Close.  Thread: control.  Throws: tav::Exception "FILE: FAULT".
class WavFileWriter {
public:
    /// @param path  replaced when it exists; then it must be a regular file
    /// @param numChannels  1 to 65535 bytes per frame  @param sampleRateHz  rounded to whole Hz
    WavFileWriter(const std::filesystem::path& path,
                  unsigned numChannels,
                  double sampleRateHz,
                  WavFormat format = WavFormat::Float32);

    /// Names the loudspeakers of the channels. @param mask  one bit a channel, or 0
    /// Before the first Write only.
    void SetChannelMask(std::uint32_t mask);
    /// Appends `frames` samples of every channel. PCM clips at full scale, NaN becomes 0.
    void Write(const float* const* channels, std::size_t frames);
    void Close();

private:
    void PutBytes(const ByteBlock& bytes);

    std::filesystem::path path_;
    WavHeader header_;
    FileReplacement file_;
    ByteBlock block_;
};

/// Writes all of `audio`; its sample rate must be set.
void WriteWavFile(const std::filesystem::path& path,
                  const AudioBuffer& audio,
                  WavFormat format = WavFormat::Float32);

}  // namespace tav
