// SPDX-License-Identifier: MIT
#include "processors/VelkDspMultiEqualizer.h"

#include "reference/Signals.h"
#include "support/BlockPlayer.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace tav {
namespace {

using Tests::Signal;
using Tests::Sine;
using Complex = std::complex<double>;

/// Plays the same signal through every channel in blocks of one size.
std::vector<Signal> Play(MultiEqualizer& equalizer, const Signal& input, unsigned blockSize) {
    const std::vector<Signal> inputs(equalizer.NumInputs(), input);
    return Tests::PlayBlocks(
        inputs, inputs.size(), input.size(), blockSize,
        [&](auto outputs, auto ins, unsigned n) { equalizer.Process(outputs, ins, n); });
}

Complex ResponseAt(double hz, double rate, const Signal& impulseResponse) {
    Complex sum = 0.0;
    const Complex turn = std::polar(1.0, -2.0 * std::numbers::pi * hz / rate);
    Complex phase = 1.0;
    for (const float sample : impulseResponse) {
        sum += phase * static_cast<double>(sample);
        phase *= turn;
    }
    return sum;
}

struct KindCase {
    const char* name;
    FilterKind kind;
    /// Of the analog section, corner at 1: s, quality, square root of the amplitude gain.
    Complex (*analog)(Complex s, double q, double a);
};

// clang-format off
const KindCase kKinds[] = {
    {"LowPass",   FilterKind::LowPass,   [](Complex s, double q, double) { return 1.0 / (s * s + s / q + 1.0); }},
    {"HighPass",  FilterKind::HighPass,  [](Complex s, double q, double) { return s * s / (s * s + s / q + 1.0); }},
    {"BandPass",  FilterKind::BandPass,  [](Complex s, double q, double) { return s / q / (s * s + s / q + 1.0); }},
    {"Notch",     FilterKind::Notch,     [](Complex s, double q, double) { return (s * s + 1.0) / (s * s + s / q + 1.0); }},
    {"AllPass",   FilterKind::AllPass,   [](Complex s, double q, double) { return (s * s - s / q + 1.0) / (s * s + s / q + 1.0); }},
    {"Peak",      FilterKind::Peak,      [](Complex s, double q, double a) { return (s * s + s * a / q + 1.0) / (s * s + s / (a * q) + 1.0); }},
    {"LowShelf",  FilterKind::LowShelf,  [](Complex s, double q, double a) { return a * (s * s + std::sqrt(a) / q * s + a) / (a * s * s + std::sqrt(a) / q * s + 1.0); }},
    {"HighShelf", FilterKind::HighShelf, [](Complex s, double q, double a) { return a * (a * s * s + std::sqrt(a) / q * s + 1.0) / (s * s + std::sqrt(a) / q * s + a); }},
    {"Off",       FilterKind::Off,       [](Complex, double, double) { return Complex(1.0); }},
    {"Unknown",   FilterKind{77},        [](Complex, double, double) { return Complex(1.0); }},
};
// clang-format on

class EqualizerBand : public testing::TestWithParam<KindCase> {};

TEST_P(EqualizerBand, HasTheResponseOfTheAnalogSection) {
    constexpr double kRate = 48000.0;
    const FilterSetting settings[] = {{GetParam().kind, 1000.f, 200.f, 9.f},
                                      {GetParam().kind, 300.f, 0.01f, -12.f}};
    MultiEqualizer equalizer(2, 2);
    equalizer.SetSampleRate(static_cast<float>(kRate));
    equalizer.SetBand(1, 0, settings[0]);
    equalizer.SetBand(1, 1, settings[1]);
    const Signal impulse = Tests::Impulse(1 << 14);
    const auto outputs = Play(equalizer, impulse, 512);
    EXPECT_EQ(outputs[0], impulse);
    for (const double hz : {20.0, 150.0, 300.0, 700.0, 1000.0, 2500.0, 9000.0, 20000.0}) {
        Complex expected = 1.0;
        for (const FilterSetting& s : settings) {
            const double corner = std::numbers::pi * static_cast<double>(s.frequencyHz) / kRate;
            const double at = std::tan(std::numbers::pi * hz / kRate) / std::tan(corner);
            const double quality = std::clamp(static_cast<double>(s.quality), 0.05, 50.0);
            expected *= GetParam().analog({0.0, at}, quality,
                                          std::pow(10.0, static_cast<double>(s.gainDb) / 40.0));
        }
        EXPECT_LT(std::abs(ResponseAt(hz, kRate, outputs[1]) - expected), 1e-5) << hz;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, EqualizerBand, testing::ValuesIn(kKinds), Tests::kByName);

TEST(MultiEqualizer, IsAtANewRateAsIfAlwaysThere) {
    MultiEqualizer moved(1, 1), fresh(1, 1);
    for (MultiEqualizer* equalizer : {&moved, &fresh}) {
        equalizer->SetSampleRate(equalizer == &moved ? 48000.f : 96000.f);
        equalizer->SetBand(0, 0, {FilterKind::LowPass, 1000.f, 0.7f, 0.f});
    }
    Play(moved, Sine(500.0, 48000.0, 4800), 64);
    moved.SetSampleRate(96000.f);
    EXPECT_EQ(Play(moved, Tests::Impulse(512), 64), Play(fresh, Tests::Impulse(512), 64));
}

TEST(MultiEqualizer, KeepsALowCornerExactAtTheHighestRate) {
    constexpr double kRate = 384000.0;
    MultiEqualizer equalizer(1, 1);
    equalizer.SetSampleRate(static_cast<float>(kRate));
    equalizer.SetBand(0, 0, {FilterKind::LowPass, 10.f, 0.7f, 0.f});
    const auto decibels = [](double gain) { return 20.0 * std::log10(gain); };
    const Signal ones(768000, 1.f);
    EXPECT_NEAR(decibels(static_cast<double>(Play(equalizer, ones, 4096)[0].back())), 0.0, 1e-3);
    equalizer.Reset();
    const Signal output = Play(equalizer, Sine(10.0, kRate, 768000), 4096)[0];
    double energy = 0.0;  // of the last ten periods: the first ones fade in
    for (std::size_t k = 384000; k < output.size(); ++k) {
        energy += static_cast<double>(output[k]) * static_cast<double>(output[k]);
    }
    EXPECT_NEAR(decibels(std::sqrt(energy / 192000.0)), -3.098, 2e-3);
}

// Every kind to every other, far apart: the glide may not be heard as a click, nor depend on the
// sizes of blocks.
TEST(MultiEqualizer, GlidesWhateverTheBlocks) {
    constexpr unsigned kNumKinds = 9;
    constexpr unsigned kNumPairs = kNumKinds * kNumKinds;
    constexpr std::size_t kHalf = 4080;
    const Signal sine = Sine(200.0, 48000.0, 2 * kHalf);
    const Signal before(sine.begin(), sine.begin() + kHalf),
        after(sine.begin() + kHalf, sine.end());
    std::vector<Signal> first;
    for (const unsigned blockSize : {1u, 17u, 64u, 4096u}) {
        MultiEqualizer equalizer(kNumPairs, 1);
        equalizer.SetSampleRate(48000.f);
        const auto setAll = [&](auto kindOf, float hz, float quality, float gainDb) {
            for (unsigned c = 0; c < kNumPairs; ++c) {
                equalizer.SetBand(c, 0, {static_cast<FilterKind>(kindOf(c)), hz, quality, gainDb});
            }
        };
        setAll([](unsigned c) { return c / kNumKinds; }, 100.f, 0.7f, -6.f);
        std::vector<Signal> whole = Play(equalizer, before, blockSize);
        setAll([](unsigned c) { return c % kNumKinds; }, 900.f, 2.f, 6.f);
        const std::vector<Signal> rest = Play(equalizer, after, blockSize);
        for (unsigned c = 0; c < kNumPairs; ++c) {
            whole[c].insert(whole[c].end(), rest[c].begin(), rest[c].end());
        }
        if (first.empty()) first = whole;
        EXPECT_EQ(whole, first) << blockSize;
    }
    // A jump of the mix makes fourth differences near 1.
    for (unsigned c = 0; c < kNumPairs; ++c) {
        for (std::size_t k = kHalf - 100; k < 2 * kHalf; ++k) {
            const auto x = [&, k](std::size_t ago) {
                return static_cast<double>(first[c][k - ago]);
            };
            const double fourth = x(0) + x(4) - 4.0 * (x(1) + x(3)) + 6.0 * x(2);
            ASSERT_LT(std::abs(fourth), 5e-3) << "channel " << c << ", frame " << k;
        }
    }
}

TEST(MultiEqualizer, RecoversFromWhatIsNoNumberWithoutHarmToTheOthers) {
    MultiEqualizer equalizer(3, 2), undisturbed(3, 2);
    for (MultiEqualizer* e : {&equalizer, &undisturbed}) {
        for (unsigned c = 0; c < 3; ++c) e->SetBand(c, 1, {FilterKind::LowPass, 100.f, 5.f, 0.f});
    }
    Signal constant(64, 0.5f), burst(64, std::numeric_limits<float>::quiet_NaN()), silence(64);
    const float* inputs[] = {constant.data(), burst.data(), constant.data()};
    std::vector<Signal> out(3, Signal(64));
    float* outputs[] = {out[0].data(), out[1].data(), out[2].data()};
    equalizer.Process(outputs, inputs, 64);
    const auto expected = Play(undisturbed, constant, 64);
    EXPECT_EQ(out[0], expected[0]);
    EXPECT_EQ(out[1], silence);
    const Signal after = Play(equalizer, Signal(48000, 0.5f), 64)[1];
    EXPECT_NEAR(after.back(), 0.5f, 1e-4f);
}

}  // namespace
}  // namespace tav
