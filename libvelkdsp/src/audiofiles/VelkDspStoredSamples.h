// SPDX-License-Identifier: MIT
// Where the samples of a file lie that stores them one by one.
#pragma once

#include "audiofiles/VelkDspByteSource.h"
#include "audiofiles/VelkDspSampleFormat.h"
#include "containers/VelkDspAudioBuffer.h"

#include <cstdint>

namespace tav {

struct AudioFileInfo;

struct StoredSamples {
    SampleFormat format;
    unsigned numChannels = 0;
    double sampleRateHz = 0;
    std::uint64_t numFrames = 0;  // that are in the file
    std::uint64_t position = 0;   // of the first

    std::uint64_t FrameBytes() const noexcept {
        return std::uint64_t{numChannels} * format.numBytes;
    }
};

/// Read the head of a file whose first four bytes have been taken.
StoredSamples FindWavSamples(ByteSource& source, bool is64Bit, AudioFileInfo& info);
StoredSamples FindAiffSamples(ByteSource& source, AudioFileInfo& info);

}  // namespace tav
