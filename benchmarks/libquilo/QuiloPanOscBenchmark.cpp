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

/// @param isRelative  no message makes an earlier one needless
std::vector<Packet> Moves(std::int64_t count, bool isRelative = false, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> degrees(-90.f, 90.f);
    std::vector<Packet> packets;
    for (std::int64_t k = 0; k < count; ++k) {
        tav::OSCOutputStream stream;
        const std::string source = "/source/" + std::to_string(k % kSources + 1);
        stream.WriteMessage(
            isRelative ? tav::OSCMessage(source + "/azim++", degrees(random))
                       : tav::OSCMessage(source + "/aed", degrees(random), degrees(random), 2.f));
        packets.push_back(stream.Bytes());
    }
    return packets;
}

struct Panner {
    const char* type;
    unsigned outputs;
    const char* subtype = "direct";
};

std::unique_ptr<Quilo::Pan> Make(const Panner& panner) {
    const auto& [type, outputs, subtype] = panner;
    auto pan = Quilo::Pan::Create(kSources, outputs, type, subtype);
    pan->SetSampleRate(48000.f);
    pan->SetSpeakersPositions(Quilo::DefaultSpeakersFor(pan->GetType(), outputs));
    if (pan->GetType() == Quilo::Pan::Type::Binaural) pan->LoadHrtf("kemar");
    return pan;
}

/// From the bytes to the rows of gains.
void OscDecodeApply(benchmark::State& state) {
    const auto pan = Make({"vbap2d", 8});
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
/// the block lasts at 48 kHz. The argument is 1 where every message has to be computed; otherwise
/// the last one of each source.
void OscInBlock(benchmark::State& state, const Panner& panner) {
    const unsigned outputs = panner.outputs;
    const auto pan = Make(panner);
    // Two sets in turn: a source that is told where it stands already costs nothing.
    const bool isRelative = state.range(0) != 0;
    const std::vector<Packet> rounds[] = {Moves(1000, isRelative, 1), Moves(1000, isRelative, 2)};
    for (unsigned k = 0; k < kSources; ++k) pan->SetSourcePosition(k, {0.f, 2.f, 0.f}, true, true);
    std::size_t round = 0;
    std::vector<double> samples(64);
    const std::vector<double*> outs(outputs, samples.data());
    const std::vector<const double*> ins(kSources, samples.data());
    for (auto _ : state) {
        state.PauseTiming();
        for (const Packet& packet : rounds[++round % 2]) pan->Osc().Enqueue(packet);
        state.ResumeTiming();
        pan->ProcessHost(outs.data(), ins.data(), 64, true, false);
    }
    using benchmark::Counter;
    state.counters["of_block"] = Counter(static_cast<double>(state.iterations()) * 64.0 / 48000.0,
                                         Counter::kIsRate | Counter::kInvert);
}

constexpr Panner kPanners[] = {
    {"ab", 2},
    {"angular", 8},
    {"panr", 5},
    {"subwoofers", 4},
    {"vbap2d", 8},
    {"vbap", 24},
    {"dbap", 24},
    {"vdbap", 24},
    {"knn", 24},
    {"spcap", 24},
    {"bformat", 4},
    {"hoa3d", 16},
    {"nfchoa3d", 16},
    {"binaural", 2},
    {"binaural", 2, "nearfield"},
    {"binaural", 2, "snowman"},
    {"binaural", 2, "continuous"},
};

const bool areRegistered = [] {
    for (const Panner& panner : kPanners) {
        const std::string name = std::string("OscInBlock/") + panner.type + '/' + panner.subtype;
        benchmark::RegisterBenchmark(name.c_str(), OscInBlock, panner)
            ->ArgName("all")
            ->Arg(0)
            ->Arg(1);
    }
    return true;
}();

}  // namespace
