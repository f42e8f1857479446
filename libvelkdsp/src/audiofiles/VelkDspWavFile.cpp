// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspWavFile.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <system_error>
#include <utility>

namespace tav {
namespace {

constexpr std::size_t kBlockBytes = 65536;

std::string NameOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::size_t FramesPerBlock(const WavHeader& header) noexcept {
    return std::max<std::size_t>(1, kBlockBytes / static_cast<std::size_t>(header.FrameBytes()));
}

/// Headers are written again at the end, which devices and pipes do not allow.
std::filesystem::path WritablePath(const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Exception(NameOf(path) + ": is no regular file");
    }
    return path;
}

WavHeader HeaderFor(const std::string& name,
                    unsigned numChannels,
                    double sampleRateHz,
                    WavFormat format) {
    WavHeader header;
    header.format = format;
    header.numChannels = numChannels;
    if (numChannels == 0) throw Exception(name + ": a WAV file needs a channel");
    if (header.FrameBytes() > std::numeric_limits<std::uint16_t>::max()) {
        throw Exception(name + ": too many channels for a WAV file");
    }
    // Written so that NaN fails as well.
    if (!(sampleRateHz >= 0.5 && sampleRateHz < std::numeric_limits<std::uint32_t>::max())) {
        throw Exception(name + ": impossible sample rate");
    }
    header.sampleRateHz = static_cast<std::uint32_t>(std::llround(sampleRateHz));
    return header;
}

}  // namespace

WavFileWriter::WavFileWriter(const std::filesystem::path& path,
                             unsigned numChannels,
                             double sampleRateHz,
                             WavFormat format)
    : path_(WritablePath(path)),
      header_(HeaderFor(NameOf(path), numChannels, sampleRateHz, format)),
      file_(path_) {
    if (!file_.IsOpen()) throw Exception(NameOf(path_) + ": cannot be written");
    PutBytes(ComposeWavHeader(header_));
}

void WavFileWriter::PutBytes(const ByteBlock& bytes) {
    file_.Stream().write(reinterpret_cast<const char*>(bytes.data()),
                         static_cast<std::streamsize>(bytes.size()));
    if (!file_.Stream()) throw Exception(NameOf(path_) + ": cannot be written, is the disk full?");
}

void WavFileWriter::SetChannelMask(std::uint32_t mask) {
    header_.channelMask = mask;
    file_.Stream().seekp(0);
    PutBytes(ComposeWavHeader(header_));
}

void WavFileWriter::Write(const float* const* channels, std::size_t frames) {
    if (!file_.IsOpen()) throw Exception(NameOf(path_) + ": is closed already");
    for (std::size_t start = 0; start < frames;) {
        const std::size_t count = std::min(frames - start, FramesPerBlock(header_));
        block_.resize(count * static_cast<std::size_t>(header_.FrameBytes()));
        EncodeFrames(SampleFormatOf(header_.format), block_, header_.numChannels, channels, start);
        PutBytes(block_);
        header_.numFrames += count;
        start += count;
    }
}

void WavFileWriter::Close() {
    if (!file_.IsOpen()) return;
    const std::uint64_t dataBytes = header_.numFrames * header_.FrameBytes();
    if (dataBytes % 2 == 1) PutBytes({0});  // chunks have even lengths
    file_.Stream().seekp(0);
    PutBytes(ComposeWavHeader(header_));
    if (!file_.Commit()) throw Exception(NameOf(path_) + ": cannot be written");
}

void WriteWavFile(const std::filesystem::path& path, const AudioBuffer& audio, WavFormat format) {
    WavFileWriter writer(path, audio.NumChannels(), audio.SampleRate(), format);
    writer.Write(audio.Pointers(), audio.NumFrames());
    writer.Close();
}

}  // namespace tav
