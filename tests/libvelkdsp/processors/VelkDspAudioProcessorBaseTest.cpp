// SPDX-License-Identifier: MIT
#include "processors/VelkDspAudioProcessorBase.h"

#include "kernels/VelkDspDenormalGuard.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace tav {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Buffers of doubles as a host holds them, full of a value that nobody may leave in an output.
struct HostBuffers {
    HostBuffers(unsigned ports, unsigned frames, double value)
        : samples(ports, std::vector<double>(frames, value)) {
        for (auto& port : samples) pointers.push_back(port.data());
    }
    std::vector<std::vector<double>> samples;
    std::vector<double*> pointers;
};

/// Output i is input i times `gain`; outputs without an input are zeroed, where connected.
class Copier : public AudioProcessorWithAutoMute {
public:
    using AudioProcessorBase::Process;
    using AudioProcessorWithAutoMute::AudioProcessorWithAutoMute;
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override {
        ++calls;
        longest = std::max(longest, frames);
        ZeroOutputs(outputs, frames);
        for (unsigned port = 0; port < std::min(NumInputs(), NumOutputs()); ++port) {
            if (!OutputConnected(port)) continue;
            for (unsigned k = 0; k < frames; ++k) outputs[port][k] = gain * inputs[port][k];
        }
    }
    unsigned Latency() const override { return latency; }

    float gain = 1.f;
    unsigned calls = 0;
    unsigned longest = 0;
    unsigned latency = 0;
};

/// One block with mute and bypass off, under the trap.
void Play(AudioProcessorBase& processor, HostBuffers& out, HostBuffers& in, unsigned frames) {
    const unsigned violations = Tests::ViolationsOf([&] {
        processor.ProcessHost(out.pointers.data(), in.pointers.data(), frames, false, false);
    });
    EXPECT_EQ(violations, 0u);
}

TEST(AudioProcessorBase, BlocksSeeOnlyTameSamples) {
    constexpr double kSamples[][2] = {// of the host, and as they are seen
                                      {-0.3, static_cast<double>(-0.3f)},
                                      {kNan, 0},
                                      {-kInfinity, 0},
                                      {-1e38, -1e6},
                                      {1e300, 1e6},
                                      {1e6, 1e6},
                                      {0.9e-30, 0},
                                      {-0.9e-30, 0},
                                      {1e-30, static_cast<double>(1e-30f)},
                                      {std::numeric_limits<double>::denorm_min(), 0}};
    Copier copier(1, 1);
    for (const auto& [host, seen] : kSamples) {
        HostBuffers in(1, 7, host), out(1, 7, 99.0);
        Play(copier, out, in, 7);
        EXPECT_EQ(out.samples[0], std::vector<double>(7, seen)) << host;
        EXPECT_EQ(std::signbit(out.samples[0][6]), std::signbit(seen)) << host;
    }
}

TEST(AudioProcessorBase, GivesTheHostFiniteSamplesOnly) {
    Copier copier(1, 1);
    for (const float gain : {std::numeric_limits<float>::infinity(), 1e38f, std::nanf("")}) {
        copier.gain = gain;
        HostBuffers in(1, 5, 1e5);
        HostBuffers out(1, 5, 99.0);
        Play(copier, out, in, 5);
        EXPECT_EQ(out.samples[0], std::vector<double>(5, 0.0)) << gain;
    }
}

TEST(AudioProcessorBase, WorksInPiecesOfTheAnnouncedSizeAndLosesNoSample) {
    struct Row {
        unsigned announced, frames, calls, longest;
    };
    // One processor for all rows: sizes grow, shrink and stay between blocks; 0 changes nothing.
    constexpr Row kRows[] = {{512, 512, 1, 512}, {512, 0, 0, 0}, {63, 1000, 16, 63},
                             {1, 7, 7, 1},       {0, 3, 3, 1},   {4096, 9000, 3, 4096}};
    Copier copier(2, 3);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.announced);
        copier.SetBufferSize(row.announced);
        copier.calls = copier.longest = 0;
        HostBuffers in(2, row.frames, 0.0);
        for (unsigned k = 0; k < row.frames; ++k) {
            in.samples[0][k] = k + 1.0;
            in.samples[1][k] = -2.0 * k;
        }
        HostBuffers out(3, row.frames + 1, 99.0);
        Play(copier, out, in, row.frames);
        EXPECT_EQ(copier.calls, row.calls);
        EXPECT_EQ(copier.longest, row.longest);
        for (auto& port : out.samples) {
            EXPECT_EQ(port.back(), 99.0) << "written beyond the block";
            port.pop_back();
        }
        EXPECT_EQ(out.samples[0], in.samples[0]);
        EXPECT_EQ(out.samples[1], in.samples[1]);
        EXPECT_EQ(out.samples[2], std::vector<double>(row.frames, 0.0));
    }
}

class MuteAndBypass : public testing::TestWithParam<std::pair<unsigned, unsigned>> {};

TEST_P(MuteAndBypass, SpendNoProcessing) {
    const auto [inputs, outputs] = GetParam();
    Copier copier(inputs, outputs);
    copier.gain = 5.f;
    const std::vector<short> none(std::max(inputs, outputs), 0);
    copier.SetConnections(none, none);  // neither looks at connections
    HostBuffers in(inputs, 9, 0.1);     // no float: bypass does not pass through floats
    if (inputs > 0) in.samples[0][4] = kNan;

    // clang-format off
    struct Case { bool argMute, argBypass, ownMute, ownBypass, bypassed; };
    constexpr Case kCases[] = {
        {true,  false, false, false, false}, {false, true,  false, false, true},
        {true,  true,  false, false, false}, {false, false, true,  false, false},
        {false, false, false, true,  true},  {false, true,  true,  false, false},
    };
    // clang-format on
    for (const Case& c : kCases) {
        copier.SetMute(c.ownMute);
        copier.SetBypass(c.ownBypass);
        HostBuffers out(outputs, 9, 99.0);
        copier.ProcessHost(out.pointers.data(), in.pointers.data(), 9, c.argMute, c.argBypass);
        for (unsigned port = 0; port < outputs; ++port) {
            std::vector<double> expected(9, c.bypassed && port < inputs ? 0.1 : 0.0);
            if (port == 0) expected[4] = 0.0;
            EXPECT_EQ(out.samples[port], expected) << port;
        }
    }
    EXPECT_EQ(copier.calls, 0u);
}

INSTANTIATE_TEST_SUITE_P(Shapes,
                         MuteAndBypass,
                         testing::Values(std::pair(2, 4), std::pair(4, 2), std::pair(0, 2)));

TEST(AudioProcessorWithAutoMute, WritesZerosToUnconnectedOutputsAndHearsNoUnconnectedInput) {
    Copier copier(3, 3);
    HostBuffers in(3, 64, 0.5);
    HostBuffers out(3, 64, 99.0);
    Play(copier, out, in, 64);  // leaves sound in whatever is kept between blocks
    copier.SetConnections(std::vector<short>{0, 2, 1}, std::vector<short>{1, 0, 3});
    Play(copier, out, in, 64);
    EXPECT_EQ(out.samples[0], std::vector<double>(64, 0.0));
    EXPECT_EQ(out.samples[1], std::vector<double>(64, 0.0));
    EXPECT_EQ(out.samples[2], std::vector<double>(64, 0.5));
    HostBuffers untouched(3, 64, 99.0);
    copier.ZeroOutputs(untouched.pointers.data(), 64);
    EXPECT_EQ(untouched.samples[1], std::vector<double>(64, 99.0)) << "not connected";
    EXPECT_EQ(untouched.samples[2], std::vector<double>(64, 0.0));
}

TEST(AudioProcessorBase, KeepsUsableRatesOnly) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kRates[][2] = {{48000, 48000}, {0, 48000}, {-1, 48000},
                                   {kNaN, 48000},  {10, 1000}, {1e9f, 768000}};
    Copier copier(1, 1);
    for (const auto& [asked, kept] : kRates) {
        copier.SetSampleRate(asked);
        EXPECT_EQ(copier.SampleRate(), kept) << asked;
    }
}

TEST(DenormalGuard, FlushesWhileItLivesAndGivesTheModeBack) {
    volatile float smallest = std::numeric_limits<float>::min();
    volatile float half = 0.5f;
    {
        const DenormalGuard outer;
        { const DenormalGuard inner; }
        EXPECT_EQ(smallest * half, 0.f);
    }
    EXPECT_GT(smallest * half, 0.f);
}

}  // namespace
}  // namespace tav
