// SPDX-License-Identifier: MIT
#include "picture/HostScene.h"

#include "picture/HostPicture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace {

using namespace Quilo::Host;

Scene EmptyScene() {
    Scene scene;
    scene.title = "quilo.pan~ 1 2 <\"&\"> \xed\xa0\x80|\x01|\xef\xbf\xbf|";
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

/// Every "<tag" must have its end: "/>" or "</tag>"; every letter must be one that XML knows.
void ExpectWellFormed(const std::string& text) {
    std::vector<std::string> open;
    for (std::size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1)) {
        const std::size_t end = text.find('>', at);
        ASSERT_NE(end, std::string::npos);
        const std::string tag = text.substr(at + 1, end - at - 1);
        ASSERT_EQ(tag.find('<'), std::string::npos) << tag;
        ASSERT_EQ(std::count(tag.begin(), tag.end(), '"') % 2, 0) << tag;
        const std::string name = tag.substr(0, tag.find(' '));
        if (tag.ends_with('/')) continue;
        if (!tag.starts_with('/')) {
            open.push_back(name);
            continue;
        }
        ASSERT_FALSE(open.empty());
        ASSERT_EQ("/" + open.back(), name);
        open.pop_back();
    }
    EXPECT_TRUE(open.empty());
    EXPECT_EQ(text.find("nan"), std::string::npos);
    EXPECT_EQ(text.find("inf"), std::string::npos);
}

struct Stage {
    const char* name;
    std::size_t numSources, numSpeakers, numOutlets;
    double seconds;
    float distance;
};

class PictureOf : public testing::TestWithParam<Stage> {};

TEST_P(PictureOf, IsWellFormedAndNamesEverything) {
    const Stage& stage = GetParam();
    Scene scene = EmptyScene();
    scene.seconds = stage.seconds;
    scene.numInlets = stage.numSources;
    for (std::size_t k = 0; k < stage.numSpeakers; ++k) {
        const auto angle = static_cast<float>(k);
        scene.speakers.push_back(
            {stage.distance * std::sin(angle), stage.distance * std::cos(angle), 0});
    }
    for (int m = 0; m < 50; ++m)
        scene.path.push_back({m * stage.seconds / 50,
                              {stage.numSources, {static_cast<float>(m) * stage.distance, 1, 1}}});
    scene.power.assign(stage.numOutlets, std::vector<double>(50, 0.1));
    const std::string text = DrawScene(scene);
    ExpectWellFormed(text);
    EXPECT_NE(text.find("quilo.pan~ 1 2 &lt;&quot;&amp;&quot;&gt; \ufffd\ufffd\ufffd| |\ufffd|"),
              std::string::npos);
    for (std::size_t k = 0; k < std::min<std::size_t>(stage.numSources, 7); ++k)
        EXPECT_NE(text.find(">" + std::to_string(k + 1) + "</text>"), std::string::npos);
    const std::size_t label = text.find("font-weight=\"bold\" fill=\"#1f2933\">1");
    EXPECT_EQ(label != std::string::npos, stage.numSpeakers + stage.numOutlets > 0);
}

INSTANTIATE_TEST_SUITE_P(Stages,
                         PictureOf,
                         testing::Values(Stage{"Quad", 1, 4, 4, 5, 1},
                                         Stage{"Nothing", 0, 0, 0, 0, 1},
                                         Stage{"NoTime", 2, 2, 2, 0, 1},
                                         Stage{"NoSpeakers", 2, 0, 3, 1, 1},
                                         Stage{"AllAtTheListener", 3, 3, 3, 1, 0},
                                         Stage{"Tiny", 1, 2, 2, 1e-4, 1e-5f},
                                         Stage{"Vast", 1, 2, 2, 1e6, 1e30f},
                                         Stage{"Largest", 250, 250, 250, 60, 2}),
                         [](const auto& stage) { return std::string(stage.param.name); });

}  // namespace
