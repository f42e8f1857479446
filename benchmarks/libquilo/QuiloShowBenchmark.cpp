// SPDX-License-Identifier: MIT
// The engine as a show uses it: every source sounds and is moved every 10 ms, or all of them rest.
// Both sides count, the setters of the control thread and the blocks of the audio thread. The peer
// is the dense matrix product of the same size, Sgemm/in:64/out:64/frames:64.
#include "BenchmarkInputs.h"
#include "containers/VelkDspAlignedVector.h"
#include "laws/QuiloDefaultLayouts.h"
#include "pan/QuiloPan.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr float kRate = 48000.f;
constexpr unsigned kFramesPerMove = 480;  // 10 ms
constexpr unsigned kMovesPerTour = 1024;

/// One tour all round the listener, up and down, between 1 and 3 metres.
std::vector<tav::CartesianVector> Tour() {
    std::vector<tav::CartesianVector> tour(kMovesPerTour);
    for (std::size_t k = 0; k < tour.size(); ++k) {
        const float turn = 2.f * std::numbers::pi_v<float> * static_cast<float>(k) /
                           static_cast<float>(kMovesPerTour);
        const float distance = 2.f + std::sin(5.f * turn);
        const float elevation = 1.3f * std::sin(3.f * turn);
        const float ground = distance * std::cos(elevation);
        tour[k] = {ground * std::sin(turn), ground * std::cos(turn),
                   distance * std::sin(elevation)};
    }
    return tour;
}

/// Doubles, as hosts have them: one channel after the other.
struct Channels {
    Channels(unsigned count, unsigned frames, unsigned seed) {
        const std::vector<float> noise = Noise(std::size_t{count} * frames, seed);
        samples.assign(noise.begin(), noise.end());
        for (unsigned c = 0; c < count; ++c) pointers.push_back(samples.data() + c * frames);
    }
    tav::AlignedVector<double> samples;
    std::vector<double*> pointers;
};

/// A type with a number of outputs that it takes.
struct ShowRow {
    const char* type;
    const char* subtype;
    unsigned outputs;
    Quilo::LayoutKind layout;
};

// Ambisonic rows are of order 7. Panners for headphones have benchmarks of their own.
constexpr auto kRing = Quilo::LayoutKind::Horizontal;
constexpr auto kSphere = Quilo::LayoutKind::Periphonic;
constexpr ShowRow kShows[] = {
    {"vbap", "direct", 64, kSphere},     {"knn", "direct", 64, kSphere},
    {"hoa3d", "direct", 64, kSphere},    {"dbap3d", "direct", 64, kSphere},
    {"nfchoa3d", "direct", 64, kSphere}, {"vbip", "direct", 64, kSphere},
    {"vdbap", "direct", 64, kSphere},    {"angular", "direct", 64, kRing},
    {"vbap2d", "direct", 64, kRing},     {"vbip2d", "direct", 64, kRing},
    {"dbap", "direct", 64, kRing},       {"spcap", "direct", 64, kRing},
    {"subwoofers", "direct", 64, kRing}, {"panr", "direct", 12, kRing},
    {"surround", "direct", 4, kRing},    {"xy", "direct", 2, kRing},
    {"ms", "direct", 2, kRing},          {"ab", "direct", 2, kRing},
    {"bformat", "direct", 4, kRing},     {"hoa2d", "direct", 15, kRing},
    {"nfchoa2d", "direct", 15, kRing},   {"vbap2d", "diffuse", 64, kRing},
};

class Show {
public:
    Show(const ShowRow& row, unsigned sources, unsigned frames)
        : pan_(Quilo::Pan::Create(sources, row.outputs, row.type, row.subtype)),
          frames_(frames),
          inputs_(sources, frames, 1),
          outputs_(row.outputs, frames, 2) {
        pan_->SetSampleRate(kRate);
        pan_->SetBufferSize(frames);
        pan_->SetSpeakersPositions(Quilo::DefaultSpeakers(row.layout, row.outputs));
        MoveAll(true);
        for (int block = 0; block < 100; ++block) Play();  // all glides have ended
    }

    void Move() {
        untilMove_ += frames_;
        while (untilMove_ >= kFramesPerMove) {
            untilMove_ -= kFramesPerMove;
            MoveAll(false);
        }
    }
    void Play() { pan_->Process(outputs_.pointers.data(), inputs_.pointers.data(), frames_); }

private:
    void MoveAll(bool immediate) {
        const unsigned sources = pan_->NumInputs();
        for (unsigned i = 0; i < sources; ++i) {
            const unsigned place = (moves_ + i * kMovesPerTour / sources) % kMovesPerTour;
            pan_->SetSourcePosition(i, tour_[place], immediate, false);
        }
        ++moves_;
    }

    const std::vector<tav::CartesianVector> tour_ = Tour();
    std::unique_ptr<Quilo::Pan> pan_;
    unsigned frames_;
    Channels inputs_;
    Channels outputs_;
    unsigned untilMove_ = 0;  // samples since the last move
    unsigned moves_ = 0;
};

void Run(benchmark::State& state, const ShowRow& row, bool moves) {
    const auto frames = static_cast<unsigned>(state.range(2));
    Show show(row, static_cast<unsigned>(state.range(0)), frames);
    for (auto _ : state) {
        if (moves) show.Move();
        show.Play();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(2));
    state.counters["x_realtime"] =
        benchmark::Counter(static_cast<double>(frames) / static_cast<double>(kRate),
                           benchmark::Counter::kIsIterationInvariantRate);
}

[[maybe_unused]] const bool kShowsAreRegistered = [] {
    for (const ShowRow& row : kShows) {
        const bool isPlain = row.subtype == std::string_view("direct");
        for (const bool moves : {true, false}) {
            const std::string name = std::string(moves ? "Show" : "ShowRest") +
                                     "/type:" + (isPlain ? row.type : row.subtype);
            benchmark::RegisterBenchmark(
                name.c_str(), [&row, moves](benchmark::State& state) { Run(state, row, moves); })
                ->ArgNames({"sources", "outputs", "frames"})
                ->Args({64, row.outputs, 64});
        }
    }
    return true;
}();

}  // namespace
