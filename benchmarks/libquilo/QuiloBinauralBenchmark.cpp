// SPDX-License-Identifier: MIT
// Many sources for headphones: the panner, one plain voice after the other, and other people's
// mixers.
//
// Times are those of this thread's processor. A moving source circles once a second; moving it is
// part of the time.
#include "BenchmarkInputs.h"
#include "kernels/VelkDspDenormalGuard.h"
#include "math/VelkDspSpherical.h"
#include "pan/QuiloHrtfFiltering.h"
#include "pan/QuiloPan.h"
#include "reference/PlainBinauralVoice.h"
#include "reference/PlainPathVoice.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <vector>

#ifdef QUILO_WITH_OPENAL
#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>
#endif
#ifdef QUILO_WITH_ZITA
#include <zita-convolver.h>
#endif

namespace {

using Quilo::HrtfFiltering;
using Quilo::HrtfResponses;

/// Where the sources of a run are: spread over azimuths and some elevations, circling.
class Circles {
public:
    Circles(unsigned numSources, double framesPerTurn)
        : numSources_(numSources),
          framesPerTurn_(framesPerTurn) {}

    void Advance(unsigned frames) { turn_ = std::fmod(turn_ + frames / framesPerTurn_, 1.0); }
    tav::CartesianVector At(unsigned source) const {
        const double turns = turn_ + static_cast<double>(source) / numSources_;
        return tav::FromNavigational(static_cast<float>(360.0 * turns),
                                     static_cast<float>(source % 7 * 10) - 20.f, 1.4f);
    }

private:
    unsigned numSources_;
    double framesPerTurn_;
    double turn_ = 0.0;
};

/// Noise for every source and room for two ears.
struct Block {
    Block(unsigned sources, unsigned frames)
        : left(frames),
          right(frames),
          input(sources),
          ears{left.data(), right.data()} {
        for (unsigned s = 0; s < sources; ++s) {
            input[s] = Noise(frames, s, -0.1f, 0.1f);
            inputs.push_back(input[s].data());
        }
    }
    void Silence() {
        std::ranges::fill(left, 0.f);
        std::ranges::fill(right, 0.f);
    }
    std::vector<float> left, right;
    std::vector<std::vector<float>> input;
    std::vector<const float*> inputs;
    float* ears[2];
};

void Count(benchmark::State& state, unsigned sources, unsigned frames) {
    state.SetItemsProcessed(state.iterations() * std::int64_t{sources} * frames);
}

/// @param rate  of the host; the built-in set is for 44100
void Panner(benchmark::State& state,
            unsigned sources,
            unsigned frames,
            float rate,
            bool moves,
            const char* subtype = "direct") {
    const auto panner = Quilo::Pan::Create(sources, 2, "binaural", subtype);
    Quilo::Pan& pan = *panner;
    pan.SetSampleRate(rate);
    pan.SetBufferSize(frames);
    pan.LoadHrtf("kemar");
    Circles circles(sources, static_cast<double>(rate));
    for (unsigned s = 0; s < sources; ++s) pan.SetSourcePosition(s, circles.At(s), true, true);
    Block block(sources, frames);
    const tav::DenormalGuard guard;  // as hosts have it round a block
    for (auto _ : state) {
        if (moves) {
            circles.Advance(frames);
            for (unsigned s = 0; s < sources; ++s) {
                pan.SetSourcePosition(s, circles.At(s), false, false);
            }
        }
        pan.Process(block.ears, block.inputs.data(), frames);
        benchmark::ClobberMemory();
    }
    Count(state, sources, frames);
}

void BinauralBiquad(benchmark::State& state) {
    Panner(state, static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)),
           44100.f, state.range(2) != 0);
}

void BinauralBuiltIn(benchmark::State& state) {
    Panner(state, static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)),
           static_cast<float>(state.range(2)), state.range(3) != 0);
}

void BinauralSubtype(benchmark::State& state, const char* subtype) {
    Panner(state, static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)),
           44100.f, state.range(2) != 0, subtype);
}

/// What the subtypes without measured filters do, one source after the other.
void BinauralPlainPaths(benchmark::State& state, bool hasTorso) {
    const auto sources = static_cast<unsigned>(state.range(0));
    const auto frames = static_cast<unsigned>(state.range(1));
    std::deque<Tests::PlainPathVoice> voices;
    for (unsigned s = 0; s < sources; ++s) {
        const Quilo::EarPath path{1.f + 0.01f * static_cast<float>(s % 50), 1.f, 0.5f, 0.9f};
        voices.emplace_back(44100.f, 1250.f, 650.f, 30.f)
            .Set({.direct = {path, path}, .reflected = {path, path}}, true);
    }
    Block block(sources, frames);
    const tav::DenormalGuard guard;  // as hosts have it round a block
    for (auto _ : state) {
        block.Silence();
        for (unsigned s = 0; s < sources; ++s) {
            voices[s].Perform(block.ears, block.inputs[s], frames, hasTorso);
        }
        benchmark::ClobberMemory();
    }
    Count(state, sources, frames);
}

void BinauralPlain(benchmark::State& state) {
    const auto sources = static_cast<unsigned>(state.range(0));
    const auto frames = static_cast<unsigned>(state.range(1));
    const auto set = Quilo::Hrtf::LoadShared("kemar");
    const auto responses = HrtfResponses::Of(set, {44100.f, Quilo::HrtfRealisation::Auto, 0});
    const Circles circles(sources, 44100.0);
    std::deque<Tests::PlainBinauralVoice> voices;
    for (unsigned s = 0; s < sources; ++s) {
        voices.emplace_back(responses->MaxCells(), 44100.f, 30.f);
        const Quilo::HrtfPoint& point = *set->NearestPoint(circles.At(s));
        const auto delays = Quilo::InterauralTimeDifference().Delays(point.position, point.delay);
        const auto& cells = *responses->CellsOf(point.index);
        voices[s].Set(0, cells.ears[0], delays.left, true);
        voices[s].Set(1, cells.ears[1], delays.right, true);
    }
    Block block(sources, frames);
    const tav::DenormalGuard guard;  // as hosts have it round a block
    for (auto _ : state) {
        block.Silence();
        for (unsigned s = 0; s < sources; ++s) {
            voices[s].Perform(block.ears, block.inputs[s], frames);
        }
        benchmark::ClobberMemory();
    }
    Count(state, sources, frames);
}

/// Decaying noise, a pair for each of 64 directions.
std::shared_ptr<const HrtfResponses> NoiseResponses(unsigned taps) {
    Quilo::HrtfData data;
    data.filterType = Quilo::Hrtfs::FilterType::Fir;
    data.filtersLength = taps;
    data.numChannels = 2;
    data.numPoints = 64;
    data.samplingRate = 48000.f;
    for (unsigned p = 0; p < data.numPoints; ++p) {
        Quilo::HrtfPoint point;
        point.position = tav::FromNavigational(static_cast<float>(p) * 5.6f, 0.f, 1.4f);
        point.filters = tav::Matrix<float>(2, taps);
        for (unsigned e = 0; e < 2; ++e) {
            const auto noise = Noise(taps, 2 * p + e, -0.1f, 0.1f);
            for (unsigned t = 0; t < taps; ++t) {
                const float part = static_cast<float>(t) / static_cast<float>(taps);
                point.filters(e, t) = std::exp(-6.f * part) * noise[t];
            }
        }
        data.points.push_back(std::move(point));
    }
    return std::make_shared<const HrtfResponses>(
        std::make_shared<const Quilo::Hrtf>(std::move(data)), Quilo::HrtfFormat{48000.f, {}, 0});
}

void BinauralFir(benchmark::State& state) {
    const auto taps = static_cast<unsigned>(state.range(0));
    const auto sources = static_cast<unsigned>(state.range(1));
    const auto frames = static_cast<unsigned>(state.range(2));
    HrtfFiltering filtering(NoiseResponses(taps), sources, frames);
    for (unsigned s = 0; s < sources; ++s) filtering.SetSource(s, {s, {}, 1.f}, 0.f);
    Block block(sources, frames);
    const tav::DenormalGuard guard;  // as hosts have it round a block
    for (auto _ : state) {
        block.Silence();
        filtering.Perform(block.ears[0], block.ears[1], block.inputs.data(), frames);
        benchmark::ClobberMemory();
    }
    Count(state, sources, frames);
}

#ifdef QUILO_WITH_ZITA
/// Uniform partitions of the block's size: all of the work is done in the calling thread.
void ZitaConvolver(benchmark::State& state) {
    const auto taps = static_cast<unsigned>(state.range(0));
    const auto sources = static_cast<unsigned>(state.range(1));
    const auto frames = static_cast<unsigned>(state.range(2));
    const auto responses = NoiseResponses(taps);
    Convproc convolver;
    if (convolver.configure(sources, 2, taps, frames, frames, frames, 0.f) != 0) {
        return state.SkipWithError("not configured");
    }
    for (unsigned s = 0; s < sources; ++s) {
        for (unsigned e = 0; e < 2; ++e) {
            const auto row = responses->Set()->Data().points[s].filters.Row(e);
            std::vector<float> response(row.begin(), row.end());
            convolver.impdata_create(s, e, 1, response.data(), 0, static_cast<int>(taps));
        }
    }
    convolver.start_process(0, 0);
    const Block block(sources, frames);
    for (auto _ : state) {
        for (unsigned s = 0; s < sources; ++s) {
            std::copy_n(block.inputs[s], frames, convolver.inpdata(s));
        }
        convolver.process(true);
        benchmark::DoNotOptimize(convolver.outdata(0));
        benchmark::ClobberMemory();
    }
    convolver.stop_process();
    convolver.cleanup();
    Count(state, sources, frames);
}
#endif

#ifdef QUILO_WITH_OPENAL
void OpenALHrtf(benchmark::State& state) {
    const auto sources = static_cast<unsigned>(state.range(0));
    const auto frames = static_cast<unsigned>(state.range(1));
    const auto rate = static_cast<int>(state.range(2));
    const bool moves = state.range(3) != 0;
    const auto open = reinterpret_cast<LPALCLOOPBACKOPENDEVICESOFT>(
        alcGetProcAddress(nullptr, "alcLoopbackOpenDeviceSOFT"));
    const auto render = reinterpret_cast<LPALCRENDERSAMPLESSOFT>(
        alcGetProcAddress(nullptr, "alcRenderSamplesSOFT"));
    ALCdevice* const device = open(nullptr);
    const ALCint attributes[] = {ALC_FORMAT_CHANNELS_SOFT,
                                 ALC_STEREO_SOFT,
                                 ALC_FORMAT_TYPE_SOFT,
                                 ALC_FLOAT_SOFT,
                                 ALC_FREQUENCY,
                                 rate,
                                 ALC_HRTF_SOFT,
                                 ALC_TRUE,
                                 ALC_OUTPUT_LIMITER_SOFT,
                                 ALC_FALSE,
                                 ALC_MONO_SOURCES,
                                 static_cast<ALCint>(sources),
                                 0};
    ALCcontext* const context = alcCreateContext(device, attributes);
    alcMakeContextCurrent(context);
    ALCint status = 0;
    alcGetIntegerv(device, ALC_HRTF_STATUS_SOFT, 1, &status);
    if (status != ALC_HRTF_ENABLED_SOFT) return state.SkipWithError("no HRTF");
    alDistanceModel(AL_NONE);
    const auto noise = Noise(16384, 1, -0.1f, 0.1f);
    std::vector<float> output(std::size_t{2} * frames);
    ALuint buffer = 0;
    alGenBuffers(1, &buffer);
    alBufferData(buffer, AL_FORMAT_MONO_FLOAT32, noise.data(),
                 static_cast<ALsizei>(noise.size() * sizeof(float)), rate);
    std::vector<ALuint> names(sources);
    alGenSources(static_cast<ALsizei>(sources), names.data());
    Circles circles(sources, static_cast<double>(rate));
    const auto place = [&] {
        for (unsigned s = 0; s < sources; ++s) {
            const tav::CartesianVector p = circles.At(s);
            alSource3f(names[s], AL_POSITION, p.x, p.z, -p.y);
        }
    };
    place();
    for (const ALuint name : names) {
        alSourcei(name, AL_BUFFER, static_cast<ALint>(buffer));
        alSourcei(name, AL_LOOPING, AL_TRUE);
    }
    alSourcePlayv(static_cast<ALsizei>(sources), names.data());
    for (auto _ : state) {
        if (moves) {
            circles.Advance(frames);
            place();
        }
        render(device, output.data(), static_cast<ALCsizei>(frames));
        benchmark::ClobberMemory();
    }
    if (alGetError() != AL_NO_ERROR) state.SkipWithError("OpenAL reports an error");
    Count(state, sources, frames);
    alDeleteSources(static_cast<ALsizei>(sources), names.data());
    alDeleteBuffers(1, &buffer);
    alcMakeContextCurrent(nullptr);
    alcDestroyContext(context);
    alcCloseDevice(device);
}
BENCHMARK(OpenALHrtf)
    ->ArgNames({"sources", "frames", "rate", "moving"})
    ->ArgsProduct({{64, 250}, {64, 512}, {44100}, {0, 1}})
    ->Args({64, 64, 48000, 0});
#endif

BENCHMARK(BinauralBiquad)
    ->ArgNames({"sources", "frames", "moving"})
    ->ArgsProduct({{16, 64, 250}, {64, 512}, {0, 1}});
BENCHMARK(BinauralBuiltIn)
    ->ArgNames({"sources", "frames", "rate", "moving"})
    ->Args({64, 64, 48000, 0});
#define BINAURAL_SUBTYPE(name)                      \
    BENCHMARK_CAPTURE(BinauralSubtype, name, #name) \
        ->ArgNames({"sources", "frames", "moving"}) \
        ->ArgsProduct({{1, 64, 250}, {64}, {0, 1}})
BINAURAL_SUBTYPE(direct);
BINAURAL_SUBTYPE(nearfield);
BINAURAL_SUBTYPE(early);
BINAURAL_SUBTYPE(sphericalheadmodel);
BINAURAL_SUBTYPE(snowman);
BINAURAL_SUBTYPE(continuous);
BENCHMARK_CAPTURE(BinauralSubtype, diffuse, "diffuse")  // it takes two sources at least
    ->ArgNames({"sources", "frames", "moving"})
    ->ArgsProduct({{64, 250}, {64}, {0}});
BENCHMARK_CAPTURE(BinauralPlainPaths, head, false)->ArgNames({"sources", "frames"})->Args({64, 64});
BENCHMARK_CAPTURE(BinauralPlainPaths, snowman, true)
    ->ArgNames({"sources", "frames"})
    ->Args({64, 64});
BENCHMARK(BinauralPlain)->ArgNames({"sources", "frames"})->ArgsProduct({{16, 64, 250}, {64, 512}});
BENCHMARK(BinauralFir)
    ->ArgNames({"taps", "sources", "frames"})
    ->ArgsProduct({{128, 256, 512}, {64}, {64}});
#ifdef QUILO_WITH_ZITA
BENCHMARK(ZitaConvolver)
    ->ArgNames({"taps", "sources", "frames"})
    ->ArgsProduct({{128, 256, 512}, {64}, {64}});
#endif

}  // namespace
