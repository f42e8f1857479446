// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningIACC.h"

#include "libquilo/pan/PanPlayer.h"
#include "reference/PlainFourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace Quilo {
namespace {

using Spectra = std::vector<std::vector<std::complex<double>>>;  // of the ears

constexpr std::size_t kBins = 16384;

/// What an impulse into one source makes at both ears.
Spectra AnswersOf(Pan& pan, float rateHz, unsigned source) {
    Tests::PanPlayer player(pan, rateHz);
    player.Play(4800, Tests::Silence);
    Spectra ears;
    for (const auto& ear : player.Play(kBins, [source](unsigned input, std::size_t frame) {
             return input == source && frame == 0 ? 1.0 : 0.0;
         })) {
        ears.push_back(Plain::Spectrum(ear, kBins));
    }
    return ears;
}

/// The coherence of a diffuse field at two ears, after Borss and Martin (2009).
double Target(double hz) {
    const double x = std::numbers::pi * hz / 550.0;
    return (x == 0.0 ? 1.0 : std::sin(x) / x) * std::max(0.0, 1.0 - hz / 2700.0);
}

// Of independent sources powers and cross spectra add up, so that the answers to one impulse each
// are as good as an endless noise.
TEST(BinauralPanningIACC, HasTheCoherenceOfADiffuseFieldAtEveryRate) {
    for (const float rate : {44100.f, 48000.f, 88200.f, 96000.f, 192000.f}) {
        BinauralPanningIACC pan(2, 2);
        const Spectra e = AnswersOf(pan, rate, 0), o = AnswersOf(pan, rate, 1);
        double squares = 0.0;
        unsigned count = 0;
        for (std::size_t bin = 0; bin <= kBins / 2; ++bin) {
            const double hz = static_cast<double>(rate) * static_cast<double>(bin) / kBins;
            double left = 0.0, right = 0.0;
            std::complex<double> cross;
            for (const Spectra& ears : {e, o}) {
                for (const auto& ear : ears) {
                    ASSERT_NEAR(20.0 * std::log10(std::abs(ear[bin])), 0.0, 0.01) << hz << " Hz";
                }
                left += std::norm(ears[0][bin]);
                right += std::norm(ears[1][bin]);
                cross += ears[0][bin] * std::conj(ears[1][bin]);
            }
            const std::complex<double> coherence = cross / std::sqrt(left * right);
            EXPECT_NEAR(coherence.imag(), 0.0, 1e-5);
            const double error = coherence.real() - Target(hz);
            if (hz < 15000.0) {
                ASSERT_LE(std::abs(error), hz < 3000.0 ? 0.14 : 0.19) << rate << ", " << hz;
            }
            if (hz < 3000.0) squares += error * error, ++count;
        }
        EXPECT_LE(std::sqrt(squares / count), 0.065) << rate;
    }
}

TEST(BinauralPanningIACC, TakesSourcesInTurnAndForgetsWhereTheyAre) {
    BinauralPanningIACC many(5, 2), two(2, 2);
    const Spectra odd = AnswersOf(two, 48000.f, 0), even = AnswersOf(two, 48000.f, 1);
    for (unsigned source = 0; source < 5; ++source) {
        many.SetSourcePosition(source, {1.f + static_cast<float>(source), -2, 1}, true, false);
        EXPECT_EQ(AnswersOf(many, 48000.f, source), source % 2 == 0 ? odd : even) << source;
    }
    EXPECT_EQ(odd[0], even[1]);
}

}  // namespace
}  // namespace Quilo
