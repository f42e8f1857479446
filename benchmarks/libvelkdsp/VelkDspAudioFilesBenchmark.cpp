// SPDX-License-Identifier: MIT
// Reading of audio files, beside libsndfile and libmpg123, from files that the page cache holds.
#include "BenchmarkInputs.h"
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_SNDFILE)
#include <sndfile.h>
#endif
#if defined(QUILO_WITH_MPG123)
#include <mpg123.h>
#endif

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kNumFrames = 10 * 48000;

/// A file that is removed at the end of the program.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& kind)
        : path_(std::filesystem::temp_directory_path() /
                ("quilo-benchmark-" + std::to_string(std::random_device{}()) + "." + kind)) {}
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    std::string Name() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

struct FileKind {
    const char* name;
    tav::WavFormat format;
    unsigned numChannels;
};
constexpr FileKind kFileKinds[] = {
    {"pcm16/channels:2", tav::WavFormat::Pcm16, 2},
    {"pcm24/channels:2", tav::WavFormat::Pcm24, 2},
    {"float/channels:2", tav::WavFormat::Float32, 2},
    {"float/channels:16", tav::WavFormat::Float32, 16},
};

void StoreNoise(const std::string& name, tav::WavFormat format, unsigned numChannels) {
    tav::AudioBuffer audio(numChannels, kNumFrames, 48000);
    for (unsigned channel = 0; channel < numChannels; ++channel) {
        const auto noise = Noise(kNumFrames, channel + 1, -0.3f, 0.3f);
        std::ranges::copy(noise, audio.Channel(channel).begin());
    }
    tav::WriteWavFile(name, audio, format);
}

void CountFrames(benchmark::State& state) {
    const auto frames = static_cast<double>(state.iterations()) * kNumFrames;
    state.SetItemsProcessed(static_cast<std::int64_t>(frames));
    state.counters["x_realtime"] = benchmark::Counter(frames / 48000, benchmark::Counter::kIsRate);
}

void ReadOwn(benchmark::State& state, const std::string& name) {
    for (auto _ : state) benchmark::DoNotOptimize(tav::ReadAudioFile(name).Pointers());
    CountFrames(state);
}

void ReadWav(benchmark::State& state, const FileKind& kind) {
    const ScratchFile file("wav");
    StoreNoise(file.Name(), kind.format, kind.numChannels);
    ReadOwn(state, file.Name());
}

#if defined(QUILO_WITH_SNDFILE)
/// All frames into memory; they stay interleaved.
void SndfileReadWav(benchmark::State& state, const FileKind& kind) {
    const ScratchFile file("wav");
    StoreNoise(file.Name(), kind.format, kind.numChannels);
    for (auto _ : state) {
        SF_INFO info{};
        SNDFILE* const handle = sf_open(file.Name().c_str(), SFM_READ, &info);
        std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
        sf_readf_float(handle, samples.data(), info.frames);
        sf_close(handle);
        benchmark::DoNotOptimize(samples.data());
    }
    CountFrames(state);
}
#endif

#if defined(QUILO_WITH_MPG123)
void Mpg123ReadAll(benchmark::State& state, const std::string& name) {
    mpg123_init();
    for (auto _ : state) {
        mpg123_handle* const handle = mpg123_new(nullptr, nullptr);
        mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_FORCE_FLOAT | MPG123_QUIET, 0);
        mpg123_open(handle, name.c_str());
        std::vector<float> samples(2 * (kNumFrames + 4608));
        std::size_t done = 0;
        int result = MPG123_NEW_FORMAT;  // comes before the first sample
        while (result == MPG123_NEW_FORMAT || (result == MPG123_OK && done == 0)) {
            result = mpg123_read(handle, reinterpret_cast<unsigned char*>(samples.data()),
                                 samples.size() * sizeof(float), &done);
        }
        if (done < 2 * kNumFrames * sizeof(float)) state.SkipWithError("not all was decoded");
        mpg123_delete(handle);
        benchmark::DoNotOptimize(samples.data());
    }
    CountFrames(state);
}

/// 10 s of stereo noise with the encoder that is installed.
void DecodeWith(benchmark::State& state,
                const std::string& options,
                void (*decode)(benchmark::State&, const std::string&)) {
    const ScratchFile wav("wav"), mp3("mp3");
    StoreNoise(wav.Name(), tav::WavFormat::Pcm16, 2);
    if (std::system(("lame --quiet " + options + " " + wav.Name() + " " + mp3.Name()).c_str()) !=
        0) {
        return state.SkipWithError("lame is not installed");
    }
    decode(state, mp3.Name());
}
#endif

[[maybe_unused]] const bool kRegistered = [] {
    for (const FileKind& kind : kFileKinds) {
        const auto add = [&](const std::string& name, auto read) {
            benchmark::RegisterBenchmark((name + "/" + kind.name).c_str(), read, kind)
                ->Unit(benchmark::kMillisecond);
        };
        add("ReadWav", ReadWav);
#if defined(QUILO_WITH_SNDFILE)
        add("SndfileReadWav", SndfileReadWav);
#endif
    }
#if defined(QUILO_WITH_MPG123)
    for (const std::string rate : {"128", "320"}) {
        const std::string options = "-b " + rate;
        benchmark::RegisterBenchmark(("DecodeMp3/kbps:" + rate).c_str(), DecodeWith, options,
                                     ReadOwn)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("Mpg123Decode/kbps:" + rate).c_str(), DecodeWith, options,
                                     Mpg123ReadAll)
            ->Unit(benchmark::kMillisecond);
    }
#endif
    return true;
}();

}  // namespace
