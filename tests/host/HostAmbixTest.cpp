// SPDX-License-Identifier: MIT
// --ambix against a library of the same convention: its encoder gives the same channels.
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <spatialaudio/Ambisonics.h>

using namespace Tests;

namespace {

struct Place {
    const char* name;
    float azimuthDeg;  // clockwise, as the object takes it
    float elevationDeg;
};

constexpr Place kPlaces[] = {
    {"front", 0, 0}, {"left", -90, 0}, {"up", 0, 90}, {"between", 35, 20}, {"behind", -160, -50}};

PolarPoint Polar(const Place& place) {
    constexpr float kRadPerDeg = std::numbers::pi_v<float> / 180;
    return {-place.azimuthDeg * kRadPerDeg, place.elevationDeg * kRadPerDeg, 1};
}

struct Field {
    const char* box;
    const char* encoding;
    unsigned order;
    bool isFlat;
};

class AmbixFile : public testing::TestWithParam<Field> {
protected:
    /// What one sample of 1 becomes: a frame of the file.
    std::vector<float> Written(const Place& place) {
        tav::AudioBuffer one(1, 64, 48000);
        std::ranges::fill(one.Channel(0), 1.f);
        tav::WriteWavFile(folder_ / "one.wav", one);
        WriteText(folder_ / "s.txt", std::string("object quilo.pan~ ") + GetParam().box +
                                         " @interpolationtime 0\nencoding " + GetParam().encoding +
                                         "\nsource 1 ae " + std::to_string(place.azimuthDeg) + " " +
                                         std::to_string(place.elevationDeg));
        EXPECT_EQ(
            RunHost(folder_, {"--in", "one.wav", "--ambix", "--out", "o.wav", "s.txt"}).status, 0);
        const tav::AudioBuffer audio = tav::ReadAudioFile(folder_ / "o.wav");
        std::vector<float> frame;
        for (unsigned k = 0; k < audio.NumChannels(); ++k) frame.push_back(audio.Channel(k)[63]);
        return frame;
    }

    TemporaryFolder folder_;
};

TEST_P(AmbixFile, HasTheChannelsOfAnotherEncoder) {
    const Field& field = GetParam();
    CAmbisonicEncoder encoder;
    ASSERT_TRUE(encoder.Configure(field.order, true, 0));
    for (const Place& place : kPlaces) {
        encoder.SetPosition(Polar(place));
        encoder.Refresh();
        const std::vector<float> frame = Written(place);
        ASSERT_EQ(frame.size(), (field.order + 1) * (field.order + 1));
        for (unsigned k = 0; k < frame.size(); ++k) {
            const auto n = static_cast<unsigned>(std::sqrt(static_cast<double>(k)));
            const bool exists = !field.isFlat || k == n * n || k == n * n + 2 * n;
            EXPECT_NEAR(frame[k], exists ? encoder.GetCoefficient(k) : 0, 2e-6) << place.name << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Boxes,
                         AmbixFile,
                         testing::Values(Field{"1 4 bformat", "SN3D", 1, false},
                                         Field{"1 16 hoa3d", "SN3D", 3, false},
                                         Field{"1 16 hoa3d", "N3D", 3, false},
                                         Field{"1 16 hoa3d", "RONB", 3, false},
                                         Field{"1 9 hoa3d", "FuMa", 2, false},
                                         Field{"1 7 hoa2d", "SN2D", 3, true},
                                         Field{"1 5 hoa2d", "N2D", 2, true}));

}  // namespace
