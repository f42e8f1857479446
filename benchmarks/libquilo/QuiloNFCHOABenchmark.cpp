// SPDX-License-Identifier: MIT
// Near-field compensated panners beside the plainest form of the same work: one section after the
// other, one source after the other, and a loop per pair of source and channel. And the diffuse
// panner, per output.
#include "BenchmarkInputs.h"
#include "pan/QuiloDiffusePanning.h"
#include "pan/QuiloHOAPanning.h"
#include "pan/QuiloNFCHOAPanning.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr float kRate = 48000.f;

struct Signals {
    Signals(unsigned numInputs, unsigned numOutputs, unsigned frames)
        : input(Noise(std::size_t{numInputs} * frames, 1)),
          output(std::size_t{numOutputs} * frames) {
        for (unsigned i = 0; i < numInputs; ++i) inputs.push_back(input.data() + i * frames);
        for (unsigned o = 0; o < numOutputs; ++o) outputs.push_back(output.data() + o * frames);
    }
    std::vector<float> input, output;
    std::vector<const float*> inputs;
    std::vector<float*> outputs;
};

template <class Perform>
void Measure(benchmark::State& state, Signals& signals, unsigned frames, Perform perform) {
    for (auto _ : state) {
        std::ranges::fill(signals.output, 0.f);
        perform();
        benchmark::DoNotOptimize(signals.output.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames));
    state.counters["x_realtime"] =
        benchmark::Counter(static_cast<double>(frames) / static_cast<double>(kRate),
                           benchmark::Counter::kIsIterationInvariantRate);
}

/// Arguments: order, sources, frames.
template <class Panner>
void PlayPanner(benchmark::State& state, unsigned movedPerBlock) {
    const auto order = static_cast<unsigned>(state.range(0));
    const auto sources = static_cast<unsigned>(state.range(1));
    const auto frames = static_cast<unsigned>(state.range(2));
    Panner pan(sources, (order + 1) * (order + 1));
    pan.SetSampleRate(kRate);
    Signals signals(sources, pan.NumOutputs(), frames);
    std::mt19937 generator(2);
    for (unsigned i = 0; i < sources; ++i) {
        pan.SetSourcePosition(i, Tests::RandomPoint(generator), true, true);
    }
    unsigned next = 0;
    Measure(state, signals, frames, [&] {
        if (movedPerBlock > 0) {
            state.PauseTiming();
            for (unsigned i = 0; i < movedPerBlock; ++i) {
                pan.SetSourcePosition(next++ % sources, Tests::RandomPoint(generator), false, true);
            }
            state.ResumeTiming();
        }
        pan.Process(signals.outputs.data(), signals.inputs.data(), frames);
    });
}

class PlainSource {
public:
    PlainSource(unsigned order, float ratio, float scale) : ratio_(ratio) {
        for (unsigned n = 1; n <= order; ++n) {
            const auto& law = Quilo::NearFieldOrderOf(n);
            const float limit = law.LimitFrequency(std::log(ratio));
            orders_.emplace_back();
            for (const auto& pole : law.Poles()) {
                if (limit > 0.f) {
                    orders_.back().push_back({pole.isReal, true, 6.2831853f * limit * ratio * scale,
                                              static_cast<float>(pole.highPassDamping)});
                }
                orders_.back().push_back({pole.isReal, false,
                                          static_cast<float>(pole.magnitude) * scale,
                                          static_cast<float>(pole.damping)});
            }
        }
    }

    void Filter(unsigned order, float* x, unsigned frames) {
        for (Section& section : orders_[order - 1]) {
            section.isReal ? RunPole(section, x, frames) : RunPair(section, x, frames);
        }
    }

private:
    struct Section {
        bool isReal, isHighPass;
        float g, k;
        float s1 = 0.f, s2 = 0.f;
    };

    void RunPair(Section& s, float* x, unsigned frames) const {
        const float a1 = 1.f / (1.f + s.g * (s.g + s.k)), a2 = s.g * a1, a3 = s.g * a2;
        const float m1 = s.isHighPass ? -s.k : (ratio_ - 1.f) * s.k;
        const float m2 = s.isHighPass ? -1.f : ratio_ * ratio_ - 1.f;
        float s1 = s.s1, s2 = s.s2;
        for (unsigned k = 0; k < frames; ++k) {
            const float v = x[k] - s2;
            const float band = a1 * s1 + a2 * v;
            const float low = s2 + a2 * s1 + a3 * v;
            s1 = 2.f * band - s1;
            s2 = 2.f * low - s2;
            x[k] += m1 * band + m2 * low;
        }
        s.s1 = s1;
        s.s2 = s2;
    }
    void RunPole(Section& s, float* x, unsigned frames) const {
        const float share = s.g / (1.f + s.g), m = s.isHighPass ? -1.f : ratio_ - 1.f;
        float s1 = s.s1;
        for (unsigned k = 0; k < frames; ++k) {
            const float v = (x[k] - s1) * share;
            const float low = v + s1;
            s1 = low + v;
            x[k] += m * low;
        }
        s.s1 = s1;
    }

    float ratio_;
    std::vector<std::vector<Section>> orders_;
};

void NfcHoa(benchmark::State& state) { PlayPanner<Quilo::NFCHOAPanning3D>(state, 0); }
/// Every source glides all the time.
void NfcHoaMoving(benchmark::State& state) { PlayPanner<Quilo::NFCHOAPanning3D>(state, 4); }
/// The part of it that mixing has.
void HoaMixing(benchmark::State& state) { PlayPanner<Quilo::HOA3DPanning>(state, 0); }

void NfcHoaPlain(benchmark::State& state) {
    const auto order = static_cast<unsigned>(state.range(0));
    const auto sources = static_cast<unsigned>(state.range(1));
    const auto frames = static_cast<unsigned>(state.range(2));
    const unsigned channels = (order + 1) * (order + 1);
    const float scale = static_cast<float>(Quilo::kSpeedOfSound) / (2.f * kRate);
    Signals signals(sources, channels, frames);
    std::mt19937 generator(2);
    tav::HoaEncodingVector encoding(order, 3, tav::SphericalHarmonic::Normalization::SN3D);
    std::vector<PlainSource> filters;
    std::vector<std::vector<float>> gains;
    for (unsigned i = 0; i < sources; ++i) {
        const tav::CartesianVector place = Tests::RandomPoint(generator);
        filters.emplace_back(order, 1.f / std::hypot(place.x, place.y, place.z), scale);
        gains.emplace_back(channels);
        encoding.Compute(place, gains.back());
    }
    std::vector<float> signal(frames);
    Measure(state, signals, frames, [&] {
        for (unsigned i = 0; i < sources; ++i) {
            for (unsigned n = 0, channel = 0; n <= order; ++n) {
                std::copy_n(signals.inputs[i], frames, signal.begin());
                if (n > 0) filters[i].Filter(n, signal.data(), frames);
                for (; channel < (n + 1) * (n + 1); ++channel) {
                    const float gain = gains[i][channel];
                    float* const y = signals.outputs[channel];
                    for (unsigned k = 0; k < frames; ++k) y[k] += gain * signal[k];
                }
            }
        }
    });
}

void Diffuse(benchmark::State& state) {
    const auto outputs = static_cast<unsigned>(state.range(0));
    const auto frames = static_cast<unsigned>(state.range(1));
    Quilo::DiffusePanning pan(1, outputs);
    pan.SetSampleRate(kRate);
    Signals signals(1, outputs, frames);
    Measure(state, signals, frames,
            [&] { pan.Process(signals.outputs.data(), signals.inputs.data(), frames); });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"order", "sources", "frames"})
        ->Args({3, 64, 64})
        ->Args({7, 64, 64})
        ->Args({14, 64, 64});
}
BENCHMARK(NfcHoa)->Apply(Sizes);
BENCHMARK(NfcHoaPlain)->Apply(Sizes);
BENCHMARK(NfcHoaMoving)->Apply(Sizes);
BENCHMARK(HoaMixing)->Apply(Sizes);
BENCHMARK(Diffuse)->ArgNames({"outputs", "frames"})->Args({8, 64})->Args({64, 64})->Args({250, 64});

}  // namespace
