// SPDX-License-Identifier: MIT
// Any bytes as an audio file: read, with every promise of the reader kept, or refused with a
// message that names the file. What was read can be written and read again unchanged.
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>
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
        if (x.empty()) continue;  // there may be no memory
        if (std::memcmp(x.data(), b.Channel(c).data(), x.size_bytes()) != 0) return false;
    }
    return true;
}

/// Files of plain samples may hold any float; a decoder makes numbers only.
bool KeepsItsPromises(const tav::AudioBuffer& audio, bool isDecoded) {
    if (audio.NumChannels() == 0 || !(audio.SampleRate() > 0)) return false;
    for (unsigned c = 0; c < audio.NumChannels() && isDecoded; ++c) {
        const auto samples = audio.Channel(c);
        if (!std::ranges::all_of(samples, [](float x) { return std::isfinite(x); })) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int kRegistered = std::atexit(RemoveScratchFile);
    static_cast<void>(kRegistered);
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::istringstream stream(bytes);
    tav::AudioBuffer audio;
    try {
        audio = tav::ReadAudioStream(stream, "a file");
    } catch (const tav::Exception& fault) {
        const bool isForeign = fault.Message().starts_with("unknown exception");
        if (isForeign || fault.Message().find("a file") == std::string::npos) std::abort();
        return 0;
    }
    const std::string id = bytes.substr(0, 4);
    const bool isPlain = id == "RIFF" || id == "RF64" || id == "BW64" || id == "FORM";
    if (!KeepsItsPromises(audio, !isPlain)) std::abort();
    if (!isPlain) return 0;
    try {
        tav::WriteWavFile(ScratchFile(), audio);
    } catch (const tav::Exception&) {
        return 0;  // more channels than a float frame may have, or an impossible rate
    }
    if (!SameBits(audio, tav::ReadAudioFile(ScratchFile()))) std::abort();
    return 0;
}
