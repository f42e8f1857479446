// SPDX-License-Identifier: MIT
#include "kernels/VelkDspBinauralKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tav {
namespace {

using Tests::Guarded;

constexpr std::size_t kRow = static_cast<std::size_t>(kSourceLanes);

// The scalar twin itself is measured where panners are compared with voices of plain blocks.
class BinauralKernelsOf : public Tests::KernelsOf<BinauralKernels> {
protected:
    using Results = std::vector<std::vector<float>>;

    /// @param run  what a set of kernels writes      @param lanes  those that count, of each row
    template <class Run>
    void ExpectTheTwins(std::size_t lanes, double bound, Run run) {
        const Results results = run(tested_), expected = run(plain_);
        for (std::size_t r = 0; r < results.size(); ++r) {
            for (std::size_t at = 0; at < results[r].size(); ++at) {
                if (at % kRow >= lanes) continue;
                ASSERT_NEAR(results[r][at], expected[r][at], bound) << r << " " << at;
            }
        }
    }
};

// A cell makes rounding, as signals, at most (1 + 0.6) / (1 - 0.6) = 4 times as large.
TEST_P(BinauralKernelsOf, CascadeOfEveryKind) {
    for (const std::size_t numCells : {1u, 2u, 3u, 6u, 8u}) {
        const auto coefficients =
            Tests::Noise(2 * numCells * kCellCoefficients * kRow, 1, -0.3f, 0.3f);
        const auto gains = Tests::Noise(2 * kRow, 8);
        const auto states = Tests::Noise(2 * (numCells + 1) * kCellStates * kRow, 2);
        const double bound = 10.0 * Tests::kEpsilon * std::pow(4.0, numCells);
        for (const std::size_t lanes : {1u, 8u, 9u, 16u}) {
            for (const bool heard : {false, true}) {
                Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
                    const std::size_t size = kRow * static_cast<std::size_t>(n);
                    const auto weights = Tests::Noise(size, 3);
                    ExpectTheTwins(lanes, bound, [&](const BinauralKernels& kernels) -> Results {
                        Guarded<float> left(start, Tests::Noise(size, 4)),
                            right(3, Tests::Noise(size, 5)), sumLeft(start, Tests::Noise(size, 6)),
                            sumRight(5, Tests::Noise(size, 7)), s(start, states);
                        kernels.cascade(
                            {coefficients.data(), gains.data(), s.Data(),
                             static_cast<int>(numCells), static_cast<int>(lanes)},
                            {left.Data(), heard || n % 3 > 0 ? right.Data() : nullptr},
                            heard ? EarRows{sumLeft.Data(), sumRight.Data()} : EarRows{},
                            n % 2 == 1 ? weights.data() : nullptr, n);
                        return {sumLeft.Values(), sumRight.Values(), s.Values()};
                    });
                });
            }
        }
    }
}

TEST_P(BinauralKernelsOf, ReadThroughFourTapsOrAtPlaces) {
    ReadingLanes sources{};
    for (const std::size_t lanes : {3u, 8u, 11u, 16u}) {
        sources.lanes = static_cast<int>(lanes);
        Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
            const auto count = static_cast<std::size_t>(n);
            std::vector<std::vector<float>> signals;
            for (unsigned i = 0; i < kRow; ++i) {
                signals.push_back(Tests::Noise(count + 2 * kReadingTaps, 20 + i));
                sources.signals[i] = signals[i].data() + kReadingTaps;
                // From 0 up or from 2 down, as far as to the other end, or resting.
                const bool falls = i % 2 == 1;
                const float way = (falls ? -0.49f : 0.49f) * static_cast<float>(i % 5);
                sources.places[i] = (falls ? 2.f : 0.f) + 0.01f * way;
                sources.steps[i] = way / static_cast<float>(std::max(n - 1, 1));
                const auto taps = Tests::Noise(kReadingTaps, 50 + i);
                for (std::size_t t = 0; t < kReadingTaps; ++t) sources.taps[t][i] = taps[t];
            }
            ExpectTheTwins(lanes, 64 * Tests::kEpsilon, [&](const BinauralKernels& kernels) {
                Guarded<float> rows(start, std::vector<float>(kRow * count, 99.f));
                kernels.read(sources, rows.Data(), n);
                Guarded<float> gliding(start, std::vector<float>(kRow * count, 99.f));
                kernels.readGliding(sources, gliding.Data(), n);
                return Results{rows.Values(), gliding.Values()};
            });
        });
    }
}

// Third-order interpolation is exact for a polynomial of third order, at any place and speed.
TEST_P(BinauralKernelsOf, GlideIsExactForCubics) {
    const auto cubic = [](double t) { return ((0.5 * t - 0.3) * t - 0.7) * t + 0.4; };
    constexpr int kMiddle = 400;
    std::vector<float> signal(2 * kMiddle);
    for (std::size_t k = 0; k < signal.size(); ++k) {
        signal[k] = static_cast<float>(cubic((static_cast<double>(k) - kMiddle) / 400.0));
    }
    for (const float step : {0.f, 0.003f, -0.02f, 0.3f, -0.999f, 3.f}) {
        for (const float first : {0.f, 0.25f, 0.999f, -1.5f}) {
            Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
                Guarded<float> y(start, std::vector<float>(static_cast<std::size_t>(n)));
                tested_.glide(y.Data(), signal.data() + kMiddle, first, step, n);
                for (int k = 0; k < n; ++k) {
                    const double place =
                        k + static_cast<double>(first) + k * static_cast<double>(step);
                    ASSERT_NEAR(y.Data()[k], cubic(place / 400.0), 1e-6) << step << " " << first;
                }
            });
        }
    }
}

TEST_P(BinauralKernelsOf, FadesAndSums) {
    FadeLanes fades{};
    for (unsigned i = 0; i < kRow; ++i) {
        const auto r = Tests::Noise(8, 70 + i);
        const float turn = 0.02f + 0.01f * r[0];
        const float numbers[] = {
            std::cos(r[1]), std::sin(r[1]), std::cos(turn), std::sin(turn), r[2],
            0.01f * r[3],   r[4],           r[5],           r[6],           r[7]};
        float* const rows[] = {fades.cosine, fades.sine,  fades.turnCos,  fades.turnSin,
                               fades.part,   fades.step,  fades.constant, fades.ofCos,
                               fades.ofSin,  fades.ofPart};
        for (std::size_t k = 0; k < std::size(rows); ++k) rows[k][i] = numbers[k];
    }
    Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
        const auto count = static_cast<std::size_t>(n);
        ExpectTheTwins(kRow, 200 * Tests::kEpsilon, [&](const BinauralKernels& kernels) {
            Guarded<float> rows(start, std::vector<float>(kRow * count));
            Guarded<float> sums(start, Tests::Noise(count, 90));
            kernels.fadeWeights(fades, rows.Data(), n);
            kernels.sumLanes(rows.Data(), sums.Data(), n);
            return Results{rows.Values(), sums.Values()};
        });
    });
}

TEST_P(BinauralKernelsOf, FirstOrder) {
    const auto gains = Tests::Noise(2 * kRow, 1, 0.f, 1.f), mix = Tests::Noise(4 * kRow, 2);
    const auto steps = Tests::Noise(4 * kRow, 3, -0.01f, 0.01f);
    const auto states = Tests::Noise(2 * kRow, 4);
    Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
        const std::size_t size = kRow * static_cast<std::size_t>(n);
        for (int variant = 0; variant < 4; ++variant) {
            const bool adds = variant % 2 == 1, moves = variant >= 2;
            // States stay below 3, mixes below 1.7; 67 steps of the mix are 67 roundings.
            ExpectTheTwins(kRow, 100 * Tests::kEpsilon, [&](const BinauralKernels& kernels) {
                Guarded<float> left(start, Tests::Noise(size, 5)), right(3, Tests::Noise(size, 6)),
                    sumLeft(start, Tests::Noise(size, 7)), sumRight(5, Tests::Noise(size, 8)),
                    s(start, states);
                const EarRows in{left.Data(), right.Data()};
                kernels.firstOrder(
                    {gains.data(), mix.data(), moves ? steps.data() : nullptr, s.Data()}, in,
                    adds ? EarRows{sumLeft.Data(), sumRight.Data()} : in, adds, n);
                return Results{(adds ? sumLeft : left).Values(), (adds ? sumRight : right).Values(),
                               s.Values()};
            });
        }
    });
}

INSTANTIATE_FOR_ALL_SETS(BinauralKernelsOf);

}  // namespace
}  // namespace tav
