// SPDX-License-Identifier: MIT
#include "kernels/VelkDspGainKernels.h"

#include "libvelkdsp/kernels/KernelHarness.h"
#include "reference/Signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <deque>
#include <vector>

namespace {

using tav::GainKernels;
using tav::MixPair;
using Tests::ForEveryLengthAndStart;
using Tests::Noise;

constexpr int kLongest = Tests::kLongestRun;
constexpr int kOffsets = Tests::kStarts;

/// One sample in double precision, and what a float result may differ from it: each product and
/// each sum rounds by at most half an epsilon of the magnitudes summed so far.
struct Exact {
    double value = 0.0;
    double magnitude = 0.0;
    int numTerms = 1;

    void Add(double gain, double slope, double sample) {
        value += (gain + slope) * sample;
        magnitude += (std::abs(gain) + std::abs(slope)) * std::abs(sample);
        ++numTerms;
    }
    double Bound() const { return (numTerms + 3) * Tests::kEpsilon * magnitude; }
};

/// An output that is added to, at a given offset from a cache line.
class Output {
public:
    Output(int offset, int n, unsigned seed)
        : before_(Noise(static_cast<std::size_t>(n), seed)),
          samples_(offset, before_) {}
    float* Samples() { return samples_.Data(); }

    /// @param expect  adds the terms of sample k to what stood there before
    template <class Expect>
    void Check(Expect expect) {
        for (std::size_t k = 0; k < before_.size(); ++k) {
            Exact exact{before_[k], std::abs(double{before_[k]})};
            expect(exact, k);
            ASSERT_NEAR(Samples()[k], exact.value, exact.Bound())
                << "sample " << k << " of " << before_.size();
        }
    }

private:
    std::vector<float> before_;
    Tests::Guarded<float> samples_;
};

class GainKernelsOf : public Tests::KernelsOf<GainKernels> {};

TEST_P(GainKernelsOf, AddAListOfInputs) {
    constexpr int kInputs = 7;
    std::vector<std::vector<float>> x;
    std::array<const float*, kInputs> inputs{};
    for (unsigned i = 0; i < kInputs; ++i) {
        x.push_back(Noise(kLongest + kOffsets, 10 + i));
        inputs[i] = x.back().data();
    }
    const std::vector<float> w = Noise(kLongest, 20);
    const std::array<MixPair, 3> pairs{{{6, 0.5f, -2.f}, {0, 1.f, 0.f}, {3, -0.25f, 0.125f}}};
    for (const bool ramped : {false, true}) {
        for (int numPairs = 0; numPairs <= 3; ++numPairs) {
            ForEveryLengthAndStart(kLongest, [&](int n, int offset) {
                Output y(kOffsets - 1 - offset, n, 5);
                if (ramped) {
                    tested_.mixRampedList(y.Samples(), inputs.data(), offset, pairs.data(),
                                          numPairs, w.data(), n);
                } else {
                    tested_.mixConstantList(y.Samples(), inputs.data(), offset, pairs.data(),
                                            numPairs, n);
                }
                y.Check([&](Exact& exact, std::size_t k) {
                    for (int p = 0; p < numPairs; ++p) {
                        const MixPair& pair = pairs[static_cast<std::size_t>(p)];
                        const double slope = ramped ? double{pair.step} * double{w[k]} : 0.0;
                        const float* const input = inputs[static_cast<std::size_t>(pair.input)];
                        exact.Add(pair.gain, slope, input[static_cast<std::size_t>(offset) + k]);
                    }
                });
            });
        }
    }
}

TEST_P(GainKernelsOf, MixAPanelOfInputsIntoATile) {
    constexpr std::size_t kInputs = 5;
    constexpr std::size_t kTile = tav::kTileOutputs;
    const std::vector<float> gains = Noise(kInputs * kTile, 30);
    std::vector<float> steps = Noise(kInputs * kTile, 31);
    steps[4 * kTile + 1] = 0.f;  // a resting gain among moving ones
    const std::array<int, 3> rows{4, 0, 2};
    constexpr std::size_t kStride = tav::kStripFrames;
    const std::vector<float> w = Noise(kStride, 32);
    constexpr std::size_t kPitch = kStride + kOffsets;
    const std::vector<float> x = Noise(kInputs * kPitch, 33);
    std::array<const float*, kInputs> inputs{};
    for (std::size_t i = 0; i < kInputs; ++i) inputs[i] = x.data() + i * kPitch;
    ForEveryLengthAndStart(tav::kStripFrames, [&](int n, int offset) {
        const bool ramped = (n + offset) % 2 == 0;
        const int numOutputs = tav::kLeastTileOutputs + (n + offset) / 2 % 3;
        std::vector<float> samples(kInputs * kStride, 12345.f);
        tav::Strip strip =
            tested_.fillStrip(samples.data(), kInputs, inputs.data(), offset, rows.data(), 3, n);
        const bool isInPlace = n == tav::kStripFrames && offset % 4 < 2;
        if (isInPlace) strip = {x.data() + offset, kPitch, 1};
        std::deque<Output> outputs;
        std::array<float*, kTile> pointers{};
        for (int o = 0; o < numOutputs; ++o) {
            outputs.emplace_back(offset, n, 40 + static_cast<unsigned>(o));
        }
        for (std::size_t o = 0; o < outputs.size(); ++o) pointers[o] = outputs[o].Samples();
        const tav::Panel panel{gains.data(), steps.data(), rows.data(), 3, numOutputs};
        if (ramped) {
            tested_.mixRampedPanel(pointers.data(), strip, panel, w.data(), n);
        } else {
            tested_.mixConstantPanel(pointers.data(), strip, panel, n);
        }
        for (std::size_t o = 0; o < outputs.size(); ++o) {
            outputs[o].Check([&](Exact& exact, std::size_t k) {
                for (const int row : rows) {
                    const std::size_t at = static_cast<std::size_t>(row) * kTile + o;
                    const double slope = ramped ? double{steps[at]} * double{w[k]} : 0.0;
                    exact.Add(gains[at], slope,
                              inputs[static_cast<std::size_t>(row)]
                                    [static_cast<std::size_t>(offset) + k]);
                }
            });
        }
    });
}

TEST_P(GainKernelsOf, CopyASingleInputOfGainOneBitForBit) {
    const std::vector<float> x = Noise(kLongest, 50);
    const float* const inputs[] = {x.data()};
    const MixPair pair{0, 1.f, 0.f};
    std::vector<float> listed(kLongest);
    tested_.mixConstantList(listed.data(), inputs, 0, &pair, 1, kLongest);
    EXPECT_EQ(listed, x);
}

INSTANTIATE_FOR_ALL_SETS(GainKernelsOf);

}  // namespace
