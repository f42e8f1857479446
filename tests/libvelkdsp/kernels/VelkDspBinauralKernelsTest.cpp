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

class BinauralKernelsOf : public Tests::KernelsOf<BinauralKernels> {};

/// Cells of one source at one ear as a recursion in doubles.
struct PlainCells {
    const std::vector<float>& coefficients;
    std::vector<double> states;

    static std::size_t At(std::size_t cell, std::size_t ear, std::size_t row, std::size_t rows) {
        return ((2 * cell + ear) * rows + row) * kRow;
    }
    double Take(std::size_t lane, std::size_t ear, double x) {
        for (std::size_t cell = 0; cell < states.size() / (2 * kCellStates * kRow); ++cell) {
            const auto c = [&](std::size_t row) {
                const std::size_t at = At(cell, ear, row, kCellCoefficients) + lane;
                return static_cast<double>(coefficients[at]);
            };
            double& s1 = states[At(cell, ear, 0, kCellStates) + lane];
            double& s2 = states[At(cell, ear, 1, kCellStates) + lane];
            const double y = c(0) * x + s1;
            s1 = c(1) * x - c(3) * y + s2;
            s2 = c(2) * x - c(4) * y;
            x = y;
        }
        return x;
    }
};

// Poles are within 0.8 of the centre: rounding grows by less than 20 a cell, as signals do.
TEST_P(BinauralKernelsOf, CascadeOfEveryKind) {
    for (const std::size_t numPairs : {1u, 3u}) {
        auto coefficients = Tests::Noise(numPairs * kCellsInPair * kCellCoefficients * kRow, 1);
        for (std::size_t at = 0; at < coefficients.size(); ++at) {
            if (at / kRow % kCellCoefficients > 2) coefficients[at] *= 0.3f;
        }
        const auto states = Tests::Noise(numPairs * kCellsInPair * kCellStates * kRow, 2);
        for (const std::size_t lanes : {1u, 8u, 9u, 16u}) {
            for (const bool heard : {false, true}) {
                Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
                    const std::size_t size = kRow * static_cast<std::size_t>(n);
                    const bool weighs = n % 2 == 1;
                    const auto weights = Tests::Noise(size, 3);
                    const std::vector<float> in[2] = {Tests::Noise(size, 4), Tests::Noise(size, 5)};
                    const std::vector<float> before[2] = {Tests::Noise(size, 6),
                                                          Tests::Noise(size, 7)};
                    Guarded<float> rows[2] = {{start, in[0]}, {3, in[1]}};
                    Guarded<float> sums[2] = {{start, before[0]}, {5, before[1]}};
                    Guarded<float> s(start, states);
                    tested_.cascade(
                        {coefficients.data(), s.Data(), static_cast<int>(numPairs),
                         static_cast<int>(lanes)},
                        {rows[0].Data(), rows[1].Data()},
                        heard ? EarRows{sums[0].Data(), sums[1].Data()} : EarRows{nullptr, nullptr},
                        weighs ? weights.data() : nullptr, n);
                    PlainCells plain{coefficients, {states.begin(), states.end()}};
                    const double bound = 100.0 * Tests::kEpsilon * (numPairs > 1 ? 50.0 : 1.0);
                    for (std::size_t at = 0; at < size; ++at) {
                        for (std::size_t e = 0; e < 2 && at % kRow < lanes; ++e) {
                            const double y =
                                plain.Take(at % kRow, e, static_cast<double>(in[e][at]));
                            const double w = weighs ? static_cast<double>(weights[at]) : 1.0;
                            const double sum =
                                static_cast<double>(before[e][at]) + (heard ? w * y : 0.0);
                            ASSERT_NEAR(sums[e].Data()[at], sum, bound);
                        }
                    }
                    for (std::size_t at = 0; at < states.size(); ++at) {
                        if (at % kRow >= lanes) continue;
                        ASSERT_NEAR(s.Data()[at], plain.states[at], bound);
                    }
                });
            }
        }
    }
}

TEST_P(BinauralKernelsOf, ReadThroughFourTaps) {
    ReadingLanes sources{};
    for (const std::size_t lanes : {3u, 8u, 11u, 16u}) {
        sources.lanes = static_cast<int>(lanes);
        Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
            const auto count = static_cast<std::size_t>(n);
            std::vector<std::vector<float>> signals;
            for (unsigned i = 0; i < kRow; ++i) {
                signals.push_back(Tests::Noise(count + 2 * kReadingTaps - 1, 20 + i));
                sources.signals[i] = signals[i].data() + kReadingTaps;
                const auto taps = Tests::Noise(kReadingTaps, 50 + i);
                for (std::size_t t = 0; t < kReadingTaps; ++t) sources.taps[t][i] = taps[t];
            }
            Guarded<float> rows(start, std::vector<float>(kRow * count, 99.f));
            tested_.read(sources, rows.Data(), n);
            for (std::size_t at = 0; at < kRow * count; ++at) {
                if (at % kRow >= lanes) continue;
                double sum = 0.0;
                for (std::size_t t = 0; t < kReadingTaps; ++t) {
                    sum += static_cast<double>(sources.taps[t][at % kRow]) *
                           static_cast<double>(signals[at % kRow][at / kRow + kReadingTaps - t]);
                }
                ASSERT_NEAR(rows.Data()[at], sum, 8 * Tests::kEpsilon);
            }
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
    std::vector<double> turns;
    for (unsigned i = 0; i < kRow; ++i) {
        const auto r = Tests::Noise(8, 70 + i);
        turns.push_back(0.02 + 0.01 * static_cast<double>(r[0]));
        fades.cosine[i] = std::cos(r[1]);
        fades.sine[i] = std::sin(r[1]);
        fades.turnCos[i] = static_cast<float>(std::cos(turns[i]));
        fades.turnSin[i] = static_cast<float>(std::sin(turns[i]));
        fades.part[i] = r[2];
        fades.step[i] = 0.01f * r[3];
        fades.constant[i] = r[4];
        fades.ofCos[i] = r[5];
        fades.ofSin[i] = r[6];
        fades.ofPart[i] = r[7];
    }
    Tests::ForEveryLength(Tests::kLongestRun, [&](int n, int start) {
        const auto count = static_cast<std::size_t>(n);
        Guarded<float> rows(start, std::vector<float>(kRow * count));
        tested_.fadeWeights(fades, rows.Data(), n);
        const auto before = Tests::Noise(count, 90);
        Guarded<float> sums(start, before);
        tested_.sumLanes(rows.Data(), sums.Data(), n);
        for (std::size_t k = 0; k < count; ++k) {
            double sum = static_cast<double>(before[k]);
            for (std::size_t i = 0; i < kRow; ++i) {
                const auto d = [](float v) { return static_cast<double>(v); };
                const double angle = std::atan2(d(fades.sine[i]), d(fades.cosine[i])) +
                                     static_cast<double>(k) * turns[i];
                const double part = d(fades.part[i]) + static_cast<double>(k) * d(fades.step[i]);
                const double weight = d(fades.constant[i]) + d(fades.ofCos[i]) * std::cos(angle) +
                                      d(fades.ofSin[i]) * std::sin(angle) +
                                      d(fades.ofPart[i]) * part;
                ASSERT_NEAR(rows.Data()[k * kRow + i], weight, 100 * Tests::kEpsilon);
                sum += d(rows.Data()[k * kRow + i]);
            }
            ASSERT_NEAR(sums.Data()[k], sum, 40 * Tests::kEpsilon);
        }
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
            std::vector<float> rows[2][4];
            for (int side = 0; side < 2; ++side) {
                const BinauralKernels& kernels = side == 0 ? tested_ : plain_;
                Guarded<float> left(start, Tests::Noise(size, 5)), right(3, Tests::Noise(size, 6));
                Guarded<float> sums[2] = {{start, Tests::Noise(size, 7)},
                                          {5, Tests::Noise(size, 8)}};
                Guarded<float> s(start, states);
                const EarRows in{left.Data(), right.Data()};
                const EarRows out = adds ? EarRows{sums[0].Data(), sums[1].Data()} : in;
                kernels.firstOrder(
                    {gains.data(), mix.data(), moves ? steps.data() : nullptr, s.Data()}, in, out,
                    adds, n);
                rows[side][0] = adds ? sums[0].Values() : left.Values();
                rows[side][1] = adds ? sums[1].Values() : right.Values();
                rows[side][2] = s.Values();
            }
            // States stay below 3, mixes below 1.7; 67 steps of the mix are 67 roundings.
            for (int r = 0; r < 3; ++r) {
                Tests::ExpectNear(rows[0][r], rows[1][r], 100 * Tests::kEpsilon);
            }
        }
    });
}

INSTANTIATE_FOR_ALL_SETS(BinauralKernelsOf);

}  // namespace
}  // namespace tav
