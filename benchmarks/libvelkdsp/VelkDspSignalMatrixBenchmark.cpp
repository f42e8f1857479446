// SPDX-License-Identifier: MIT
// The gain matrix beside a dense matrix product of the same size and beside its plain twin.
// Only the time in the audio thread counts; gains are set while the clock stands.
#include "processors/VelkDspSignalMatrix.h"

#include "BenchmarkInputs.h"
#include "reference/PlainSignalMatrix.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_OPENBLAS)
#include <cblas.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace {

constexpr float kSampleRate = 44100.f;
constexpr float kRampMs = 30.f;

/// inputs x frames samples and outputs x frames sums, channel after channel, from the start of a
/// cache line on.
struct Signals {
    explicit Signals(const benchmark::State& state)
        : numInputs(static_cast<unsigned>(state.range(0))),
          numOutputs(static_cast<unsigned>(state.range(1))),
          frames(static_cast<unsigned>(state.range(2))),
          inputBlock(Noise(std::size_t{numInputs} * frames + kLine, 1)),
          outputBlock(std::size_t{numOutputs} * frames + kLine),
          input(Aligned(inputBlock)),
          output(Aligned(outputBlock)) {
        for (unsigned i = 0; i < numInputs; ++i) inputs.push_back(input + i * frames);
        for (unsigned o = 0; o < numOutputs; ++o) outputs.push_back(output + o * frames);
    }

    static constexpr std::size_t kLine = 16;  // floats
    static float* Aligned(std::vector<float>& block) {
        void* first = block.data();
        std::size_t space = block.size() * sizeof(float);
        return static_cast<float*>(std::align(kLine * sizeof(float), sizeof(float), first, space));
    }

    unsigned numInputs, numOutputs, frames;
    std::vector<float> inputBlock, outputBlock;
    float *input, *output;
    std::vector<const float*> inputs;
    std::vector<float*> outputs;
};

/// Measures `block`. Before each call `between` may do what shall not be measured.
template <class Between, class Block>
void Measure(benchmark::State& state, Signals& signals, Between between, Block block) {
    for (auto _ : state) {
        between();
        block();
        benchmark::DoNotOptimize(signals.output);
        benchmark::ClobberMemory();
    }
    const auto samples = static_cast<double>(state.iterations()) * signals.frames;
    const double pairs = static_cast<double>(signals.numInputs) * signals.numOutputs;
    state.SetItemsProcessed(static_cast<std::int64_t>(samples * pairs));
    state.counters["x_realtime"] =
        benchmark::Counter(samples / static_cast<double>(kSampleRate), benchmark::Counter::kIsRate);
}

/// Rows of new gains, all different; a row of the sparse kind has three.
class Rows {
public:
    Rows(unsigned numOutputs, bool sparse)
        : sparse_(sparse),
          noise_(Noise(std::size_t{numOutputs} + 4099, 2)),
          row_(numOutputs) {}

    std::span<const float> Next(unsigned input) {
        const std::size_t first = count_++ % 4099;
        if (!sparse_) return {noise_.data() + first, row_.size()};
        std::ranges::fill(row_, 0.f);
        for (unsigned o : {0u, 1u, 2u})
            row_[(input * 37 + o * 5) % row_.size()] = noise_[first + o];
        return row_;
    }

private:
    bool sparse_;
    std::vector<float> noise_;
    std::vector<float> row_;
    std::size_t count_ = 0;
};

template <class Matrix>
void SetAllRows(Matrix& matrix, Rows& rows, unsigned numInputs, bool immediate) {
    for (unsigned i = 0; i < numInputs; ++i) matrix.SetRow(i, rows.Next(i), immediate);
}

/// Every pair glides all the time: each segment gets new targets.
template <class Matrix>
void PlayRamps(benchmark::State& state, Matrix& matrix, bool sparse) {
    Signals signals(state);
    Rows rows(signals.numOutputs, sparse);
    matrix.SetSampleRate(kSampleRate);
    matrix.SetInterpolationTime(kRampMs);
    const auto segment = static_cast<unsigned>(kSampleRate * kRampMs * 0.001f);
    unsigned untilTargets = 0;
    const auto moveOnce = [&] {
        if (untilTargets < signals.frames) {
            state.PauseTiming();
            SetAllRows(matrix, rows, signals.numInputs, false);
            untilTargets += segment;
            state.ResumeTiming();
        }
        untilTargets -= std::min(untilTargets, signals.frames);
    };
    const auto perform = [&] {
        matrix.Perform(signals.outputs.data(), signals.inputs.data(), signals.frames);
    };
    Measure(state, signals, moveOnce, perform);
}

template <class Matrix>
void PlayRest(benchmark::State& state, Matrix& matrix) {
    Signals signals(state);
    Rows rows(signals.numOutputs, false);
    matrix.SetSampleRate(kSampleRate);
    matrix.SetInterpolationTime(kRampMs);
    SetAllRows(matrix, rows, signals.numInputs, true);
    Measure(
        state, signals, [] {},
        [&] { matrix.Perform(signals.outputs.data(), signals.inputs.data(), signals.frames); });
}

template <class Matrix>
Matrix Make(const benchmark::State& state) {
    return Matrix(static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)));
}

void SignalMatrixConstant(benchmark::State& state) {
    auto matrix = Make<tav::SignalMatrix>(state);
    PlayRest(state, matrix);
}
void SignalMatrixRamped(benchmark::State& state) {
    auto matrix = Make<tav::SignalMatrix>(state);
    PlayRamps(state, matrix, false);
}
void SignalMatrixSparse(benchmark::State& state) {
    auto matrix = Make<tav::SignalMatrix>(state);
    PlayRamps(state, matrix, true);
}

/// The plain twin takes its frames as a signed number.
class PlainMatrix : public Plain::SignalMatrix {
public:
    using SignalMatrix::SignalMatrix;
    void Perform(float* const* outputs, const float* const* inputs, unsigned frames) {
        SignalMatrix::Perform(outputs, inputs, static_cast<int>(frames));
    }
};

void SignalMatrixConstantPlain(benchmark::State& state) {
    auto matrix = Make<PlainMatrix>(state);
    PlayRest(state, matrix);
}
void SignalMatrixRampedPlain(benchmark::State& state) {
    auto matrix = Make<PlainMatrix>(state);
    PlayRamps(state, matrix, false);
}
void SignalMatrixSparsePlain(benchmark::State& state) {
    auto matrix = Make<PlainMatrix>(state);
    PlayRamps(state, matrix, true);
}

#if defined(QUILO_WITH_OPENBLAS)
/// outputs += gains^T inputs, the same sums with gains at rest.
void Sgemm(benchmark::State& state) {
    Signals signals(state);
    const auto inputs = static_cast<int>(signals.numInputs);
    const auto outputs = static_cast<int>(signals.numOutputs);
    const auto frames = static_cast<int>(signals.frames);
    const std::vector<float> gains = Noise(std::size_t{signals.numInputs} * signals.numOutputs, 2);
    Measure(
        state, signals, [] {},
        [&] {
            cblas_sgemm(CblasRowMajor, CblasTrans, CblasNoTrans, outputs, frames, inputs, 1.f,
                        gains.data(), outputs, signals.input, frames, 1.f, signals.output, frames);
        });
}
#endif

void Shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"in", "out", "frames"});
    for (const int size : {64, 250}) {
        for (const int frames : {64, 512}) benchmark->Args({size, size, frames});
    }
    benchmark->Args({16, 32, 64})->Args({2, 8, 64})->Args({8, 8, 64});
}
void SparseShapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"in", "out", "frames"})->Args({250, 250, 64});
}

BENCHMARK(SignalMatrixConstant)->Apply(Shapes);
BENCHMARK(SignalMatrixConstantPlain)->Apply(Shapes);
BENCHMARK(SignalMatrixRamped)->Apply(Shapes);
BENCHMARK(SignalMatrixRampedPlain)->Apply(Shapes);
BENCHMARK(SignalMatrixSparse)->Apply(SparseShapes);
BENCHMARK(SignalMatrixSparsePlain)->Apply(SparseShapes);
#if defined(QUILO_WITH_OPENBLAS)
BENCHMARK(Sgemm)->Apply(Shapes);
#endif

}  // namespace
