// SPDX-License-Identifier: MIT
// Any bytes as a WAV file: read whole or refused with a message, and what was read can be written
// and read again unchanged.
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"
#include "text/VelkDspException.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

const std::filesystem::path& ScratchFile() {
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        ("quilo-fuzz-" + std::to_string(std::random_device{}()) + ".wav");
    return path;
}

void RemoveScratchFile() {
    std::error_code ignored;
    std::filesystem::remove(ScratchFile(), ignored);
}

bool SameBits(const tav::AudioBuffer& a, const tav::AudioBuffer& b) {
    if (a.NumChannels() != b.NumChannels() || a.NumFrames() != b.NumFrames()) return false;
    for (unsigned c = 0; c < a.NumChannels(); ++c) {
        const auto x = a.Channel(c);
        if (std::memcmp(x.data(), b.Channel(c).data(), x.size_bytes()) != 0) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int kRegistered = std::atexit(RemoveScratchFile);
    static_cast<void>(kRegistered);
    {
        std::ofstream file(ScratchFile(), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    tav::AudioBuffer audio;
    try {
        audio = tav::ReadAudioFile(ScratchFile());
    } catch (const tav::Exception&) {
        return 0;
    }
    if (audio.NumChannels() == 0 || audio.SampleRate() <= 0) std::abort();
    try {
        tav::WriteWavFile(ScratchFile(), audio);
    } catch (const tav::Exception&) {
        return 0;  // more channels than a float frame may have
    }
    if (!SameBits(audio, tav::ReadAudioFile(ScratchFile()))) std::abort();
    return 0;
}
