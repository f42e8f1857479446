// SPDX-License-Identifier: MIT
#include "picture/HostScene.h"

#include "picture/HostPlanPanel.h"
#include "picture/HostTimePanel.h"

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

TEST(ScenePicture, StripsAreInDecibel) {
    Scene scene = EmptyScene();
    scene.seconds = 1;
    scene.power = {{1e-3, 1e-6, 1.0}};  // in the middle, at the bottom and at the top of the strip
    Svg svg;
    DrawLevels(svg, scene, {0, 0}, 60, 1);
    EXPECT_NE(svg.Document(60, 60, "").find("10,25.5 30,48 50,3 "), std::string::npos);
}

TEST(ScenePicture, DistancesAreDrawnWhereOneChanges) {
    for (const auto& [metres, isDrawn] : {std::pair(2.1f, true), {2.03f, false}, {1.9f, true}}) {
        Scene scene = EmptyScene();
        scene.seconds = 1;
        scene.path = {{0, {{0, 2, 0}}}, {0.5, {{metres, 0, 0}}}};
        Svg svg;
        DrawTraces(svg, scene, {0, 0}, 100, 1);
        const std::string text = svg.Document(100, 400, "");
        EXPECT_EQ(text.find("Distance of the sources") != std::string::npos, isDrawn) << metres;
    }
}

TEST(ScenePicture, ALabelStandsForUpToFourLoudspeakersOfOnePlace) {
    for (const auto& [count, label] :
         {std::pair(3, ">1, 2, 3<"), {4, ">1, 2, 3, 4<"}, {5, ">1, 2, 3, 4 \u2026<"}}) {
        Scene scene = EmptyScene();
        scene.speakers.assign(static_cast<std::size_t>(count), {0, 1, 0});
        scene.path = {{0, {{1, 1, 0}}}};
        Svg svg;
        DrawPlan(svg, scene, kFromAbove, {50, 50}, 300, 300, 1);
        EXPECT_NE(svg.Document(400, 400, "").find(label), std::string::npos) << label;
    }
}

}  // namespace
