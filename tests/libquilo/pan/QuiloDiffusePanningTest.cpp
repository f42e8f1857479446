// SPDX-License-Identifier: MIT
#include "pan/QuiloDiffusePanning.h"

#include "libquilo/RingsAndGains.h"
#include "libquilo/pan/PanPlayer.h"
#include "reference/PlainFourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace Quilo {
namespace {

using Tests::Impulse;
using Tests::PanPlayer;

// Each output alone is the input at every frequency, at its share of the power.
TEST(DiffusePanning, ColoursNothingAndKeepsThePower) {
    for (const unsigned numOutputs : {1u, 2u, 8u}) {
        DiffusePanning pan(1, numOutputs);
        PanPlayer player(pan);
        double power = 0.0;
        for (const auto& response : player.Play(32768, Impulse)) {
            power += Tests::Energy(response);
            for (const auto& value : Plain::Spectrum(response, 32768)) {
                const double share = std::norm(value) * numOutputs;
                ASSERT_NEAR(10.0 * std::log10(share), 0.0, 0.01) << numOutputs;
            }
        }
        EXPECT_NEAR(power, 1.0, 0.002);
    }
}

/// Mean magnitude of the correlation of all pairs in third-octave bands from `lowHz` to `highHz`.
double BandCorrelation(const std::vector<std::vector<std::complex<double>>>& spectra,
                       double lowHz,
                       double highHz) {
    const double third = std::exp2(1.0 / 6.0);
    double sum = 0.0;
    unsigned count = 0;
    for (double hz = lowHz; hz <= highHz * 1.05; hz *= third * third) {
        const auto bin = [&](double f) {
            return static_cast<std::size_t>(f / 48000.0 * 2.0 *
                                            static_cast<double>(spectra[0].size() - 1));
        };
        for (std::size_t a = 0; a < spectra.size(); ++a) {
            for (std::size_t b = 0; b < a; ++b) {
                double cross = 0.0, powerA = 0.0, powerB = 0.0;
                for (std::size_t k = bin(hz / third); k < bin(hz * third); ++k) {
                    cross += std::real(spectra[a][k] * std::conj(spectra[b][k]));
                    powerA += std::norm(spectra[a][k]);
                    powerB += std::norm(spectra[b][k]);
                }
                sum += std::fabs(cross) / std::sqrt(powerA * powerB);
                ++count;
            }
        }
    }
    return sum / count;
}

TEST(DiffusePanning, OutputsHaveLittleToDoWithEachOther) {
    struct Band {
        double lowHz, highHz, most;
    };
    constexpr Band kBands[] = {
        {125, 250, 0.43}, {315, 630, 0.30}, {800, 2000, 0.21}, {2500, 16000, 0.12}};
    for (const unsigned numOutputs : {8u, 32u}) {
        DiffusePanning pan(1, numOutputs);
        PanPlayer player(pan);
        std::vector<std::vector<std::complex<double>>> spectra;
        for (const auto& response : player.Play(32768, Impulse)) {
            spectra.push_back(Plain::Spectrum(response, 32768));
        }
        for (const Band& band : kBands) {
            EXPECT_LE(BandCorrelation(spectra, band.lowHz, band.highHz), band.most)
                << numOutputs << " outputs, " << band.lowHz << " Hz";
        }
    }
}

TEST(DiffusePanning, ChainsAreDistinctAtEveryRate) {
    for (const float rate : {8000.f, 384000.f}) {
        std::set<std::array<std::uint32_t, tav::kAllPassSections>> seen;
        for (unsigned o = 0; o < 250; ++o) {
            std::array<std::uint32_t, tav::kAllPassSections> delays;
            const auto chain = tav::DecorrelationChain(o, rate);
            for (std::size_t s = 0; s < delays.size(); ++s) delays[s] = chain[s].delay;
            EXPECT_TRUE(seen.insert(delays).second) << o;
        }
        DiffusePanning pan(2, 250);
        PanPlayer player(pan, rate);
        player.Play(640, Impulse);
    }
}

}  // namespace
}  // namespace Quilo
