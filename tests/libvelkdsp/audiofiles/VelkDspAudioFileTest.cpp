// SPDX-License-Identifier: MIT
// Files that libsndfile writes, read here; files that are written here, read by libsndfile.
#include "audiofiles/VelkDspAudioFile.h"

#include "audiofiles/VelkDspWavFile.h"
#include "reference/Signals.h"
#include "support/ByName.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sndfile.h>
#include <vector>

namespace {

using Tests::TemporaryFolder;

// More than a piece of the reader; even, for libsndfile counts the padding byte of an odd AIFF.
constexpr sf_count_t kNumFrames = 20010;

struct SndfileCase {
    const char* name;
    int format;
};

// clang-format off
const SndfileCase kSndfileCases[] = {
    {"Wav8",      SF_FORMAT_WAV | SF_FORMAT_PCM_U8},   {"Wav16",     SF_FORMAT_WAV | SF_FORMAT_PCM_16},
    {"Wav24",     SF_FORMAT_WAV | SF_FORMAT_PCM_24},   {"Wav32",     SF_FORMAT_WAV | SF_FORMAT_PCM_32},
    {"WavFloat",  SF_FORMAT_WAV | SF_FORMAT_FLOAT},    {"WavDouble", SF_FORMAT_WAV | SF_FORMAT_DOUBLE},
    {"WavALaw",   SF_FORMAT_WAV | SF_FORMAT_ALAW},     {"WavMuLaw",  SF_FORMAT_WAV | SF_FORMAT_ULAW},
    {"WavEx8",    SF_FORMAT_WAVEX | SF_FORMAT_PCM_U8}, {"WavEx24",   SF_FORMAT_WAVEX | SF_FORMAT_PCM_24},
    {"WavExFloat", SF_FORMAT_WAVEX | SF_FORMAT_FLOAT}, {"WavExALaw", SF_FORMAT_WAVEX | SF_FORMAT_ALAW},
    {"Rf64Of16",  SF_FORMAT_RF64 | SF_FORMAT_PCM_16},  {"Rf64Float", SF_FORMAT_RF64 | SF_FORMAT_FLOAT},
    {"Aiff8",     SF_FORMAT_AIFF | SF_FORMAT_PCM_S8},  {"AiffRaw",   SF_FORMAT_AIFF | SF_FORMAT_PCM_U8},
    {"Aiff16",    SF_FORMAT_AIFF | SF_FORMAT_PCM_16},  {"Aiff24",    SF_FORMAT_AIFF | SF_FORMAT_PCM_24},
    {"Aiff32",    SF_FORMAT_AIFF | SF_FORMAT_PCM_32},  {"AiffFloat", SF_FORMAT_AIFF | SF_FORMAT_FLOAT},
    {"AiffDouble", SF_FORMAT_AIFF | SF_FORMAT_DOUBLE}, {"AiffALaw",  SF_FORMAT_AIFF | SF_FORMAT_ALAW},
    {"AiffMuLaw", SF_FORMAT_AIFF | SF_FORMAT_ULAW},
    {"AifcSowt16", SF_FORMAT_AIFF | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE},
    {"AifcSowt24", SF_FORMAT_AIFF | SF_FORMAT_PCM_24 | SF_ENDIAN_LITTLE},
    {"AifcSowt32", SF_FORMAT_AIFF | SF_FORMAT_PCM_32 | SF_ENDIAN_LITTLE},
};
// clang-format on

class SndfileTest : public testing::TestWithParam<SndfileCase> {
protected:
    /// What libsndfile reads of the file, frame by frame.
    std::vector<float> PeerSamples(int channels) const {
        SF_INFO info{};
        SNDFILE* file = sf_open(Path().c_str(), SFM_READ, &info);
        EXPECT_NE(file, nullptr) << sf_strerror(nullptr);
        if (file == nullptr) return {};
        EXPECT_EQ(info.channels, channels);
        std::vector<float> samples(static_cast<std::size_t>(info.frames * channels));
        EXPECT_EQ(sf_readf_float(file, samples.data(), info.frames), info.frames);
        sf_close(file);
        return samples;
    }

    void WriteByPeer(int format, int channels, const std::vector<float>& samples) const {
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = channels;
        info.format = format;
        SNDFILE* file = sf_open(Path().c_str(), SFM_WRITE, &info);
        ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
        sf_writef_float(file, samples.data(), static_cast<sf_count_t>(samples.size()) / channels);
        sf_close(file);
    }

    std::string Path() const { return (folder_ / "subject").string(); }

    TemporaryFolder folder_;
};

/// Noise of 24 significant bits with full scale and silence among it, frame by frame.
std::vector<float> TestSamples(int channels) {
    std::mt19937 generator(7);
    std::vector<float> samples(static_cast<std::size_t>(kNumFrames * channels));
    for (float& sample : samples) {
        sample = static_cast<float>(static_cast<std::int32_t>(generator())) * 0x1p-31f * 0.999f;
    }
    samples[0] = 0;
    return samples;
}

bool SameBits(const tav::AudioBuffer& audio, const std::vector<float>& interleaved) {
    const std::size_t channels = audio.NumChannels();
    if (interleaved.size() != channels * audio.NumFrames()) return false;
    for (std::size_t at = 0; at < interleaved.size(); ++at) {
        const float own = audio.Channel(static_cast<unsigned>(at % channels))[at / channels];
        if (std::memcmp(&own, &interleaved[at], sizeof own) != 0) return false;
    }
    return true;
}

TEST_P(SndfileTest, BothReadTheSameBits) {
    for (const int channels : {1, 2, 5}) {
        WriteByPeer(GetParam().format, channels, TestSamples(channels));
        const tav::AudioBuffer audio = tav::ReadAudioFile(Path());
        EXPECT_EQ(audio.SampleRate(), 44100.0);
        EXPECT_EQ(audio.NumFrames(), static_cast<std::size_t>(kNumFrames));
        EXPECT_TRUE(SameBits(audio, PeerSamples(channels))) << channels;
    }
}
INSTANTIATE_TEST_SUITE_P(Formats, SndfileTest, testing::ValuesIn(kSndfileCases), Tests::kByName);

using WavWriterTest = SndfileTest;

TEST_F(WavWriterTest, PeersReadWhatIsWritten) {
    for (const int channels : {1, 2, 6}) {
        const std::vector<float> samples = TestSamples(channels);
        tav::AudioBuffer audio(static_cast<unsigned>(channels), kNumFrames, 96000);
        for (std::size_t at = 0; at < samples.size(); ++at) {
            const auto width = static_cast<std::size_t>(channels);
            audio.Channel(static_cast<unsigned>(at % width))[at / width] = samples[at];
        }
        for (const auto format :
             {tav::WavFormat::Pcm8, tav::WavFormat::Pcm16, tav::WavFormat::Pcm24,
              tav::WavFormat::Pcm32, tav::WavFormat::Float32, tav::WavFormat::Float64}) {
            tav::WriteWavFile(Path(), audio, format);
            const std::vector<float> heard = PeerSamples(channels);
            EXPECT_TRUE(SameBits(tav::ReadAudioFile(Path()), heard));
            // Half a step of the format, and the rounding of the float that is compared with. The
            // largest integer is a step below full scale.
            const unsigned bits = 8 * tav::SampleFormatOf(format).numBytes;
            const float bound = format >= tav::WavFormat::Float32
                                    ? 0.f
                                    : std::ldexp(1.f, -static_cast<int>(bits)) + 0x1p-24f;
            ASSERT_EQ(heard.size(), samples.size());
            for (std::size_t at = 0; at < samples.size(); ++at) {
                ASSERT_NEAR(heard[at], std::min(samples[at], 1 - 2 * bound), bound) << at;
            }
        }
    }
}

TEST_F(WavWriterTest, TheBroadcastChunkIsRead) {
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(Path().c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr);
    SF_BROADCAST_INFO sent{};
    std::strcpy(sent.description, "a bell");
    std::memset(sent.originator, 'o', sizeof sent.originator);  // fills its field without a zero
    std::memcpy(sent.origination_date, "2001-02-03", 10);
    std::memcpy(sent.origination_time, "04:05:06", 8);
    sent.time_reference_low = 7;
    sent.time_reference_high = 1;
    sf_command(file, SFC_SET_BROADCAST_INFO, &sent, sizeof sent);
    sf_close(file);

    tav::AudioFileInfo got;
    tav::ReadAudioFile(Path(), &got);
    ASSERT_TRUE(got.broadcast);
    EXPECT_EQ(got.broadcast->description, "a bell");
    EXPECT_EQ(got.broadcast->originator, std::string(32, 'o'));
    EXPECT_EQ(got.broadcast->date, "2001-02-03");
    EXPECT_EQ(got.broadcast->time, "04:05:06");
    EXPECT_EQ(got.broadcast->firstFrame, (std::uint64_t{1} << 32) + 7);
}

}  // namespace
