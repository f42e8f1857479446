// SPDX-License-Identifier: MIT
// The filters beside what one would write first, and the transform beside FFTW.
#include "BenchmarkInputs.h"
#include "filterdesign/VelkDspFft.h"
#include "processors/VelkDspCrossfadedCascade.h"
#include "processors/VelkDspCrossfadedFir.h"
#include "processors/VelkDspMultiEqualizer.h"
#include "processors/VelkDspSections.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_FFTW)
#include <fftw3.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr float kSampleRate = 48000.f;
constexpr tav::FilterSetting kLowPass{tav::FilterKind::LowPass, 125.f, 0.7f, 0.f};

std::size_t Argument(const benchmark::State& state, std::size_t index) {
    return static_cast<std::size_t>(state.range(index));
}

/// Measures `block`, which makes `frames` samples of `channels` signals in `output`.
template <class Block>
void Measure(benchmark::State& state,
             std::vector<float>& output,
             std::size_t channels,
             std::size_t frames,
             Block block) {
    for (auto _ : state) {
        block();
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    const auto samples = static_cast<double>(state.iterations()) * static_cast<double>(frames);
    state.SetItemsProcessed(static_cast<std::int64_t>(samples * static_cast<double>(channels)));
    state.counters["x_realtime"] =
        benchmark::Counter(samples / static_cast<double>(kSampleRate), benchmark::Counter::kIsRate);
}

/// channels x frames samples in and out.
struct Signals {
    Signals(std::size_t channels, std::size_t frames)
        : input(Noise(channels * frames, 1)),
          output(channels * frames) {
        for (std::size_t c = 0; c < channels; ++c) {
            inputs.push_back(input.data() + c * frames);
            outputs.push_back(output.data() + c * frames);
        }
    }
    std::vector<float> input, output;
    std::vector<const float*> inputs;
    std::vector<float*> outputs;
};

void MultiEqualizer(benchmark::State& state) {
    const std::size_t channels = Argument(state, 0), frames = Argument(state, 1);
    tav::MultiEqualizer equalizer(static_cast<unsigned>(channels), 1);
    equalizer.SetSampleRate(kSampleRate);
    for (unsigned c = 0; c < channels; ++c) equalizer.SetBand(c, 0, kLowPass);
    Signals s(channels, frames);
    Measure(state, s.output, channels, frames, [&] {
        equalizer.Perform(s.outputs.data(), s.inputs.data(), static_cast<unsigned>(frames));
    });
}

/// One section after the other.
void MultiEqualizerPlain(benchmark::State& state) {
    const std::size_t channels = Argument(state, 0), frames = Argument(state, 1);
    std::vector<tav::SecondOrderSection> sections(channels);
    const tav::SectionDesign design =
        tav::DesignSection(kLowPass, static_cast<double>(kSampleRate));
    const tav::SectionLoop loop = tav::SectionLoop::Of(design.g, design.k);
    Signals s(channels, frames);
    Measure(state, s.output, channels, frames, [&] {
        for (std::size_t c = 0; c < channels; ++c) {
            for (std::size_t k = 0; k < frames; ++k) {
                const auto x = static_cast<double>(s.inputs[c][k]);
                s.outputs[c][k] = static_cast<float>(sections[c].Tick(x, loop, design));
            }
        }
    });
}

/// `taps` of noise over blocks of `frames`.
void PlayFir(benchmark::State& state, tav::FirResponse::Form form) {
    const std::size_t numTaps = Argument(state, 0), frames = Argument(state, 1);
    const tav::FirResponse response(Noise(numTaps, 2), form);
    tav::CrossfadedFir fir(numTaps, kSampleRate);
    fir.SetFade(0.f, tav::FadeShape::Linear);
    fir.Load(&response);
    Signals s(1, frames);
    Measure(state, s.output, 1, frames,
            [&] { fir.Perform(s.output.data(), s.input.data(), static_cast<unsigned>(frames)); });
}
void Fir(benchmark::State& state) { PlayFir(state, tav::FirResponse::Form::Cheapest); }
void FirPartitioned(benchmark::State& state) {
    PlayFir(state, tav::FirResponse::Form::Partitioned);
}

/// A sum over the taps for one sample after the other.
void FirPlain(benchmark::State& state) {
    const std::size_t numTaps = Argument(state, 0), frames = Argument(state, 1);
    const std::vector<float> taps = Noise(numTaps, 2);
    std::vector<float> history(numTaps + frames);
    Signals s(1, frames);
    Measure(state, s.output, 1, frames, [&] {
        std::copy(history.end() - static_cast<std::ptrdiff_t>(numTaps), history.end(),
                  history.begin());
        std::ranges::copy(s.input, history.begin() + static_cast<std::ptrdiff_t>(numTaps));
        for (std::size_t k = 0; k < frames; ++k) {
            float sum = 0.f;
            for (std::size_t t = 0; t < numTaps; ++t) sum += taps[t] * history[numTaps + k - t];
            s.output[k] = sum;
        }
    });
}

void Cascade(benchmark::State& state) {
    const std::size_t numCells = Argument(state, 0), frames = Argument(state, 1);
    const tav::BiquadCells cells(numCells, {0.9f, -0.5f, 0.2f, -0.4f, 0.3f});
    tav::Cascade cascade(numCells);
    Signals s(1, frames);
    Measure(state, s.output, 1, frames, [&] { cascade.Perform(cells, s.output, s.input.data()); });
}

void Fft(benchmark::State& state) {
    const std::size_t size = Argument(state, 0);
    tav::Fft fft(size);
    const std::vector<float> signal = Noise(size, 3);
    std::vector<float> re(fft.NumBins()), im(fft.NumBins());
    Measure(state, re, 1, size, [&] { fft.Forward(signal, re, im); });
}

#if defined(QUILO_WITH_FFTW)
/// The same transform, planned by measurement.
void FftwReal(benchmark::State& state) {
    const std::size_t size = Argument(state, 0);
    std::vector<float> signal(size), spectrum(size + 2);
    const fftwf_plan plan =
        fftwf_plan_dft_r2c_1d(static_cast<int>(size), signal.data(),
                              reinterpret_cast<fftwf_complex*>(spectrum.data()), FFTW_MEASURE);
    std::ranges::copy(Noise(size, 3), signal.begin());  // the plan holds the address
    Measure(state, spectrum, 1, size, [&] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
}
#endif

void Channels(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"channels", "frames"});
    for (const int channels : {1, 16, 250}) benchmark->Args({channels, 64});
    benchmark->Args({250, 1});
}
void ShortTaps(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"taps", "frames"})->Args({128, 64})->Args({512, 64})->Args({512, 1});
}
void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("size");
    for (const int size : {128, 256, 512, 1024, 2048, 4096, 65536}) benchmark->Arg(size);
}

BENCHMARK(MultiEqualizer)->Apply(Channels);
BENCHMARK(MultiEqualizerPlain)->Apply(Channels);
BENCHMARK(Fir)->Apply(ShortTaps)->Args({8192, 64});
BENCHMARK(FirPartitioned)->Apply(ShortTaps);
BENCHMARK(FirPlain)->Apply(ShortTaps)->Args({8192, 64});
BENCHMARK(Cascade)->ArgNames({"cells", "frames"})->Args({1, 64})->Args({6, 64});
BENCHMARK(Fft)->Apply(Sizes);
#if defined(QUILO_WITH_FFTW)
BENCHMARK(FftwReal)->Apply(Sizes);
#endif

}  // namespace
