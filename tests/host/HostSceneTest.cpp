// SPDX-License-Identifier: MIT
#include "picture/HostScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

using namespace Quilo::Host;

Scene EmptyScene() {
    Scene scene;
    scene.title = "a scene";
    scene.numInlets = 1;
    return scene;
}

// However a signal is cut into vectors and slots, the power of ones is 1 in every slot.
TEST(SceneRecorder, KeepsThePowerOfItsOutlets) {
    for (const auto& [numFrames, vector] :
         {std::pair(1, 64), {777, 64}, {3001, 1}, {12345, 4096}}) {
        SceneRecorder recorder(EmptyScene(), 1, static_cast<std::uint64_t>(numFrames));
        for (int at = 0; at < numFrames; at += vector) {
            const int count = std::min(vector, numFrames - at);
            recorder.AddSamples(0, static_cast<std::uint64_t>(at),
                                std::vector<double>(static_cast<std::size_t>(count), 1.0));
        }
        const std::vector<double> power = recorder.Finish().power[0];
        EXPECT_EQ(power, std::vector<double>(power.size(), 1.0)) << numFrames;
        EXPECT_LE(power.size(), 1000u);
    }
}

}  // namespace
