// SPDX-License-Identifier: MIT
// MPEG audio streams with everything that may stand round their frames.
#pragma once

#include "audiofiles/VelkDspByteSource.h"
#include "containers/VelkDspAudioBuffer.h"

namespace tav {

struct AudioFileInfo;

/// Reads all frames of the file. Tags before and behind them (ID3) are skipped, rubbish among them
/// as well. Where the encoder has noted its delay and padding (the LAME tag), these are cut off.
/// Throws: tav::Exception where no frames are found.
AudioBuffer ReadMp3(ByteSource& source, AudioFileInfo& info);

}  // namespace tav
