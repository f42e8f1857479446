// SPDX-License-Identifier: MIT
// What OSC costs: to read a packet and carry it out, beside another implementation that only reads
// it; and what of a block of audio goes to a thousand moved sources.
#include "osc/VelkDspOscOutputStream.h"
#include "pan/QuiloPan.h"
#include "pan/QuiloPanDefaults.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_LIBLO)
#include <lo/lo.h>
#endif

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned kSources = 64;

using Packet = std::vector<std::byte>;

std::vector<Packet> Moves(std::int64_t count) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> degrees(-90.f, 90.f);
    std::vector<Packet> packets;
    for (std::int64_t k = 0; k < count; ++k) {
        tav::OSCOutputStream stream;
        stream.WriteMessage(tav::OSCMessage("/source/" + std::to_string(k % kSources + 1) + "/aed",
                                            degrees(random), degrees(random), 2.f));
        packets.push_back(stream.Bytes());
    }
    return packets;
}

std::unique_ptr<Quilo::Pan> Make(const char* type, unsigned outputs) {
    auto pan = Quilo::Pan::Create(kSources, outputs, type, "direct");
    pan->SetSampleRate(48000.f);
    pan->SetSpeakersPositions(Quilo::DefaultSpeakersFor(pan->GetType(), outputs));
    if (pan->GetType() == Quilo::Pan::Type::Binaural) pan->LoadHrtf("kemar");
    return pan;
}

/// From the bytes to the rows of gains.
void OscDecodeApply(benchmark::State& state) {
    const auto pan = Make("vbap2d", 8);
    const auto packets = Moves(state.range(0));
    for (auto _ : state) {
        for (const Packet& packet : packets) pan->Osc().Enqueue(packet);
        pan->Osc().CarryOut();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(OscDecodeApply)->ArgName("messages")->Arg(1000);

#if defined(QUILO_WITH_LIBLO)
void LibloDecode(benchmark::State& state) {
    auto packets = Moves(state.range(0));
    for (auto _ : state) {
        for (Packet& packet : packets) {
            lo_message message = lo_message_deserialise(packet.data(), packet.size(), nullptr);
            benchmark::DoNotOptimize(message);
            lo_message_free(message);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LibloDecode)->ArgName("messages")->Arg(1000);
#endif

/// The audio thread alone, in a muted block of 64 frames; `of_block` is its share of the time that
/// the block lasts at 48 kHz.
void OscInBlock(benchmark::State& state, const char* type, unsigned outputs) {
    const auto pan = Make(type, outputs);
    const auto packets = Moves(1000);
    std::vector<double> samples(64);
    const std::vector<double*> outs(outputs, samples.data());
    const std::vector<const double*> ins(kSources, samples.data());
    for (auto _ : state) {
        state.PauseTiming();
        for (const Packet& packet : packets) pan->Osc().Enqueue(packet);
        state.ResumeTiming();
        pan->ProcessHost(outs.data(), ins.data(), 64, true, false);
    }
    using benchmark::Counter;
    state.counters["of_block"] = Counter(static_cast<double>(state.iterations()) * 64.0 / 48000.0,
                                         Counter::kIsRate | Counter::kInvert);
}
BENCHMARK_CAPTURE(OscInBlock, vbap2d / 8, "vbap2d", 8U);
BENCHMARK_CAPTURE(OscInBlock, vbap / 24, "vbap", 24U);
BENCHMARK_CAPTURE(OscInBlock, dbap / 24, "dbap", 24U);
BENCHMARK_CAPTURE(OscInBlock, hoa3d / 16, "hoa3d", 16U);
BENCHMARK_CAPTURE(OscInBlock, binaural, "binaural", 2U);

}  // namespace
