// SPDX-License-Identifier: MIT
// Audio files put together here byte by byte, and what the WAV writer makes of its own.
#include "audiofiles/VelkDspWavFile.h"

#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspStoredSamples.h"
#include "support/HostProgram.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using tav::WavFormat;

std::string Number(std::uint64_t value, int numBytes) {
    std::string bytes;
    for (int k = 0; k < numBytes; ++k) bytes += static_cast<char>(value >> (8 * k) & 0xFF);
    return bytes;
}

std::string Chunk(const std::string& id, const std::string& body) {
    return id + Number(body.size(), 4) + body + std::string(body.size() % 2, '\0');
}

std::string Format(unsigned tag, unsigned channels, unsigned bits, unsigned rate = 48000) {
    const unsigned frameBytes = channels * bits / 8;
    return Number(tag, 2) + Number(channels, 2) + Number(rate, 4) +
           Number(std::uint64_t{rate} * frameBytes, 4) + Number(frameBytes, 2) + Number(bits, 2);
}

const std::string kGuidTail("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);

std::string Extensible(unsigned tag, unsigned channels, unsigned bits) {
    return Format(0xFFFE, channels, bits) + Number(22, 2) + Number(bits, 2) + Number(0, 4) +
           Number(tag, 2) + kGuidTail;
}

std::string BigNumber(std::uint64_t value, int numBytes) {
    std::string bytes = Number(value, numBytes);
    std::ranges::reverse(bytes);
    return bytes;
}

std::string BigChunk(const std::string& id, const std::string& body) {
    return id + BigNumber(body.size(), 4) + body + std::string(body.size() % 2, '\0');
}

const std::string kRate48000 = BigNumber(0x400E, 2) + BigNumber(0xBB80000000000000, 8);

std::string Common(unsigned channels,
                   unsigned frames,
                   unsigned bits,
                   const std::string& kind = "") {
    return BigChunk("COMM", BigNumber(channels, 2) + BigNumber(frames, 4) + BigNumber(bits, 2) +
                                kRate48000 + kind);
}

std::string Sound(const std::string& samples, unsigned offset = 0) {
    return BigChunk("SSND",
                    BigNumber(offset, 4) + BigNumber(0, 4) + std::string(offset, 'x') + samples);
}

std::string Form(const std::string& kind, const std::string& chunks) {
    return "FORM" + BigNumber(4 + chunks.size(), 4) + kind + chunks;
}

std::string Riff(const std::string& chunks) {
    return "RIFF" + Number(4 + chunks.size(), 4) + "WAVE" + chunks;
}

std::string Rf64(const std::string& ds64, const std::string& rest) {
    return "RF64" + Number(0xFFFFFFFF, 4) + "WAVE" + ds64 + rest;
}

std::string Ds64(std::uint64_t dataBytes) {
    return Chunk("ds64", Number(0, 8) + Number(dataBytes, 8) + Number(0, 8) + Number(0, 4));
}

// Two frames of two channels.
const std::string kPcm16 = Chunk("fmt ", Format(1, 2, 16));
const std::string kFourWords("\x00\x40\x00\x80\x01\x00\xFF\xFF", 8);
const std::string kEndless = "data" + Number(0xFFFFFFFF, 4) + kFourWords;  // its size is in ds64
const std::string kSound = Chunk("data", kFourWords);
const std::vector<float> kFourWordSamples = {0.5f, -1.f, 0x1p-15f, -0x1p-15f};

struct Case {
    const char* name;
    std::string bytes;
    unsigned channels = 0;
    std::vector<float> samples = {};  // frame by frame
    std::uint64_t missingFrames = 0;
};

class WavFileTest : public testing::Test {
protected:
    void Store(const std::string& bytes) const { Tests::WriteText(path_, bytes); }
    std::string Stored() const { return Tests::ReadText(path_); }

    static std::string FaultOf(const std::function<void()>& operation) {
        try {
            operation();
        } catch (const tav::Exception& fault) {
            return fault.what();
        }
        return {};
    }

    const Tests::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_ / "subject.wav";
};

const std::string kFloats =
    Number(0x3FC00000, 4) + Number(0xC0000000, 4) + Number(0x00000001, 4) + Number(0x3F800000, 4);
const std::vector<float> kFloatSamples = {1.5f, -2.f, 0x1p-149f, 1.f};
const std::string kThreeBytes("\x00\x00\xC0\xFF\xFF\x7F\x01\x00\x00", 9);

// clang-format off
const Case kReadable[] = {
    {"Pcm16", Riff(kPcm16 + kSound), 2, kFourWordSamples},
    {"Pcm24OddAndPadded", Riff(Chunk("fmt ", Format(1, 3, 24)) + Chunk("data", kThreeBytes)), 3,
     {-0.5f, 1.f - 0x1p-23f, 0x1p-23f}},
    {"Pcm24OddAndUnpadded", Riff(Chunk("fmt ", Format(1, 1, 24)) + "data" + Number(3, 4) + "\xFF\xFF\xFF"), 1,
     {-0x1p-23f}},
    {"Pcm32", Riff(Chunk("fmt ", Format(1, 1, 32)) +
     Chunk("data", Number(0x80000000, 4) + Number(0x20000000, 4) + Number(1, 4))), 1,
     {-1.f, 0.25f, 0x1p-31f}},
    {"FloatIsNotScaled", Riff(Chunk("fmt ", Format(3, 2, 32) + Number(0, 2)) + Chunk("fact", Number(2, 4)) +
     Chunk("data", kFloats)), 2, kFloatSamples},
    {"ExtensiblePcm", Riff(Chunk("fmt ", Extensible(1, 2, 16)) + kSound), 2, kFourWordSamples},
    {"ExtensibleFloat", Riff(Chunk("fmt ", Extensible(3, 1, 32)) + Chunk("data", kFloats)), 1, kFloatSamples},
    {"ForeignChunksOfOddLength",
     Riff(Chunk("LIST", "odd") + Chunk("bext", "12345") + kPcm16 + Chunk("junk", "") +
     kSound + Chunk("id3 ", "behind")), 2, kFourWordSamples},
    {"Rf64", Rf64(Ds64(8), kPcm16 + kEndless), 2, kFourWordSamples},
    {"Rf64WithASizeInItsPlace", Rf64(Ds64(1u << 30), kPcm16 + kSound), 2, kFourWordSamples},
    {"Bw64", "BW64" + Rf64(Ds64(8), kPcm16 + kEndless).substr(4), 2, kFourWordSamples},
    {"NoFrames", Riff(kPcm16 + Chunk("data", "")), 2, {}},
    {"Pcm20FillsTheUpperBitsOf24", Riff(Chunk("fmt ", Number(1, 2) + Number(1, 2) + Number(48000, 4) + Number(144000, 4) +
     Number(3, 2) + Number(20, 2)) + Chunk("data", std::string("\x00\x00\xC0", 3))), 1, {-0.5f}},
    {"RubbishBehindTheSamples", Riff(kPcm16 + kSound + "LIST" + Number(0x7FFFFFFF, 4) + "cut"), 2, kFourWordSamples},
    {"LengthUnknownInAPipe", Riff(kPcm16 + kEndless), 2, kFourWordSamples},
    {"LengthNeverWritten", "RIFF" + Number(0, 4) + "WAVE" + kPcm16 + "data" + Number(0, 4) + kFourWords, 2, kFourWordSamples},
    {"Rf64LengthNeverWritten", Rf64(Ds64(0), kPcm16 + kEndless), 2, kFourWordSamples},
    {"DataCut", Riff(kPcm16 + kSound.substr(0, 14)), 2, {0.5f, -1.f}, 1},
    {"DataEndsInsideAFrame", Riff(kPcm16 + Chunk("data", kFourWords.substr(0, 6))), 2, {0.5f, -1.f}, 1},
    {"DataOf4GiB", Riff(kPcm16 + "data" + Number(0xFFFFFFFC, 4) + kFourWords), 2, kFourWordSamples, 0x3FFFFFFF - 2},
    {"Rf64Of16EiB", Rf64(Ds64(0xFFFFFFFFFFFFFFFC), kPcm16 + kEndless), 2, kFourWordSamples, 0x3FFFFFFFFFFFFFFF - 2},
    {"AiffSamplesBeforeTheirFormat", Form("AIFF", BigChunk("ANNO", "odd") + Sound(std::string("\x40\x00\x80\x00", 4), 6) + Common(2, 1, 16)), 2,
     {0.5f, -1.f}},
    {"Aiff12BitsFill16", Form("AIFF", Common(1, 1, 12) + Sound(std::string("\xC0\x00", 2))), 1, {-0.5f}},
    {"AiffCut", Form("AIFF", Common(1, 9, 16) + Sound(std::string("\x40\x00\x80", 3))).substr(0, 57), 1, {0.5f}, 8},
    {"AiffLengthUnknown", Form("AIFF", Common(1, 0, 8) + Sound("\x40\xC0")), 1, {0.5f, -0.5f}},
    {"AifcIn24", Form("AIFC", Common(1, 1, 16, "in24") + Sound(std::string("\xC0\x00\x00", 3))), 1, {-0.5f}},
    {"AifcIn32", Form("AIFC", Common(1, 1, 16, "in32") + Sound(std::string("\xC0\x00\x00\x00", 4))), 1, {-0.5f}},
    {"AifcFl32", Form("AIFC", Common(1, 1, 32, "fl32") + Sound(std::string("\x3F\xC0\x00\x00", 4))), 1, {1.5f}},
    {"AifcTwos", Form("AIFC", Common(1, 1, 16, "twos") + Sound(std::string("\xC0\x00", 2))), 1, {-0.5f}},
    {"AifcSowt", Form("AIFC", Common(1, 1, 16, "sowt") + Sound(std::string("\x00\xC0", 2))), 1, {-0.5f}},
};
// clang-format on

TEST_F(WavFileTest, GivesTheSamplesThatAreInTheBytes) {
    for (const auto& [name, bytes, channels, samples, missing] : kReadable) {
        SCOPED_TRACE(name);
        Store(bytes);
        tav::AudioFileInfo info;
        const tav::AudioBuffer audio = tav::ReadAudioFile(path_, &info);
        EXPECT_EQ(info.missingFrames, missing);
        ASSERT_EQ(audio.NumChannels(), channels);
        ASSERT_EQ(audio.NumFrames(), samples.size() / channels);
        EXPECT_EQ(audio.SampleRate(), 48000.0);
        for (std::size_t k = 0; k < samples.size(); ++k) {
            EXPECT_EQ(audio.Channel(static_cast<unsigned>(k % channels))[k / channels], samples[k]);
        }
    }
}

// clang-format off
const Case kRefused[] = {
    {"Empty", ""},
    {"CutInTheHead", "RIFF\x10"},
    {"NotRiff", "RIFX" + Riff(kPcm16 + kSound).substr(4)},
    {"NotWave", "RIFF" + Number(4, 4) + "AVI "},
    {"NoChunks", Riff("")},
    {"NoData", Riff(kPcm16 + Chunk("LIST", "even"))},
    {"NoFormat", Riff(kSound)},
    {"FormatBehindTheData", Riff(kSound + kPcm16)},
    {"FormatTooSmall", Riff(Chunk("fmt ", std::string(14, '\1')) + Chunk("data", ""))},
    {"FormatCut", Riff(kPcm16.substr(0, 16))},
    {"ForeignChunkOf4GiB", Riff("LIST" + Number(0xFFFFFFFF, 4) + kPcm16)},
    {"Rf64WithoutDs64", Rf64("", kPcm16 + kEndless)},
    {"Ds64TooSmall", Rf64(Chunk("ds64", "tiny"), kPcm16 + kSound)},
    {"NoChannels", Riff(Chunk("fmt ", Format(1, 0, 16)) + kSound)},
    {"NoSampleRate", Riff(Chunk("fmt ", Format(1, 2, 16, 0)) + kSound)},
    {"UnknownTag", Riff(Chunk("fmt ", Format(85, 2, 16)) + kSound)},
    {"Pcm40", Riff(Chunk("fmt ", Format(1, 2, 40)) + kSound)},
    {"Float16", Riff(Chunk("fmt ", Format(3, 1, 16)) + kSound)},
    {"FrameSizesDisagree", Riff(Chunk("fmt ", Format(1, 2, 16).substr(0, 12) + Number(5, 2) + Number(16, 2)) + kSound)},
    {"AiffWithoutCommon", Form("AIFF", Sound("even"))},
    {"AiffCommonTooSmall", Form("AIFF", BigChunk("COMM", "tiny") + Sound("even"))},
    {"AiffCommonCut", Form("AIFF", Common(1, 1, 16).substr(0, 20))},
    {"AiffSoundTooSmall", Form("AIFF", Common(1, 1, 16) + BigChunk("SSND", "tiny"))},
    {"AiffOffsetBeyondTheEnd", Form("AIFF", Common(1, 1, 16) + BigChunk("SSND", BigNumber(3, 4) + BigNumber(0, 4) + "xx"))},
    {"AiffNoChannels", Form("AIFF", Common(0, 1, 16) + Sound("even"))},
    {"Aiff40Bits", Form("AIFF", Common(1, 1, 40) + Sound("even"))},
    {"AifcUnknownCompression", Form("AIFC", Common(1, 1, 16, "MAC6") + Sound("even"))},
    {"NotAiff", Form("8SVX", Common(1, 1, 16) + Sound("even"))},
    {"AiffRateOfZero", Form("AIFF", BigChunk("COMM", std::string("\0\1\0\0\0\1\0\20", 8) + std::string(10, '\0')) + Sound("even"))},
    {"ExtensibleUnknownTag", Riff(Chunk("fmt ", Extensible(85, 2, 16)) + kSound)},
    {"ExtensibleForeignGuid", Riff(Chunk("fmt ", Extensible(1, 2, 16).substr(0, 39) + "x") + kSound)},
    {"ExtensibleTooSmall", Riff(Chunk("fmt ", Format(0xFFFE, 2, 16)) + kSound)},
};
// clang-format on

TEST_F(WavFileTest, RefusalsNameTheFileAndTheFault) {
    const std::string named = path_.string() + ": ";
    for (const Case& c : kRefused) {
        Store(c.bytes);
        const std::string fault = FaultOf([&] { tav::ReadAudioFile(path_); });
        const std::size_t at = fault.find(named);
        ASSERT_NE(at, std::string::npos) << c.name << ": " << fault;
        EXPECT_GT(fault.size(), at + named.size()) << c.name << ": no fault named";
    }
}

TEST_F(WavFileTest, WhatIsWrittenReadsBack) {
    tav::AudioBuffer audio(3, 7001, 44100.0);  // more than a block, of an odd number of bytes
    for (unsigned c = 0; c < 3; ++c) {
        for (std::size_t k = 0; k < 7001; ++k) {
            // Multiples of 2^-15: exact in every format.
            audio.Channel(c)[k] =
                static_cast<float>((k * 7919 + c * 104729) % 65536) * 0x1p-15f - 1.f;
        }
    }
    for (const WavFormat format : {WavFormat::Pcm16, WavFormat::Pcm24, WavFormat::Pcm32,
                                   WavFormat::Float32, WavFormat::Float64}) {
        tav::WriteWavFile(path_, audio, format);
        const std::string bytes = Stored();
        EXPECT_EQ(bytes.size() % 2, 0u);
        EXPECT_EQ(bytes.substr(4, 4), Number(bytes.size() - 8, 4));
        const std::string fact = Chunk("fact", Number(7001, 4));
        EXPECT_EQ(bytes.find(fact) != std::string::npos, format >= WavFormat::Float32);

        const tav::AudioBuffer back = tav::ReadAudioFile(path_);
        ASSERT_EQ(back.NumChannels(), 3u);
        EXPECT_EQ(back.SampleRate(), 44100.0);
        for (unsigned c = 0; c < 3; ++c) {
            EXPECT_TRUE(std::ranges::equal(back.Channel(c), audio.Channel(c))) << c;
        }
    }
}

TEST_F(WavFileTest, PcmClipsAndFloatDoesNot) {
    tav::AudioBuffer audio(1, 3, 8000.0);
    std::ranges::copy(std::vector{2.f, -2.f, std::numeric_limits<float>::quiet_NaN()},
                      audio.Channel(0).begin());
    tav::WriteWavFile(path_, audio, WavFormat::Pcm24);
    const std::string clipped("\xFF\xFF\x7F\x00\x00\x80\x00\x00\x00\x00", 10);  // and the padding
    EXPECT_EQ(Stored().substr(Stored().size() - 10), clipped);
    tav::WriteWavFile(path_, audio);
    EXPECT_EQ(tav::ReadAudioFile(path_).Channel(0)[0], 2.f);
}

TEST_F(WavFileTest, AFileAppearsWholeOrNotAtAll) {
    const std::vector<float> samples(1000, 0.5f);
    const float* const channels[] = {samples.data()};
    {
        tav::WavFileWriter writer(path_, 1, 48000.0);
        writer.Write(channels, samples.size());
        EXPECT_FALSE(std::filesystem::exists(path_));
    }
    EXPECT_TRUE(folder_.Names().empty());

    tav::WavFileWriter writer(path_, 1, 48000.0);
    writer.Write(channels, 600);
    writer.Write(channels, 400);
    writer.Close();
    EXPECT_EQ(tav::ReadAudioFile(path_).NumFrames(), 1000u);
    const std::string before = Stored();
    { tav::WavFileWriter(path_, 1, 48000.0).Write(channels, 10); }
    EXPECT_EQ(Stored(), before) << "an unfinished writer replaced a file";
    EXPECT_NE(FaultOf([&] { writer.Write(channels, 1); }), "");
}

TEST_F(WavFileTest, WritersRefuseWhatNoFileCanHold) {
    const auto faultFor = [&](unsigned channels, double rate) {
        return FaultOf([&] { tav::WavFileWriter(path_, channels, rate); });
    };
    const std::string faults[] = {faultFor(0, 48000.0),
                                  faultFor(20000, 48000.0),
                                  faultFor(1, 0.0),
                                  faultFor(1, std::numeric_limits<double>::quiet_NaN()),
                                  FaultOf([&] { tav::ReadAudioFile(path_); }),
                                  FaultOf([&] { tav::ReadAudioFile(folder_.Path()); }),
                                  FaultOf([&] { tav::WavFileWriter(folder_.Path(), 1, 48000.0); })};
    for (const std::string& fault : faults) {
        EXPECT_NE(fault.find(folder_.Path().string()), std::string::npos) << fault;
    }
    EXPECT_TRUE(folder_.Names().empty());
}

/// Only the header of a file beyond 4 GiB is written; the rest is a hole.
TEST_F(WavFileTest, FindsSamplesBeyond4GiB) {
    const tav::ByteBlock block =
        tav::ComposeWavHeader({WavFormat::Pcm16, 2, 48000, std::uint64_t{1} << 31, 0});
    Store({block.begin(), block.end()});
    const std::uint64_t promised = block.size() + (std::uint64_t{4} << 31);
    for (const unsigned missing : {0u, 3u}) {
        std::filesystem::resize_file(path_, promised - 4 * missing);
        std::ifstream stream(path_, std::ios::binary);
        tav::ByteSource source(stream, "big");
        EXPECT_EQ(source.TakeId(), "RF64");
        tav::AudioFileInfo info;
        const tav::StoredSamples stored = tav::FindWavSamples(source, true, info);
        EXPECT_EQ(stored.numFrames + missing, std::uint64_t{1} << 31);
        EXPECT_EQ(info.missingFrames, missing);
        EXPECT_EQ(stored.position, block.size());
    }
}

struct MaskCase {
    std::vector<std::string_view> labels;
    std::uint32_t mask;
};

TEST(WavHeader, NamesLoudspeakersOnlyInTheOrderOfTheFormat) {
    const MaskCase cases[] = {
        {{"L", "R"}, 0x3},
        {{"L", "R", "C", "LFE", "Ls", "Rs"}, 0x3F},
        {{"L", "R", "C", "LFE", "Ls", "Rs", "Ltf", "Rtf", "Ltr", "Rtr"}, 0x2D03F},
        {{"FL", "FR", "BR", "BL"}, 0},                            // round, not in pairs
        {{"L", "R", "C", "LFE", "Lss", "Rss", "Lrs", "Rrs"}, 0},  // the back pair comes first
        {{"M1", "M2"}, 0},
        {{"L", "R", "C", "LFE", "Ls", "Rs", "Cbf"}, 0},
    };
    for (const MaskCase& c : cases)
        EXPECT_EQ(tav::ChannelMaskOf(c.labels), c.mask) << c.labels.back();
}

TEST(WavHeader, IsRf64WhereSizesNeed64Bits) {
    for (const std::uint64_t frames : {std::uint64_t{1} << 20, std::uint64_t{1} << 31}) {
        const tav::ByteBlock block = tav::ComposeWavHeader({WavFormat::Pcm16, 2, 48000, frames, 0});
        const std::string bytes(block.begin(), block.end());
        const bool isBig = frames > std::uint64_t{1} << 30;
        EXPECT_EQ(bytes.substr(0, 4), isBig ? "RF64" : "RIFF");
        EXPECT_EQ(bytes.substr(12, 4), isBig ? "ds64" : "JUNK");
        EXPECT_EQ(bytes.substr(28, 8), Number(isBig ? frames * 4 : 0, 8));
        EXPECT_EQ(bytes.substr(bytes.size() - 4), Number(isBig ? 0xFFFFFFFF : frames * 4, 4));
    }
}

}  // namespace
