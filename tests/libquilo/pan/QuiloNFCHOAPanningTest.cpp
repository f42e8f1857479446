// SPDX-License-Identifier: MIT
#include "pan/QuiloNFCHOAPanning.h"

#include "libquilo/pan/PanPlayer.h"
#include "pan/QuiloHOAPanning.h"
#include "reference/PlainFourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace Quilo {
namespace {

using Tests::Impulse;
using Tests::PanPlayer;
using Tests::Silence;
using Tests::Sine;
using Complex = std::complex<double>;

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kRate = 48000.0;

double InDecibels(double gain) { return 20.0 * std::log10(gain); }

/// theta_n(s) / s^n by the recurrence of the polynomials, 1 far above.
Complex Curvature(unsigned n, Complex s) {
    Complex before = 1.0, theta = 1.0 + s;
    for (unsigned j = 2; j <= n; ++j) {
        const Complex next = (2.0 * j - 1.0) * theta + s * s * before;
        before = theta;
        theta = next;
    }
    return n == 0 ? 1.0 : theta / std::pow(s, n);
}

double AnalogGain(unsigned n, double r, double radius, double hz) {
    const Complex s(0.0, kTwoPi * hz / kSpeedOfSound);
    return std::abs(Curvature(n, s * r) / Curvature(n, s * radius));
}

/// A source above the listener sounds in one channel of each order, with a gain of 1 in SN3D.
struct Overhead {
    explicit Overhead(unsigned order, float radius, float distance)
        : numChannels((order + 1) * (order + 1)),
          pan(1, numChannels),
          player(pan, static_cast<float>(kRate)) {
        pan.SetSpeakersRadius(radius);
        pan.SetSourcePosition(0, {0, 0, distance}, true, true);
        player.Play(24000, Silence);  // glides end
    }
    std::vector<double> Play(unsigned order, std::size_t frames, const PanPlayer::Signal& signal) {
        return player.Play(frames, signal)[order * (order + 1)];
    }

    unsigned numChannels;
    NFCHOAPanning3D pan;
    PanPlayer player;
};

TEST(NFCHOAPanning, FiltersEachOrderAsTheWaveFrontAsks) {
    struct Place {
        float radius, distance;
    };
    for (const Place& place : {Place{2.f, 0.5f}, {1.f, 3.f}, {5.f, 2.f}, {1.5f, 1e30f}}) {
        Overhead overhead(7, place.radius, place.distance);
        const auto audio = overhead.player.Play(32768, Impulse);
        const double r = std::min(static_cast<double>(place.distance), 1e5);
        const double radius = static_cast<double>(place.radius);
        for (unsigned n = 0; n <= 7; ++n) {
            const auto spectrum = Plain::Spectrum(audio[n * (n + 1)], 32768);
            double limit = 0.0;  // where the gain falls through 20 dB
            for (double step = 8192.0; step > 1e-3; step /= 2.0) {
                if (AnalogGain(n, r, radius, limit + step) > 10.0) limit += step;
            }
            for (double hz = 25.0; hz < 12000.0; hz *= 1.1) {
                const auto bin = static_cast<std::size_t>(std::round(hz / kRate * 32768.0));
                const double exact = static_cast<double>(bin) * kRate / 32768.0;
                const double highPass = 1.0 / std::sqrt(1.0 + std::pow(limit / exact, 2.0 * n));
                const double expected =
                    AnalogGain(n, r, radius, exact) * (n > 0 && limit > 0.01 ? highPass : 1.0);
                if (expected < 1e-4) continue;
                ASSERT_NEAR(InDecibels(std::abs(spectrum[bin])), InDecibels(expected), 0.2)
                    << "order " << n << ", " << exact << " Hz, r " << r << ", R " << radius;
            }
        }
    }
}

TEST(NFCHOAPanning, GainHasItsLimitWithAndWithoutTheHighPass) {
    for (const auto& [radius, distance] : {std::pair{1.f, 0.3f}, {20.f, 0.05f}}) {
        Overhead overhead(14, radius, distance);
        for (const bool highPass : {true, false}) {
            overhead.pan.SetHighPass(highPass);
            overhead.player.Play(24000, Silence);
            const auto audio = overhead.player.Play(32768, Impulse);
            for (const unsigned n : {1u, 2u, 3u, 7u, 14u}) {
                double highest = 0.0;
                for (const auto& value : Plain::Spectrum(audio[n * (n + 1)], 32768)) {
                    highest = std::max(highest, std::abs(value));
                }
                EXPECT_LE(InDecibels(highest), highPass ? 20.01 : 40.01) << n << " of " << radius;
                if (n < 14 || radius > 1.f) continue;  // a large array switches in a second
                EXPECT_GE(InDecibels(highest), highPass ? 16.0 : 39.9);
            }
        }
    }
}

// Bit for bit: sources on the array, and all sources once their compensation is off. One source
// sounds at a time: sums of several are taken in another order.
TEST(NFCHOAPanning, IsPlainAmbisonicsAtTheRadius) {
    constexpr unsigned kSources = 20;
    NFCHOAPanning3D field(kSources, 25);
    HOA3DPanning plain(kSources, 25);
    PanPlayer fieldPlayer(field), plainPlayer(plain);
    const auto place = [&](const auto& placeOf) {
        for (unsigned i = 0; i < kSources; ++i) {
            field.SetSourcePosition(i, placeOf(i), true, true);
            plain.SetSourcePosition(i, placeOf(i), true, true);
        }
    };
    const auto expectSame = [&] {
        for (unsigned only = 0; only < kSources; ++only) {
            const auto signal = [only](unsigned input, std::size_t frame) {
                return input == only ? std::sin(0.05 * static_cast<double>(frame)) : 0.0;
            };
            fieldPlayer.Play(1280, signal);
            plainPlayer.Play(1280, signal);
            ASSERT_EQ(fieldPlayer.Play(640, signal), plainPlayer.Play(640, signal)) << only;
        }
    };
    place([](unsigned i) {
        const float side = i % 2 == 0 ? 1.f : -1.f;
        return i % 3 == 0   ? tav::CartesianVector{side, 0, 0}
               : i % 3 == 1 ? tav::CartesianVector{0, side, 0}
                            : tav::CartesianVector{0, 0, side};
    });
    expectSame();
    place([](unsigned i) {
        return tav::CartesianVector{0.1f * static_cast<float>(i), 0.2f, -0.1f};
    });
    fieldPlayer.Play(4800, Sine(100.0));
    for (unsigned i = 0; i < kSources; ++i) field.SetNearfieldCompensation(i, false);
    fieldPlayer.Play(96000, Silence);
    expectSame();
}

TEST(NFCHOAPanning, WhateverMovesUnderASineAddsNoNoise) {
    struct Change {
        const char* name;
        double most[2];  // dB, orders 3 and 7
        void (*apply)(NFCHOAPanning& pan);
    };
    // With the high-pass a source that comes through its whole range within 100 ms is modulated by
    // order 7, whose limit may not rise any later.
    // clang-format off
    constexpr Change kChanges[] = {
        {"high-pass off", {-95, -90},  [](NFCHOAPanning& pan) { pan.SetHighPass(false); }},
        {"away uncut",    {-98, -90},  [](NFCHOAPanning& pan) { pan.SetSourcePosition(0, {0, 0, 50}, false, false); }},
        {"near uncut",    {-98, -98},  [](NFCHOAPanning& pan) { pan.SetSourcePosition(0, {0, 0, 0.1f}, false, false); }},
        {"high-pass on",  {-90, -100}, [](NFCHOAPanning& pan) { pan.SetHighPass(true); }},
        {"away",          {-100, -86}, [](NFCHOAPanning& pan) { pan.SetSourcePosition(0, {0, 0, 50}, false, false); }},
        {"near",          {-100, -50}, [](NFCHOAPanning& pan) { pan.SetSourcePosition(0, {0, 0, 0.1f}, false, false); }},
        {"uncompensated", {-100, -92}, [](NFCHOAPanning& pan) { pan.SetNearfieldCompensation(0, false); }},
        {"compensated",   {-100, -60}, [](NFCHOAPanning& pan) { pan.SetNearfieldCompensation(0, true); }},
        {"radius",        {-93, -88},  [](NFCHOAPanning& pan) { pan.SetSpeakersRadius(4.f); }},
    };
    // clang-format on
    for (const unsigned order : {3u, 7u}) {
        Overhead overhead(order, 1.f, 0.1f);
        overhead.pan.SetInterpolationTime(100.f);
        overhead.Play(order, 48000, Sine(200.0));
        for (const Change& change : kChanges) {
            auto signal = overhead.Play(order, 4800, Sine(200.0));  // whole periods
            change.apply(overhead.pan);
            const auto after = overhead.Play(order, 19200, Sine(200.0));
            signal.insert(signal.end(), after.begin(), after.end());
            EXPECT_LE(Tests::LoudestAbove(2000.0, signal, kRate, 16384),
                      change.most[order == 3 ? 0 : 1])
                << change.name << ", order " << order;
        }
    }
}

// Bass that the filters hold from afar must not be let loose near by.
TEST(NFCHOAPanning, RushingThroughTheListenerKeepsTheLimit) {
    const auto bass = Sine(3.0);
    for (const unsigned order : {3u, 7u}) {
        Overhead overhead(order, 20.f, 50.f);
        overhead.player.Play(48000, bass);
        const auto expectBelow = [&](double most, const char* when) {
            for (const auto& channel : overhead.player.Play(48000, bass)) {
                for (const double x : channel) ASSERT_LE(std::fabs(x), most) << when << order;
            }
        };
        overhead.pan.SetSourcePosition(0, {0, 0, 0}, false, false);
        expectBelow(10.0, "there, order ");
        overhead.pan.SetHighPass(false);
        expectBelow(100.0, "uncut, order ");
        overhead.pan.SetHighPass(true);
        expectBelow(100.0, "cut again, order ");
        overhead.pan.SetSourcePosition(0, {0, 0, 50}, true, false);
        overhead.pan.SetSourcePosition(0, {0, 0, 0}, true, false);
        expectBelow(10.0, "jumping, order ");
    }
}

// What is left of two tones, one below and one above the high-pass, once both are taken away.
TEST(NFCHOAPanning, RoundsFarBelowTheSignal) {
    struct Pair {
        unsigned order;
        float radius, distance;
        double mostDecibels;
    };
    constexpr Pair kPairs[] = {{3, 20.f, 0.2f, -80},
                               {7, 20.f, 0.2f, -80},
                               {14, 20.f, 0.2f, -80},
                               {7, 2.f, 0.5f, -105},
                               {20, 1.f, 0.2f, -105}};
    constexpr double kTones[] = {150.0, 6000.0};
    constexpr std::size_t kCount = 9600;
    const auto tones = [&](unsigned input, std::size_t frame) {
        return Sine(kTones[0])(input, frame) + Sine(kTones[1])(input, frame);
    };
    for (const Pair& pair : kPairs) {
        Overhead overhead(pair.order, pair.radius, pair.distance);
        overhead.Play(pair.order, 48000, tones);
        const auto signal = overhead.Play(pair.order, kCount, tones);
        double power = 0.0;
        for (const double x : signal) power += x * x;
        double noise = power;
        for (const double hz : kTones) {
            Complex fit = 0.0;
            for (std::size_t k = 0; k < kCount; ++k) {
                fit += signal[k] * std::polar(1.0, -kTwoPi * hz / kRate * static_cast<double>(k));
            }
            noise -= 2.0 / kCount * std::norm(fit);
        }
        EXPECT_LE(10.0 * std::log10(std::max(noise, 0.0) / power), pair.mostDecibels) << pair.order;
    }
}

TEST(NFCHOAPanning, ANewRateEndsEveryGlide) {
    Overhead moved(3, 3.f, 5.f), there(3, 1.f, 0.5f);
    moved.pan.SetInterpolationTime(200.f);
    moved.pan.SetSpeakersRadius(1.f);
    moved.pan.SetSourcePosition(0, {0, 0, 0.5f}, false, false);
    moved.player.Play(640, Silence);
    for (Overhead* overhead : {&moved, &there}) overhead->pan.SetSampleRate(96000.f);
    EXPECT_EQ(moved.Play(3, 640, Impulse), there.Play(3, 640, Impulse));
}

TEST(NFCHOAPanning, HearsSourcesWithinTenCentimetresFromThere) {
    const auto response = [](float metres) {
        const auto pan = Pan::Create(1, 4, "nfchoa3d", "direct");
        Tests::PanPlayer player(*pan, 48000.f);
        pan->SetSourcePosition(0, {0.f, metres, 0.f}, true, true);
        pan->Reset();
        return player.Play(2048, Tests::Impulse);
    };
    EXPECT_EQ(response(0.05f), response(0.1f));
    EXPECT_NE(response(0.2f), response(0.1f));
}

}  // namespace
}  // namespace Quilo
