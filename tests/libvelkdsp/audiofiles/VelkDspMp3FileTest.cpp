// SPDX-License-Identifier: MIT
// MPEG audio of several encoders, and of a writer of single bits, beside what libmpg123 decodes of
// it in floats.
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspMp3HuffmanTables.h"
#include "audiofiles/VelkDspWavFile.h"
#include "reference/Signals.h"
#include "support/ByName.h"
#include "support/HostProgram.h"
#include "support/Mp3Stream.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <mpg123.h>
#include <random>
#include <sstream>

namespace {

using Tests::CodedFrame;
using Tests::CodedGranule;

// What ISO 11172-4 asks of an accurate decoder.
const double kLargestRms = 0x1p-15 / std::sqrt(12.0);
constexpr double kLargestPeak = 0x1p-14;

struct PeerAudio {
    unsigned numChannels = 0;
    double sampleRateHz = 0;
    std::vector<float> samples;  // frame by frame
};

PeerAudio DecodeByPeer(const std::string& bytes) {
    mpg123_init();
    const std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(
        mpg123_new(nullptr, nullptr), mpg123_delete);
    mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_FORCE_FLOAT | MPG123_QUIET, 0);
    mpg123_open_feed(handle.get());
    mpg123_feed(handle.get(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    PeerAudio audio;
    for (;;) {
        unsigned char* block = nullptr;
        std::size_t numBytes = 0;
        const int result = mpg123_decode_frame(handle.get(), nullptr, &block, &numBytes);
        if (result != MPG123_OK && result != MPG123_NEW_FORMAT) break;
        long rate = 0;
        int channels = 0, encoding = 0;
        mpg123_getformat(handle.get(), &rate, &channels, &encoding);
        audio.numChannels = static_cast<unsigned>(channels);
        audio.sampleRateHz = static_cast<double>(rate);
        const auto* samples = reinterpret_cast<const float*>(block);
        audio.samples.insert(audio.samples.end(), samples, samples + numBytes / sizeof(float));
    }
    return audio;
}

tav::AudioBuffer Decode(const std::string& bytes, tav::AudioFileInfo* info = nullptr) {
    std::istringstream stream(bytes);
    return tav::ReadAudioStream(stream, "subject", info);
}

void ExpectSameSound(const tav::AudioBuffer& own, const PeerAudio& peer) {
    ASSERT_EQ(own.NumChannels(), peer.numChannels);
    EXPECT_EQ(own.SampleRate(), peer.sampleRateHz);
    ASSERT_EQ(own.NumFrames() * own.NumChannels(), peer.samples.size());
    double energy = 0, peak = 0, loudest = 0;
    for (std::size_t at = 0; at < peer.samples.size(); ++at) {
        const unsigned channel = static_cast<unsigned>(at % own.NumChannels());
        const double expected = static_cast<double>(peer.samples[at]);
        const double error =
            static_cast<double>(own.Channel(channel)[at / own.NumChannels()]) - expected;
        energy += error * error;
        peak = std::max(peak, std::abs(error));
        loudest = std::max(loudest, std::abs(expected));
    }
    EXPECT_GT(loudest, 0.005) << "nothing is heard";
    EXPECT_LE(std::sqrt(energy / static_cast<double>(peer.samples.size())), kLargestRms);
    EXPECT_LE(peak, kLargestPeak);
}

struct EncoderCase {
    const char* name;
    const char* command;        // reads in.wav, writes out
    std::size_t numFrames = 0;  // 0: the encoder does not tell its delays
};

constexpr std::size_t kNumFrames = 30000;  // of in.wav, at 44100 Hz

// clang-format off
const EncoderCase kEncoders[] = {
    {"JointStereo128",   "lame --quiet -b 128 in.wav out", kNumFrames},
    {"Stereo320",        "lame --quiet -b 320 -m s in.wav out", kNumFrames},
    {"MiddleSide96",     "lame --quiet -b 96 -m f in.wav out"},
    {"Mono64",           "lame --quiet -b 64 -m m in.wav out", kNumFrames},
    {"Variable",         "lame --quiet -V 2 in.wav out", kNumFrames},
    {"AverageWithoutReservoir", "lame --quiet --abr 140 --nores in.wav out", kNumFrames},
    {"CheckSums",        "lame --quiet -b 160 -p in.wav out", kNumFrames},
    {"FreeFormat",       "lame --quiet --freeformat -b 450 in.wav out", kNumFrames},
    {"WithoutInfoFrame", "lame --quiet -t -b 128 in.wav out"},
    {"Tagged",           "lame --quiet -b 128 --add-id3v2 --pad-id3v2-size 3000 --tt a --tc b in.wav out", kNumFrames},
    {"Rate48000",        "lame --quiet --resample 48 -b 128 in.wav out"},
    {"Rate32000",        "lame --quiet --resample 32 -b 96 in.wav out"},
    {"Rate24000",        "lame --quiet --resample 24 -b 80 in.wav out"},
    {"Rate22050",        "lame --quiet --resample 22.05 -b 64 in.wav out"},
    {"Rate16000Mono",    "lame --quiet --resample 16 -m m -b 32 in.wav out"},
    {"Rate12000",        "lame --quiet --resample 12 -b 48 in.wav out"},
    {"Rate11025",        "lame --quiet --resample 11.025 -V 4 in.wav out"},
    {"Rate8000",         "lame --quiet --resample 8 -b 32 in.wav out"},
    {"Layer2Stereo192",  "twolame --quiet -b 192 in.wav out"},
    {"Layer2Stereo384",  "twolame --quiet -b 384 -p in.wav out"},
    {"Layer2Joint96",    "twolame --quiet -b 96 -m joint in.wav out"},
    {"Layer2Mono32",     "twolame --quiet -b 32 -m mono in.wav out"},
    {"Layer2Mono112",    "twolame --quiet -b 112 -m mono in.wav out"},
    {"Layer2Low32000",   "sox -D in.wav -r 32000 low.wav 2>&1 && twolame --quiet -b 64 low.wav out"},
    {"Layer2Rate48000",  "sox -D in.wav -r 48000 low.wav 2>&1 && twolame --quiet -b 256 low.wav out"},
    {"Layer2Rate22050",  "sox -D in.wav -r 22050 low.wav 2>&1 && twolame --quiet -b 96 low.wav out"},
};
// clang-format on

/// Noise that changes its colour and its sides, with sharp beginnings: what makes an encoder use
/// all it has.
tav::AudioBuffer Music() {
    tav::AudioBuffer audio(2, kNumFrames, 44100);
    const Tests::Signal noise = Tests::Noise(2 * kNumFrames, 3, -0.3f, 0.3f);
    for (std::size_t k = 0; k < kNumFrames; ++k) {
        const auto decay = static_cast<float>(std::exp(-static_cast<double>(k % 5000) / 700));
        const auto tone = static_cast<float>(
            0.3 * std::sin(0.03 * static_cast<double>(k) * (1 + static_cast<double>(k) * 1e-5)));
        audio.Channel(0)[k] = tone + decay * noise[k];
        audio.Channel(1)[k] = 0.8f * tone + decay * noise[k % 10000 < 5000 ? k : kNumFrames + k];
    }
    return audio;
}

class Mp3Encoders : public testing::TestWithParam<EncoderCase> {
protected:
    std::string Encode(const std::string& command) const {
        tav::WriteWavFile(folder_ / "in.wav", Music(), tav::WavFormat::Pcm16);
        const std::string line = "cd " + folder_.Path().string() + " && " + command;
        EXPECT_EQ(std::system(line.c_str()), 0) << line;
        return Tests::ReadText(folder_ / "out");
    }

    Tests::TemporaryFolder folder_;
};

TEST_P(Mp3Encoders, SoundAsThePeerDecodesThem) {
    const std::string bytes = Encode(GetParam().command);
    tav::AudioFileInfo info;
    const tav::AudioBuffer own = Decode(bytes, &info);
    ExpectSameSound(own, DecodeByPeer(bytes));
    if (GetParam().numFrames > 0) {
        EXPECT_EQ(own.NumFrames(), GetParam().numFrames);
    }
    EXPECT_EQ(info.missingFrames, 0u);
    EXPECT_EQ(info.damagedFrames, 0u);
}
INSTANTIATE_TEST_SUITE_P(All, Mp3Encoders, testing::ValuesIn(kEncoders), Tests::kByName);

using Mp3Damage = Mp3Encoders;

std::size_t FirstDifference(const tav::AudioBuffer& a, const tav::AudioBuffer& b) {
    const auto x = a.Channel(0), y = b.Channel(0);
    return static_cast<std::size_t>(std::ranges::mismatch(x, y).in1 - x.begin());
}

TEST_F(Mp3Damage, EndsWithinFramesAndIsReported) {
    const std::string whole = Encode("lame --quiet -b 128 in.wav out");
    const tav::AudioBuffer sound = Decode(whole);
    const std::size_t half = whole.size() / 2;  // some 14600 samples
    const auto decode = [&](const std::string& bytes, tav::AudioFileInfo& info) {
        const tav::AudioBuffer audio = Decode(bytes, &info);
        EXPECT_GE(FirstDifference(audio, sound), 13000u);
        return audio;
    };
    tav::AudioFileInfo info;

    // The file ends inside a frame: what is missing is that frame and all behind it.
    const tav::AudioBuffer cut = decode(whole.substr(0, half), info);
    EXPECT_EQ(info.missingFrames % 1152, 0u);
    EXPECT_NEAR(static_cast<double>(cut.NumFrames() + info.missingFrames), 30000.0, 1152.0);
    EXPECT_EQ(info.damagedFrames, 0u);

    // Bytes are lost, rubbish stands between frames, or a stretch is overwritten: the end comes out
    // as before.
    std::string overwritten = whole;
    std::fill_n(overwritten.begin() + static_cast<std::ptrdiff_t>(half), 700, '\xFF');
    for (const std::string& bytes :
         {whole.substr(0, half) + whole.substr(half + 500),
          whole.substr(0, half) + whole.substr(half + 200),
          whole.substr(0, half) + std::string(3000, '\xFF') + whole.substr(half), overwritten}) {
        const tav::AudioBuffer audio = decode(bytes, info);
        EXPECT_GT(info.damagedFrames, 0u) << "frames that refer to lost ones";
        EXPECT_LE(info.damagedFrames + info.missingFrames, 5u * 1152);
        EXPECT_TRUE(std::ranges::equal(audio.Channel(0).last(8000), sound.Channel(0).last(8000)));
        EXPECT_LE(std::ranges::max(audio.Channel(0)), std::ranges::max(sound.Channel(0)));
    }
}

TEST_F(Mp3Damage, TagsAndRubbishAroundTheFramesAreSkipped) {
    const std::string bytes = Encode("lame --quiet -t -b 128 in.wav out");
    const tav::AudioBuffer sound = Decode(bytes);
    const std::string head("ID3\4\0\0\0\0\1\x20", 10);  // 160 bytes
    std::string inside;
    while (inside.size() < 160) inside += "\xFF\xFB\x90\x64";  // headers in a picture
    // The frame in which another encoder notes what it knows; it has no sound.
    const std::size_t length = tav::ParseMp3Header(0xFFFB9064).value().NumBytes();
    std::string facts = "\xFF\xFB\x90\x64" + std::string(32, '\0') + "VBRI";
    facts.resize(length, '\1');
    for (const std::string& around :
         {facts + bytes, head + inside + bytes, head + inside + head + inside + bytes,
          bytes + "TAG" + std::string(125, '\xFF'), std::string(1000, '\xFF') + bytes,
          bytes + std::string(300, '\0')}) {
        const tav::AudioBuffer audio = Decode(around);
        ASSERT_EQ(audio.NumFrames(), sound.NumFrames());
        EXPECT_EQ(FirstDifference(audio, sound), sound.NumFrames());
    }
    for (const std::string& none :
         {head + inside, inside.substr(0, 8), std::string(5000, '\xFF')}) {
        EXPECT_THROW(Decode(none), tav::Exception);
    }
}

constexpr std::uint32_t kStereo320 = 0xFFFBE000;      // MPEG-1, 44100 Hz, 1044 bytes
constexpr std::uint32_t kLowRateStereo = 0xFFF3E000;  // MPEG-2, 22050 Hz, 160 kbit/s

/// Every pair of values of a table with every sign that it may have, then extra bits of any size.
std::vector<int> PairsOf(unsigned select, std::mt19937& generator) {
    const tav::Mp3PairTable& table = tav::Mp3PairTableOf(select);
    const auto size = static_cast<int>(table.size);
    std::vector<int> values;
    for (int x = 0; x < size; ++x) {
        for (int y = 0; y < size; ++y) {
            for (int value : {x, y}) {
                if (value == 15 && table.numExtraBits > 0)
                    value += static_cast<int>(generator() % 2);
                values.push_back(generator() % 2 == 0 ? value : -value);
            }
        }
    }
    return values;
}

/// Packs values into frames, so many to a granule that their bits fit.
std::string StreamOf(const CodedGranule& model, const std::vector<int>& values) {
    constexpr std::size_t kPerGranule = 100;
    std::string stream;
    for (std::size_t at = 0; at < values.size();) {
        CodedFrame frame;
        for (auto& granule : frame) {
            for (CodedGranule& coded : granule) {
                coded = model;
                const std::size_t count = std::min(kPerGranule, values.size() - at);
                coded.values.assign(values.begin() + static_cast<std::ptrdiff_t>(at),
                                    values.begin() + static_cast<std::ptrdiff_t>(at + count));
                at += count;
            }
        }
        stream += Tests::Mp3FrameOf(kStereo320, frame);
    }
    return stream + Tests::Mp3FrameOf(kStereo320, CodedFrame{});
}

TEST(Mp3Huffman, PeersReadEveryCodeOfEveryTableAlike) {
    std::mt19937 generator(5);
    for (unsigned select = 1; select < 32; ++select) {
        const tav::Mp3PairTable& table = tav::Mp3PairTableOf(select);
        if (table.size == 0) continue;
        SCOPED_TRACE(select);
        CodedGranule model;
        model.table = select;
        model.globalGain = 184;  // a step is 2^-6.5
        const std::string stream = StreamOf(model, PairsOf(select, generator));
        ExpectSameSound(Decode(stream), DecodeByPeer(stream));
        if (table.numExtraBits == 0) continue;
        const int largest = 15 + (1 << table.numExtraBits) - 1;
        model.globalGain = 210 - 4 * static_cast<unsigned>(std::ceil(std::log2(largest) * 4 / 3));
        const std::string loud =
            StreamOf(model, {largest, -largest, largest / 2 + 8, 15, -15, largest});
        ExpectSameSound(Decode(loud), DecodeByPeer(loud));
    }
    for (const unsigned quadTable : {0u, 1u}) {
        CodedGranule granule;
        granule.quadTable = quadTable;
        for (int place = 0; place < 16; ++place) {
            for (int k = 3; k >= 0; --k) {
                granule.quads.push_back((place >> k & 1) * (generator() % 2 == 0 ? 1 : -1));
            }
        }
        CodedFrame frame;
        frame[0][0] = frame[1][1] = granule;
        const std::string stream =
            Tests::Mp3FrameOf(kStereo320, frame) + Tests::Mp3FrameOf(kStereo320, {});
        ExpectSameSound(Decode(stream), DecodeByPeer(stream));
    }
}

TEST(Mp3Huffman, FourValuesThatEndBeyondTheGranuleDoNotCount) {
    CodedFrame frame;
    frame[0][0].quads = {1, 0, -1, 1, 1, 1, 0, 1};
    frame[0][0].numLostBits = 1;
    const std::string end = Tests::Mp3FrameOf(kStereo320, {});
    const tav::AudioBuffer cut = Decode(Tests::Mp3FrameOf(kStereo320, frame) + end);
    frame[0][0].quads.resize(4);
    frame[0][0].numLostBits = 0;
    const tav::AudioBuffer whole = Decode(Tests::Mp3FrameOf(kStereo320, frame) + end);
    EXPECT_EQ(FirstDifference(cut, whole), whole.NumFrames());
}

struct StereoCase {
    const char* name;
    std::uint32_t word;
    unsigned blockType;
    bool isMixed;
    unsigned factorsCompress;                             // of the right channel
    std::vector<std::pair<std::size_t, unsigned>> parts;  // bands and the bits of their positions
};

// The mode extension is 1 for intensity, 3 for intensity and middle and side.
constexpr std::uint32_t kIntensity = 0x50, kIntensityAndMiddleSide = 0x70;

// clang-format off
const StereoCase kStereoCases[] = {
    {"Long",        kStereo320 | kIntensity,                 0, false, 12, {{11, 3}, {10, 2}}},
    {"LongMs",      kStereo320 | kIntensityAndMiddleSide,    0, false, 12, {{11, 3}, {10, 2}}},
    {"Start",       kStereo320 | kIntensityAndMiddleSide,    1, false, 12, {{11, 3}, {10, 2}}},
    {"Short",       kStereo320 | kIntensity,                 2, false, 12, {{18, 3}, {18, 2}}},
    {"ShortMs",     kStereo320 | kIntensityAndMiddleSide,    2, false, 12, {{18, 3}, {18, 2}}},
    {"MixedMs",     kStereo320 | kIntensityAndMiddleSide,    2, true,  12, {{17, 3}, {18, 2}}},
    {"LowLong",     kLowRateStereo | kIntensity,             0, false, 258, {{7, 3}, {7, 3}, {7, 3}}},
    {"LowLongFine", kLowRateStereo | kIntensityAndMiddleSide, 0, false, 259, {{7, 3}, {7, 3}, {7, 3}}},
    {"LowShort",    kLowRateStereo | kIntensity,             2, false, 258, {{12, 3}, {12, 3}, {12, 3}}},
    {"Rate8000Short", 0xFFE3E800 | kIntensity,               2, false, 258, {{12, 3}, {12, 3}, {12, 3}}},
    // Without intensity these are factors; how MPEG-2 packs them depends on one number.
    {"Factors",     kStereo320,                              0, false, 12, {{11, 3}, {10, 2}}},
    {"LowFactors",  kLowRateStereo,                          0, false, 214, {{6, 2}, {5, 3}, {5, 1}, {5, 2}}},
    {"LowFactorsShort", kLowRateStereo,                      2, false, 214, {{9, 2}, {9, 3}, {9, 1}, {9, 2}}},
    {"LowFactorsMixed", kLowRateStereo,                      2, true,  214, {{6, 2}, {9, 3}, {9, 1}, {9, 2}}},
    {"LowFactorsOfThreeParts", kLowRateStereo,               0, false, 453, {{6, 2}, {5, 3}, {7, 1}}},
    {"LowFactorsOfThreePartsShort", kLowRateStereo,          2, false, 453, {{9, 2}, {9, 3}, {12, 1}}},
    {"LowFactorsWithPreemphasis", kLowRateStereo,            0, false, 505, {{11, 1}, {10, 2}}},
    {"LowShortMs",  kLowRateStereo | kIntensityAndMiddleSide, 2, false, 259, {{12, 3}, {12, 3}, {12, 3}}},
};
// clang-format on

class Mp3Stereo : public testing::TestWithParam<StereoCase> {};

TEST_P(Mp3Stereo, SoundsAsThePeerDecodesIt) {
    const StereoCase& c = GetParam();
    std::mt19937 generator(9);
    std::string stream;
    for (int number = 0; number < 6; ++number) {
        CodedFrame frame;
        for (auto& granule : frame) {
            CodedGranule& left = granule[0];
            left.blockType = c.blockType;
            left.isMixed = c.isMixed;
            left.globalGain = 185;
            left.table = 7;
            if (c.blockType == 2) left.windowGains = {1, 0, 2};
            CodedGranule& right = granule[1] = left;
            for (std::size_t k = 0; k < tav::kMp3Lines; ++k) {
                left.values.push_back(static_cast<int>(generator() % 11) - 5);
            }
            // The right channel is silent from some line on; there its factors are positions. A
            // silent stretch below is no end.
            right.values.assign(left.values.begin(), left.values.begin() + 56 * number);
            if (number > 2) std::fill_n(right.values.begin() + 4, 60, 0);
            right.factorsCompress = c.factorsCompress;
            for (const auto& [numBands, numBits] : c.parts) {
                for (std::size_t band = 0; band < numBands; ++band) {
                    right.factors.emplace_back(generator() % (1u << numBits), numBits);
                }
            }
        }
        stream += Tests::Mp3FrameOf(c.word, frame);
    }
    stream += Tests::Mp3FrameOf(c.word, {});
    ExpectSameSound(Decode(stream), DecodeByPeer(stream));
}
/// The largest number that the bits of a position can hold says that the band is not in intensity.
TEST(Mp3Intensity, LeavesBandsAloneThatHaveNoPosition) {
    for (const unsigned numBits : {1u, 2u, 3u, 4u}) {
        CodedFrame frame;
        frame[0][0].values.assign(tav::kMp3Lines, 1);
        const std::string end = Tests::Mp3FrameOf(kLowRateStereo, {});
        const tav::AudioBuffer plain = Decode(Tests::Mp3FrameOf(kLowRateStereo, frame) + end);
        frame[0][1].factorsCompress = 2 * (36 + 6 + 1) * numBits;
        frame[0][1].factors.assign(21, {(1u << numBits) - 1, numBits});
        const std::uint32_t word = kLowRateStereo | kIntensity;
        const tav::AudioBuffer audio = Decode(Tests::Mp3FrameOf(word, frame) + end);
        EXPECT_EQ(FirstDifference(audio, plain), plain.NumFrames()) << numBits;
        EXPECT_TRUE(std::ranges::all_of(audio.Channel(1), [](float x) { return x == 0; }));
    }
}

INSTANTIATE_TEST_SUITE_P(Blocks, Mp3Stereo, testing::ValuesIn(kStereoCases), Tests::kByName);

}  // namespace
