// SPDX-License-Identifier: MIT
#include "picture/HostScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace {

using namespace Quilo::Host;

Scene EmptyScene() {
    Scene scene;
    scene.title = "a scene";
    scene.numInlets = 1;
    return scene;
}

struct Cut {
    const char* name;
    std::uint64_t numFrames;
    std::size_t vector;
};

class SceneCutInto : public testing::TestWithParam<Cut> {};

// However a signal is cut into vectors and slots, its energy is that of its samples.
TEST_P(SceneCutInto, KeepsTheEnergyOfItsOutlets) {
    const auto [name, numFrames, vector] = GetParam();
    SceneRecorder recorder(EmptyScene(), 1, numFrames);
    std::vector<double> signal(numFrames);
    for (std::size_t k = 0; k < signal.size(); ++k) signal[k] = std::sin(0.01 * double(k * k));
    for (std::size_t at = 0; at < signal.size(); at += vector)
        recorder.AddSamples(0, at,
                            std::span(signal).subspan(at, std::min(vector, signal.size() - at)));
    const std::vector<double> power = recorder.Finish().power[0];
    double energy = 0;
    for (const double sample : signal) energy += sample * sample;
    double drawn = 0;  // slots of one length but for a frame
    const auto numSlots = static_cast<double>(power.size());
    for (std::size_t k = 0; k < power.size(); ++k) {
        const auto slot = static_cast<double>(k);
        drawn += power[k] * (std::floor((slot + 1) * double(numFrames) / numSlots) -
                             std::floor(slot * double(numFrames) / numSlots));
    }
    EXPECT_NEAR(drawn, energy, 1e-9 * energy) << name;
    EXPECT_LE(power.size(), 1000u);
}

INSTANTIATE_TEST_SUITE_P(Lengths,
                         SceneCutInto,
                         testing::Values(Cut{"one frame", 1, 64},
                                         Cut{"fewer frames than slots", 777, 64},
                                         Cut{"single samples", 3001, 1},
                                         Cut{"vectors longer than slots", 12345, 4096}));

TEST(SceneRecorder, AsksForPositionsOnceASlotFromTheStart) {
    SceneRecorder recorder(EmptyScene(), 1, 48000);
    const std::vector<float> source{1, 2, 3}, speakers{0, 1, 0, 0, -1, 0};
    std::size_t asked = 0;
    for (std::uint64_t frame = 0; frame < 48000; frame += 16) {
        if (!recorder.WantsPositions(frame)) continue;
        ++asked;
        recorder.AddPositions(frame, source, speakers);
    }
    const Scene scene = recorder.Finish();
    EXPECT_EQ(asked, 1000u);
    EXPECT_EQ(scene.path.front().seconds, 0);
    EXPECT_EQ(scene.path.back().sources[0], (tav::CartesianVector{1, 2, 3}));
    EXPECT_EQ(scene.speakers.size(), 2u);
}

}  // namespace
