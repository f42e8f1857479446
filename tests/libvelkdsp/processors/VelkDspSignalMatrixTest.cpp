// SPDX-License-Identifier: MIT
#include "processors/VelkDspSignalMatrix.h"

#include "reference/PlainSignalMatrix.h"
#include "reference/Signals.h"
#include "support/BlockPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Channels = std::vector<std::vector<float>>;

std::vector<float*> Pointers(Channels& channels) {
    std::vector<float*> pointers;
    for (auto& channel : channels) pointers.push_back(channel.data());
    return pointers;
}

Channels Constant(std::size_t count, int frames, float value = 1.f) {
    return Channels(count, std::vector<float>(static_cast<std::size_t>(frames), value));
}

/// One block through slot 1.
template <class Matrix>
Channels Play(Matrix& matrix, const Channels& inputs, std::size_t frames) {
    return Tests::PlayBlocks(
        inputs, matrix.NumOutputs(), frames, frames,
        [&](auto outputs, auto ins, unsigned n) { matrix.Process(outputs, ins, n); });
}

TEST(SignalMatrix, RefusesRowsWithGainsThatAreNotFinite) {
    tav::SignalMatrix matrix(1, 1);
    const auto set = [&](unsigned row, const std::vector<float>& gains, bool immediate) {
        matrix.SetRow(row, gains, immediate);
    };
    set(0, {0.5f}, false);
    set(0, {std::numeric_limits<float>::quiet_NaN()}, false);
    set(0, {std::numeric_limits<float>::infinity()}, true);
    set(1, {1.f}, true);
    set(0, {1.f, 1.f}, true);
    matrix.SetInterpolationTime(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(Play(matrix, {{1.f}}, 1), (Channels{{0.5f}}));
    EXPECT_EQ(matrix.InterpolationTime(), 0.f);
}

TEST(StaticSignalMatrix, UsesItsGainsAsTheyStand) {
    tav::StaticSignalMatrix matrix(2, 3);
    matrix.SetRow(0, std::vector<float>{1.f, 5e-5f, 0.f});
    matrix.SetRow(1, std::vector<float>{1.f, 0.f, -1.f});
    const Channels outputs = Play(matrix, Constant(2, 5), 5);
    EXPECT_EQ(outputs[0], std::vector<float>(5, 2.f));
    EXPECT_EQ(outputs[1], std::vector<float>(5, 5e-5f));
    EXPECT_EQ(outputs[2], std::vector<float>(5, -1.f));
    matrix.SetConnections(std::vector<short>{1, 0}, std::vector<short>{1, 1, 1});
    EXPECT_EQ(Play(matrix, Constant(2, 5), 5)[0], std::vector<float>(5, 1.f));
}

struct Shape {
    const char* name;
    unsigned inputs, outputs;
};
struct MatrixCase {
    tav::InstructionSet set;
    Shape shape;
};

/// Plays the same random life to the matrix and to its plain twin.
class RandomLife : public testing::TestWithParam<MatrixCase> {
protected:
    RandomLife()
        : generator_(GetParam().shape.inputs * 1000 + GetParam().shape.outputs),
          matrix_(GetParam().shape.inputs,
                  GetParam().shape.outputs,
                  tav::KernelsFor<tav::GainKernels>(GetParam().set)),
          plain_(GetParam().shape.inputs, GetParam().shape.outputs) {
        matrix_.SetBufferSize(kLongestBlock);
    }

    unsigned Below(unsigned count) { return static_cast<unsigned>(generator_() % count); }

    template <class T>
    T OneOf(std::initializer_list<T> values) {
        return values.begin()[generator_() % values.size()];
    }

    std::vector<float> RandomRow() {
        std::vector<float> row(matrix_.NumOutputs());
        const unsigned kind = Below(4);
        for (float& gain : row) {
            const float uniform = static_cast<float>(Below(2001)) * 1e-3f - 1.f;
            const float special = OneOf({0.f, 1.f, 5e-5f, 1e-4f, 2e-4f, -1.f, 0.5f, 0.5000004f});
            gain = kind == 0 ? uniform : kind == 1 ? special : 0.f;
        }
        if (kind == 3 && !row.empty()) row[generator_() % row.size()] = 0.7f;
        return row;
    }

    void SetSomeRow() {
        if (matrix_.NumInputs() == 0) return;
        const unsigned row = Below(matrix_.NumInputs());
        const std::vector<float> gains = RandomRow();
        const bool immediate = Below(4) == 0;
        matrix_.SetRow(row, gains, immediate);
        plain_.SetRow(row, gains, immediate);
    }

    void SetSomeTime() {
        const float ms = OneOf({0.f, 0.f, 0.02f, 0.1f, 1.f, 5.f, 30.f, 200.f, -3.f});
        matrix_.SetInterpolationTime(ms);
        plain_.SetInterpolationTime(ms);
    }

    void SetSomeRate() {
        const float hz = OneOf({8000.f, 44100.f, 48000.f, 384000.f});
        matrix_.SetSampleRate(hz);
        plain_.SetSampleRate(hz);
    }

    void ConnectSome() {
        std::vector<short> inlets(matrix_.NumInputs());
        std::vector<short> outlets(matrix_.NumOutputs());
        for (std::size_t i = 0; i < inlets.size(); ++i) {
            inlets[i] = Below(4) != 0;
            plain_.inputActive[i] = inlets[i] != 0;
        }
        for (std::size_t o = 0; o < outlets.size(); ++o) {
            outlets[o] = Below(4) != 0;
            plain_.outputActive[o] = outlets[o] != 0;
        }
        matrix_.SetConnections(inlets, outlets);
    }

    void Operate() {
        switch (Below(8)) {
            case 0: return SetSomeTime();
            case 1: return Below(3) == 0 ? SetSomeRate() : SetSomeTime();
            case 2: return Below(3) == 0 ? ConnectSome() : SetSomeRow();
            default: return SetSomeRow();
        }
    }

    /// As the host asks for a block: every output is overwritten, the unconnected ones with zeros.
    void PlayHost(const Channels& inputs, Channels& outputs, std::size_t frames) {
        Tests::Channels<double> in;
        for (const auto& input : inputs) in.emplace_back(input.begin(), input.end());
        const auto out = Tests::PlayBlocks(
            in, outputs.size(), frames, frames,
            [&](auto outs, auto ins, unsigned n) { matrix_.Process(outs, ins, n); });
        for (std::size_t o = 0; o < out.size(); ++o) {
            std::ranges::transform(out[o], outputs[o].begin(),
                                   [](double sample) { return static_cast<float>(sample); });
        }
    }

    void PlayFloats(Channels& inputs, Channels& outputs, std::size_t frames) {
        std::vector<float*> in = Pointers(inputs);
        std::vector<float*> out = Pointers(outputs);
        // What does not count must not be touched at all.
        for (std::size_t i = 0; i < in.size(); ++i) in[i] = plain_.inputActive[i] ? in[i] : nullptr;
        for (std::size_t o = 0; o < out.size(); ++o) {
            out[o] = plain_.outputActive[o] ? out[o] : nullptr;
        }
        const unsigned violations = Tests::ViolationsOf(
            [&] { matrix_.Perform(out.data(), in.data(), static_cast<unsigned>(frames)); });
        ASSERT_EQ(violations, 0u) << "allocated, freed or locked";
    }

    void CompareBlock() {
        const int frames = OneOf({1, 1, 2, 3, 7, 16, 63, 64, 65, 128, 509, 1000, kLongestBlock});
        const bool isHost = Below(2) == 0;
        Channels inputs;
        for (unsigned i = 0; i < matrix_.NumInputs(); ++i)
            inputs.push_back(Tests::Noise(static_cast<std::size_t>(frames), Below(1u << 30)));
        Channels outputs = Constant(matrix_.NumOutputs(), frames, isHost ? 0.f : 0.125f);
        Channels expected = outputs;
        plain_.Perform(Pointers(expected).data(), Pointers(inputs).data(), frames);
        if (isHost) {
            PlayHost(inputs, outputs, static_cast<std::size_t>(frames));
        } else {
            PlayFloats(inputs, outputs, static_cast<std::size_t>(frames));
        }
        if (HasFatalFailure()) return;
        // Gains stay within 1, a split one within |from| + |to - from| <= 3; each of the two sums
        // rounds once per term, a gain four times.
        const float terms = static_cast<float>(matrix_.NumInputs() + 1);
        const float bound = std::numeric_limits<float>::epsilon() * (terms + 4.f) * 3.f * terms;
        for (std::size_t o = 0; o < outputs.size(); ++o) {
            for (std::size_t k = 0; k < outputs[o].size(); ++k) {
                ASSERT_NEAR(outputs[o][k], expected[o][k], bound)
                    << "output " << o << " sample " << k << " of " << frames;
            }
        }
    }

    static constexpr int kLongestBlock = 1323;

    std::mt19937 generator_;
    tav::SignalMatrix matrix_;
    Plain::SignalMatrix plain_;
};

TEST_P(RandomLife, SoundsLikeThePlainMatrixSampleForSample) {
    for (int block = 0; block < 400; ++block) {
        SCOPED_TRACE("block " + std::to_string(block));
        for (unsigned left = Below(7); left > 0; --left) Operate();
        CompareBlock();
        if (HasFatalFailure()) return;
    }
}

constexpr Shape kShapes[] = {{"Mono", 1, 1},     {"Quad", 3, 4},     {"Hexagon", 2, 6},
                             {"Ring", 16, 8},    {"Wide", 5, 31},    {"Tall", 37, 2},
                             {"NoInputs", 0, 3}, {"NoOutputs", 3, 0}};

std::vector<MatrixCase> AllCases() {
    std::vector<MatrixCase> cases;
    for (const tav::InstructionSet set : tav::RunnableInstructionSets()) {
        for (const Shape& shape : kShapes) cases.push_back({set, shape});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(All, RandomLife, testing::ValuesIn(AllCases()), [](const auto& tested) {
    return std::string(NameOf(tested.param.set)) + tested.param.shape.name;
});

}  // namespace
