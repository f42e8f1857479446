// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspAudioFile.h"

#include "audiofiles/VelkDspMp3File.h"
#include "audiofiles/VelkDspStoredSamples.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <fstream>
#include <span>
#include <system_error>

namespace tav {
namespace {

constexpr std::size_t kPieceBytes = 65536;

AudioBuffer ReadSamples(ByteSource& source, const StoredSamples& stored) {
    const auto numFrames = static_cast<std::size_t>(stored.numFrames);
    const auto frameBytes = static_cast<std::size_t>(stored.FrameBytes());
    AudioBuffer audio(stored.numChannels, numFrames, stored.sampleRateHz);
    const std::size_t pieceFrames = std::max<std::size_t>(1, kPieceBytes / frameBytes);
    ByteBlock piece(std::min(pieceFrames, numFrames) * frameBytes);
    source.Seek(stored.position);
    for (std::size_t start = 0; start < numFrames; start += pieceFrames) {
        const std::size_t count = std::min(pieceFrames, numFrames - start);
        const auto bytes = std::span(piece).first(count * frameBytes);
        source.Read(bytes);
        DecodeFrames(stored.format, bytes, stored.numChannels, audio.Pointers(), start);
    }
    return audio;
}

AudioBuffer ReadSource(ByteSource& source, AudioFileInfo& info) {
    const std::string id = source.Size() < 4 ? "" : source.TakeId();
    if (id == "FORM") return ReadSamples(source, FindAiffSamples(source, info));
    const bool is64Bit = id == "RF64" || id == "BW64";
    if (is64Bit || id == "RIFF") {
        return ReadSamples(source, FindWavSamples(source, is64Bit, info));
    }
    return ReadMp3(source, info);
}

}  // namespace

AudioBuffer ReadAudioStream(std::istream& stream, const std::string& name, AudioFileInfo* info) {
    return Guarded("reading " + name, [&] {
        AudioFileInfo unread;
        ByteSource source(stream, name);
        return ReadSource(source, info == nullptr ? unread : *info = {});
    });
}

AudioBuffer ReadAudioFile(const std::filesystem::path& path, AudioFileInfo* info) {
    const std::u8string utf8 = path.u8string();
    const std::string name(utf8.begin(), utf8.end());
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw Exception(name + ": is a folder");
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw Exception(name + ": cannot be opened");
    return ReadAudioStream(stream, name, info);
}

}  // namespace tav
