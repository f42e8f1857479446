// SPDX-License-Identifier: MIT
// Sources that move, sample by sample: finite responses against convolution, delays against a line
// that forgets nothing.
#include "pan/QuiloHrtfFiltering.h"

#include "reference/PlainDelay.h"
#include "reference/Signals.h"
#include "support/AllocationTrap.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace Quilo {
namespace {

constexpr std::uint32_t kPoints = 5;
constexpr unsigned kSources = 3;
constexpr std::size_t kFrames = 6000;
constexpr float kRate = 48000.f;

std::shared_ptr<const HrtfResponses> RandomResponses(unsigned taps) {
    HrtfData data;
    data.filterType = Hrtfs::FilterType::Fir;
    data.filtersLength = taps;
    data.numChannels = 2;
    data.numPoints = kPoints;
    data.samplingRate = kRate;
    for (unsigned p = 0; p < kPoints; ++p) {
        HrtfPoint point;
        point.position = {static_cast<float>(p) - 2.f, 1.f, 0.f};
        point.filters = tav::Matrix<float>(2, taps);
        for (unsigned e = 0; e < 2; ++e) {
            const auto row = Tests::Noise(taps, 10 * p + e, -0.05f, 0.05f);
            for (unsigned t = 0; t < taps; ++t) point.filters(e, t) = row[t];
        }
        data.points.push_back(std::move(point));
    }
    return std::make_shared<const HrtfResponses>(std::make_shared<const Hrtf>(std::move(data)),
                                                 HrtfFormat{kRate, {}, 0});
}

/// One source at one ear, sample by sample in doubles. What is asked for in the middle of a fade
/// waits for its end.
class PlainFadingFir {
public:
    PlainFadingFir(const HrtfData& set, unsigned ear, std::size_t fadeLength, tav::FadeShape shape)
        : set_(set),
          ear_(ear),
          length_(fadeLength),
          shape_(shape) {}

    void Load(std::uint32_t point) { wanted_ = point; }
    /// Nothing was heard before the frame; what was loaded last sounds at once.
    void Wake(std::size_t frame) {
        first_ = frame;
        current_ = incoming_ = wanted_;
    }
    double Next(const Tests::Signal& input, std::size_t frame) {
        if (current_ == incoming_ && wanted_ != current_) {
            incoming_ = wanted_;
            position_ = 0;
        }
        if (current_ != incoming_ && position_ >= length_) current_ = incoming_;
        if (current_ == incoming_) return Convolve(current_, input, frame);
        const double t = static_cast<double>(++position_) / static_cast<double>(length_);
        const auto [out, in] = Weights(t);
        const double sample =
            out * Convolve(current_, input, frame) + in * Convolve(incoming_, input, frame);
        if (position_ == length_) current_ = incoming_;
        return sample;
    }

private:
    std::pair<double, double> Weights(double t) const {
        const double half = 0.5 * std::numbers::pi * t;
        if (shape_ == tav::FadeShape::Linear) return {1.0 - t, t};
        if (shape_ == tav::FadeShape::Cosine) return {std::cos(half), std::sin(half)};
        return {0.5 + 0.5 * std::cos(2.0 * half), 0.5 - 0.5 * std::cos(2.0 * half)};
    }
    double Convolve(std::uint32_t point, const Tests::Signal& input, std::size_t frame) const {
        if (point >= kPoints) return 0.0;
        const auto taps = set_.points[point].filters.Row(ear_);
        double sum = 0.0;
        for (std::size_t t = 0; t < std::min(taps.size(), frame - first_ + 1); ++t) {
            sum += static_cast<double>(taps[t]) * static_cast<double>(input[frame - t]);
        }
        return sum;
    }

    const HrtfData& set_;
    unsigned ear_;
    std::size_t length_;
    tav::FadeShape shape_;
    std::uint32_t wanted_ = 0, current_ = 0, incoming_ = 0;
    std::size_t position_ = 0;
    std::size_t first_ = 0;
};

/// How a host announces its blocks and what it then plays, over and over.
struct Blocks {
    const char* name;
    unsigned taps;
    unsigned announced;
    std::vector<unsigned> played;
    float fadeMs;
    tav::FadeShape shape;
};

const Blocks kBlocks[] = {
    {"Single", 130, 1, {1}, 5.f, tav::FadeShape::SquareCosine},
    {"Small", 128, 64, {64}, 5.f, tav::FadeShape::Cosine},
    {"SmallManyPartitions", 513, 64, {64}, 0.7f, tav::FadeShape::Linear},
    {"SmallWithoutFades", 300, 64, {64}, 0.f, tav::FadeShape::Linear},
    {"Irregular", 200, 64, {64, 64, 17, 64, 128, 100, 1}, 5.f, tav::FadeShape::SquareCosine},
    {"NoPowerOfTwo", 200, 100, {100}, 3.f, tav::FadeShape::Cosine},
    {"NoPowerOfTwoAndLong", 1100, 100, {100, 7, 60}, 7.3f, tav::FadeShape::Linear},
    {"Large", 200, 512, {512}, 2.f, tav::FadeShape::SquareCosine},
    {"Larger", 700, 1024, {1024}, 7.f, tav::FadeShape::SquareCosine},
};

class FirsOfBlocks : public testing::TestWithParam<Blocks> {};

// Fades begin in blocks, end anywhere, and are asked for more often than they can follow; points
// beyond the set are silent. Another source is away for a while and has forgotten all after it.
TEST_P(FirsOfBlocks, AreConvolutionsAtRestAndInFades) {
    const Blocks& blocks = GetParam();
    const auto responses = RandomResponses(blocks.taps);
    HrtfFiltering filtering(responses, kSources, blocks.announced);
    filtering.SetSettings({blocks.fadeMs, blocks.shape, tav::DelayKind::Lagrange});
    const auto fadeLength =
        static_cast<std::size_t>(std::round(static_cast<double>(blocks.fadeMs) * 48.0));
    std::vector<Tests::Signal> inputs;
    std::vector<std::vector<PlainFadingFir>> plain(kSources);
    for (unsigned s = 0; s < kSources; ++s) {
        inputs.push_back(Tests::Noise(kFrames, 100 + s));
        for (unsigned e = 0; e < 2; ++e)
            plain[s].emplace_back(responses->Set()->Data(), e, fadeLength, blocks.shape);
    }
    std::mt19937 random(7);
    unsigned moves = 0;
    bool wasAway = false;
    Tests::Signal left(kFrames), right(kFrames);
    std::vector<double> expected[2] = {std::vector<double>(kFrames), std::vector<double>(kFrames)};
    for (std::size_t block = 0, done = 0; done < kFrames; ++block) {
        const std::size_t count =
            std::min<std::size_t>(blocks.played[block % blocks.played.size()], kFrames - done);
        const auto move = [&](unsigned s) {
            const auto point = static_cast<std::uint32_t>(random() % (kPoints + 1));
            filtering.SetSource(s, {point, {}, 1.f}, 0.f);
            for (PlainFadingFir& ear : plain[s]) ear.Load(point);
        };
        for (unsigned s = 0; done == 0 && s < kSources; ++s) move(s);
        // At rest in the end.
        for (; moves < done / 120 && done < kFrames * 2 / 3; ++moves) move(moves % kSources);
        const bool isAway = done >= kFrames / 4 && done < kFrames / 2;
        std::vector<const float*> in;
        for (const Tests::Signal& input : inputs) in.push_back(input.data() + done);
        if (isAway) in[0] = nullptr;
        EXPECT_EQ(Tests::ViolationsOf([&] {
                      filtering.Perform(left.data() + done, right.data() + done, in.data(),
                                        static_cast<unsigned>(count));
                  }),
                  0u);
        for (unsigned s = isAway ? 1 : 0; s < kSources; ++s) {
            for (unsigned e = 0; e < 2; ++e) {
                if (done == 0 || (s == 0 && wasAway)) plain[s][e].Wake(done);
                for (std::size_t k = done; k < done + count; ++k) {
                    expected[e][k] += plain[s][e].Next(inputs[s], k);
                }
            }
        }
        wasAway = isAway;
        done += count;
    }
    double loudest = 0.0;
    for (const double sample : expected[0]) loudest = std::max(loudest, std::fabs(sample));
    EXPECT_GT(loudest, 1.0);
    for (std::size_t k = 0; k < kFrames; ++k) {
        ASSERT_NEAR(left[k], expected[0][k], 1e-6 * loudest) << k;
        ASSERT_NEAR(right[k], expected[1][k], 1e-6 * loudest) << k;
    }
}

// Cells of another rate with delays that glide and jump: in spectra as tap by tap.
TEST(HrtfFiltering, DelayedResponsesInSpectraAreThoseTapByTap) {
    const auto set = Hrtf::LoadShared("kemar");
    const auto responses = HrtfResponses::Of(set, {kRate, HrtfRealisation::Auto, 0});
    HrtfFiltering spectral(responses, kSources, 64), direct(responses, kSources, 63);
    std::vector<Tests::Signal> inputs;
    for (unsigned s = 0; s < kSources; ++s) inputs.push_back(Tests::Noise(kFrames, 200 + s));
    std::mt19937 random(3);
    Tests::Signal heard[2][2] = {{Tests::Signal(kFrames), Tests::Signal(kFrames)},
                                 {Tests::Signal(kFrames), Tests::Signal(kFrames)}};
    const unsigned played[] = {64, 64, 64, 64, 64, 17, 64, 128, 64, 100, 64};
    for (std::size_t block = 0, done = 0; done < kFrames; ++block) {
        const auto count = std::min<std::size_t>(played[block % std::size(played)], kFrames - done);
        for (unsigned s = 0; block % 5 == 0 && s < kSources; ++s) {
            const auto point = static_cast<std::uint32_t>(random() % 710);
            const EarDelays delays{static_cast<float>(random() % 4), 1.3f};
            const float glideMs = block % 2 == 0 ? 10.f : 0.f;
            spectral.SetSource(s, {point, delays, 1.f}, glideMs);
            direct.SetSource(s, {point, delays, 1.f}, glideMs);
        }
        std::vector<const float*> in;
        for (const Tests::Signal& input : inputs) in.push_back(input.data() + done);
        if (block % 40 > 30) in[1] = nullptr;
        for (auto& [filtering, ears] : {std::pair{&spectral, heard[0]}, {&direct, heard[1]}}) {
            EXPECT_EQ(Tests::ViolationsOf([&] {
                          filtering->Perform(ears[0].data() + done, ears[1].data() + done,
                                             in.data(), static_cast<unsigned>(count));
                      }),
                      0u);
        }
        done += count;
    }
    for (std::size_t e = 0; e < 2; ++e) {
        EXPECT_GT(*std::ranges::max_element(heard[1][e]), 1.f);
        for (std::size_t k = 0; k < kFrames; ++k) {
            ASSERT_NEAR(heard[0][e][k], heard[1][e][k], 1e-4) << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, FirsOfBlocks, testing::ValuesIn(kBlocks), Tests::kByName);

// Windows grow with the delays that are set, and what they cannot hold is clamped.
TEST(HrtfVoices, ReadDelaysOfAnyLength) {
    constexpr float kMs[] = {1.f, 4.f, 16.f, 50.f, 0.5f};  // one after the other, by glides
    for (const float rate : {8000.f, 192000.f}) {
        HrtfVoices voices(1, rate, GroupReader::kLongest, 0);
        GroupReader reader;
        voices.Wake(0);
        std::vector<Plain::Delay> plain(2, Plain::Delay(static_cast<double>(rate)));
        const auto blocks = static_cast<unsigned>(0.04f * rate) / GroupReader::kLongest;
        for (unsigned block = 0; block < std::size(kMs) * blocks; ++block) {
            const auto input = Tests::Noise(GroupReader::kLongest, block);
            for (std::size_t p = 0; p < 2 && block % blocks == 0; ++p) {
                const float ms = kMs[(block / blocks + p) % std::size(kMs)];
                const float clamped = std::min(ms, HrtfVoices::kLongestDelayMs);
                voices.SetDelay(0, p, ms, block == 0 ? 0 : tav::Ramp::GlideLength(30.f, rate));
                plain[p].SetDelay(clamped * 0.001f * rate, block == 0);
            }
            voices.Take(0, input);
            for (std::size_t p = 0; p < 2; ++p) {
                std::vector<float> rows(GroupReader::kLongest * tav::kSourceLanes);
                reader.Set(0, voices.ReadingOf(0, p));
                reader.Read(1, rows.data(), input.size());
                for (std::size_t k = 0; k < input.size(); ++k) {
                    const double expected = plain[p].Process(static_cast<double>(input[k]));
                    // Delays of thousands of samples are rounded to parts of 2^-12 of one.
                    ASSERT_NEAR(rows[k * tav::kSourceLanes], expected, 3e-3) << block << " " << k;
                }
            }
        }
    }
}

// A window that has just grown does not know yet what was before it. The input counts its samples.
TEST(HrtfVoices, GrowWithoutAHoleInTheSound) {
    for (const std::uint32_t glide : {0u, 50u, 300u}) {
        HrtfVoices voices(1, kRate, GroupReader::kLongest, 0);
        voices.Wake(0);
        std::vector<float> input(GroupReader::kLongest), room(input.size());
        for (unsigned block = 0; block < 60; ++block) {
            const float ms = block < 20 || block == 50 ? 4.f : block == 20 ? 7.f : 16.f;
            voices.SetDelay(0, 0, ms, block < 50 ? glide : 0);
            const auto first = static_cast<float>(block * input.size());
            std::iota(input.begin(), input.end(), first);
            voices.Take(0, input);
            const float* const output = voices.Delayed(0, 0, room);
            const float least = (block > 50 ? 15.99f : 3.99f) * 48.f, most = 16.01f * 48.f;
            for (std::size_t k = 0; k < input.size() && block >= 18; ++k) {
                ASSERT_GE(input[k] - output[k], least) << glide << " " << block << " " << k;
                ASSERT_LE(input[k] - output[k], most) << glide << " " << block << " " << k;
            }
        }
    }
}

}  // namespace
}  // namespace Quilo
