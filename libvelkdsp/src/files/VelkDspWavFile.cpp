// SPDX-License-Identifier: MIT
#include "files/VelkDspWavFile.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <system_error>
#include <utility>

namespace tav {
namespace {

constexpr std::size_t kBlockBytes = 65536;

std::string NameOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

double FullScale(WavFormat format) noexcept {
    return std::ldexp(1.0, static_cast<int>(8 * BytesPerSample(format)) - 1);
}

float Decode(WavFormat format, std::span<const std::uint8_t> bytes) noexcept {
    if (format == WavFormat::Float32) {
        return std::bit_cast<float>(GetLittleEndian<std::uint32_t>(bytes));
    }
    // The sample is placed in the upper bytes of 32 bits, so that its sign bit is the sign of the
    // integer.
    const unsigned numBytes = BytesPerSample(format);
    std::uint32_t bits = 0;
    for (unsigned k = 0; k < numBytes; ++k) {
        bits |= std::uint32_t{bytes[k]} << (8 * (4 - numBytes + k));
    }
    return static_cast<float>(static_cast<std::int32_t>(bits)) * 0x1p-31f;
}

std::uint64_t Encode(WavFormat format, float sample) noexcept {
    if (format == WavFormat::Float32) return std::bit_cast<std::uint32_t>(sample);
    if (std::isnan(sample)) return 0;
    const double fullScale = FullScale(format);
    const double scaled =
        std::clamp(static_cast<double>(sample) * fullScale, -fullScale, fullScale - 1);
    return static_cast<std::uint64_t>(std::llround(scaled));
}

std::size_t FramesPerBlock(const WavHeader& header) noexcept {
    return std::max<std::size_t>(1, kBlockBytes / static_cast<std::size_t>(header.FrameBytes()));
}

/// Writes the interleaved frames of `block` to the channels, from frame `start` on.
void Deinterleave(const ByteBlock& block,
                  const WavHeader& header,
                  std::size_t start,
                  AudioBuffer& audio) {
    const std::span<const std::uint8_t> bytes(block);
    const std::size_t step = BytesPerSample(header.format);
    const std::size_t frames = block.size() / (step * header.numChannels);
    for (unsigned channel = 0; channel < header.numChannels; ++channel) {
        const std::span<float> samples = audio.Channel(channel);
        std::size_t at = step * channel;
        for (std::size_t frame = 0; frame < frames; ++frame, at += step * header.numChannels) {
            samples[start + frame] = Decode(header.format, bytes.subspan(at, step));
        }
    }
}

/// Fills `block` with `frames` interleaved frames of the channels, from frame `start` on.
void Interleave(const float* const* channels,
                std::size_t start,
                std::size_t frames,
                const WavHeader& header,
                ByteBlock& block) {
    const std::size_t step = BytesPerSample(header.format);
    block.resize(frames * step * header.numChannels);
    const std::span<std::uint8_t> bytes(block);
    for (unsigned channel = 0; channel < header.numChannels; ++channel) {
        std::size_t at = step * channel;
        for (std::size_t frame = 0; frame < frames; ++frame, at += step * header.numChannels) {
            StoreLittleEndian(bytes.subspan(at, step),
                              Encode(header.format, channels[channel][start + frame]));
        }
    }
}

AudioBuffer ReadSamples(std::istream& stream, const WavHeader& header, const std::string& name) {
    const auto numFrames = static_cast<std::size_t>(header.numFrames);
    AudioBuffer audio(header.numChannels, numFrames, header.sampleRateHz);
    for (std::size_t start = 0; start < numFrames;) {
        const std::size_t frames = std::min(FramesPerBlock(header), numFrames - start);
        ByteBlock block(frames * static_cast<std::size_t>(header.FrameBytes()));
        // Streams read char, which may alias any type.
        stream.read(reinterpret_cast<char*>(block.data()),
                    static_cast<std::streamsize>(block.size()));
        if (!stream) throw Exception(name + ": cannot be read");
        Deinterleave(block, header, start, audio);
        start += frames;
    }
    return audio;
}

/// The file to replace: for a symbolic link its target, so that the link stays.
std::filesystem::path WritablePath(const std::filesystem::path& path) {
    std::error_code fault;
    const std::filesystem::file_status status = std::filesystem::status(path, fault);
    if (!std::filesystem::exists(status)) return path;
    if (!std::filesystem::is_regular_file(status)) {
        throw Exception(NameOf(path) + ": is no regular file");
    }
    const std::filesystem::path target = std::filesystem::canonical(path, fault);
    return fault ? path : target;
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

AudioBuffer ReadWavFile(const std::filesystem::path& path) {
    const std::string name = NameOf(path);
    return Guarded("reading " + name, [&] {
        std::error_code fault;
        if (std::filesystem::is_directory(path, fault)) throw Exception(name + ": is a folder");
        std::ifstream stream(path, std::ios::binary);
        if (!stream) throw Exception(name + ": cannot be opened");
        const WavHeader header = ReadWavHeader(stream, name);
        return ReadSamples(stream, header, name);
    });
}

WavFileWriter::WavFileWriter(const std::filesystem::path& path,
                             unsigned numChannels,
                             double sampleRateHz,
                             WavFormat format)
    : path_(WritablePath(path)),
      temporaryPath_(path_),
      header_(HeaderFor(NameOf(path), numChannels, sampleRateHz, format)) {
    temporaryPath_ += ".part";
    stream_.open(temporaryPath_, std::ios::binary | std::ios::trunc);
    if (!stream_) throw Exception(NameOf(path_) + ": cannot be written");
    try {
        PutBytes(ComposeWavHeader(header_));
    } catch (...) {
        Abandon();
        throw;
    }
}

WavFileWriter::~WavFileWriter() { Abandon(); }

void WavFileWriter::Abandon() noexcept {
    if (!stream_.is_open()) return;
    stream_.close();
    std::error_code ignored;
    std::filesystem::remove(temporaryPath_, ignored);
}

void WavFileWriter::PutBytes(const ByteBlock& bytes) {
    stream_.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
    if (!stream_) throw Exception(NameOf(path_) + ": cannot be written, is the disk full?");
}

void WavFileWriter::Write(const float* const* channels, std::size_t frames) {
    if (!stream_.is_open()) throw Exception(NameOf(path_) + ": is closed already");
    for (std::size_t start = 0; start < frames;) {
        const std::size_t count = std::min(frames - start, FramesPerBlock(header_));
        Interleave(channels, start, count, header_, block_);
        PutBytes(block_);
        header_.numFrames += count;
        start += count;
    }
}

void WavFileWriter::Close() {
    if (!stream_.is_open()) return;
    const std::uint64_t dataBytes = header_.numFrames * header_.FrameBytes();
    if (dataBytes % 2 == 1) PutBytes({0});  // chunks have even lengths
    stream_.seekp(0);
    PutBytes(ComposeWavHeader(header_));
    stream_.close();
    std::error_code fault;
    if (stream_) std::filesystem::rename(temporaryPath_, path_, fault);
    if (stream_ && !fault) return;
    std::error_code ignored;
    std::filesystem::remove(temporaryPath_, ignored);
    throw Exception(NameOf(path_) + ": cannot be written");
}

void WriteWavFile(const std::filesystem::path& path, const AudioBuffer& audio, WavFormat format) {
    WavFileWriter writer(path, audio.NumChannels(), audio.SampleRate(), format);
    writer.Write(audio.Pointers(), audio.NumFrames());
    writer.Close();
}

}  // namespace tav
