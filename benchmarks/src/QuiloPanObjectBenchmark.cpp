// SPDX-License-Identifier: MIT
// What a patcher waits for: a box is typed, a box is deleted, a source is moved.
#include "HostBridge.h"

#include <benchmark/benchmark.h>

#include <span>
#include <string>
#include <vector>

extern "C" void ext_main(void*);

namespace {

t_object* MakeBox(const std::string& arguments) {
    static const bool isRegistered = (ext_main(nullptr), true);
    static_cast<void>(isRegistered);
    std::vector<t_atom> atoms = HostApi::ParseAtoms(arguments);
    return static_cast<t_object*>(object_new_typed(
        gensym("box"), gensym("quilo.pan~"), static_cast<max_long>(atoms.size()), atoms.data()));
}

std::string Channels(const benchmark::State& state) {
    return std::to_string(state.range(0)) + " " + std::to_string(state.range(1)) + " vbap2d";
}

/// With its attributes, its layout and its sources; freed again.
void CreateObject(benchmark::State& state) {
    const std::string arguments = Channels(state);
    for (auto _ : state) {
        t_object* const box = MakeBox(arguments);
        benchmark::DoNotOptimize(box);
        object_free(box);
    }
    state.SetItemsProcessed(state.iterations());
}

/// One message, from the patch cord to the new row of gains.
void SourceMessage(benchmark::State& state) {
    t_object* const box = MakeBox(Channels(state));
    t_symbol* const source = gensym("source");
    const std::vector<t_atom> atoms = HostApi::ParseAtoms("1 azim++ 7");
    for (auto _ : state) HostApi::DeliverMessage(box, 0, source, atoms);
    state.SetItemsProcessed(state.iterations());
    object_free(box);
}

/// What a second of work in a patcher costs: 250 sources, each moved 1000 times a second, with so
/// many clients (inspectors, pattr) that ask for the new positions whenever they are told.
void MoveAll(benchmark::State& state) {
    t_object* const box = MakeBox("250 8 vbap2d");
    t_symbol* const source = gensym("source");
    std::vector<std::vector<t_atom>> moves;
    for (int index = 1; index <= 250; ++index)
        moves.push_back(HostApi::ParseAtoms(std::to_string(index) + " azim++ 7"));
    std::vector<t_object*> clients;
    for (int client = 0; client < state.range(0); ++client)
        clients.push_back(HostApi::Watch(box, [box](t_symbol*, t_symbol* attribute) {
            if (attribute == nullptr) return;
            benchmark::DoNotOptimize(HostApi::AttributeValue(box, attribute->s_name).size());
        }));
    for (auto _ : state) {
        for (const std::vector<t_atom>& move : moves) HostApi::DeliverMessage(box, 0, source, move);
        HostApi::AdvanceClocks(1);
    }
    state.SetItemsProcessed(state.iterations() * 250);
    for (t_object* client : clients) object_free(client);
    object_free(box);
}

/// How long the main thread of a new object is held by a message that came by OSC, until it may
/// draw again, and with thread:0 how long it would be without a thread for what takes long.
void HoldMain(benchmark::State& state, const std::string& arguments, const std::string& message) {
    const std::vector<t_atom> atoms = HostApi::ParseAtoms(message);
    for (auto _ : state) {
        state.PauseTiming();
        t_object* const box = MakeBox(arguments);
        HostApi::Settle();
        state.ResumeTiming();
        if (state.range(0) == 0) HostApi::FailCall("systhread_create", 1, MAX_ERR_GENERIC);
        HostApi::DeliverMessage(box, 0, atom_getsym(atoms.data()), std::span(atoms).subspan(1));
        HostApi::RunDeferred();
        state.PauseTiming();
        HostApi::WaitForThreads();
        state.ResumeTiming();
        HostApi::RunDeferred();
        state.PauseTiming();
        object_free(box);
        state.ResumeTiming();
    }
}

/// 250 loudspeakers on a spiral round the listener.
std::string SpeakersByOsc() {
    std::string message = "/speakers/ae";
    for (int k = 0; k < 250; ++k) {
        message += ' ' + std::to_string(k * 137 % 360) + ".5 " + std::to_string(k * 0.7 - 87.0);
    }
    return message;
}

BENCHMARK_CAPTURE(HoldMain, speakers, "2 250 vbap", SpeakersByOsc())
    ->ArgName("thread")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
// The built-in set is filters of 44.1 kHz, which others are made of.
BENCHMARK_CAPTURE(HoldMain, rate, "2 2 binaural", "/dsp/samplerate 48000")
    ->ArgName("thread")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(CreateObject)
    ->ArgNames({"in", "out"})
    ->Args({2, 8})
    ->Args({250, 250})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(MoveAll)->ArgName("clients")->Arg(0)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(SourceMessage)->ArgNames({"in", "out"})->Args({2, 8})->Args({250, 250});

}  // namespace
