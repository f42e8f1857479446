// SPDX-License-Identifier: MIT
#include "processors/VelkDspInletsActivity.h"

#include "kernels/VelkDspDenormalGuard.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace tav {
namespace {

/// One inlet at a low rate, fed with blocks of one value.
class OneInlet {
public:
    explicit OneInlet(float sampleRate = 1000.f) {
        analyzer.SetNumInlets(1);
        analyzer.SetSampleRate(sampleRate);
    }

    /// A block of zeros that ends in `last`.
    bool ActiveAfter(unsigned frames, double last) {
        std::vector<double> block(frames, 0.0);
        if (frames > 0) block.back() = last;
        const double* inlet = block.data();
        analyzer.Analyze(&inlet, frames);
        return analyzer.InletActive(0);
    }

    /// How many blocks of exact silence pass as active; at most `limit`.
    unsigned SilentBlocksHeard(unsigned frames, unsigned limit) {
        unsigned heard = 0;
        while (heard < limit && ActiveAfter(frames, heard % 2 == 0 ? 0.0 : -0.0)) ++heard;
        return heard;
    }

    InletsActivityAnalyzer analyzer;
};

struct Hold {
    const char* name;
    float seconds, sampleRate;
    unsigned frames, heard;
};

class AutoMuteTime : public testing::TestWithParam<Hold> {};

TEST_P(AutoMuteTime, IsCountedInWholeBlocksOfExactSilence) {
    const Hold& hold = GetParam();
    OneInlet inlet(hold.sampleRate);
    inlet.analyzer.SetAutoMuteTime(hold.seconds);
    EXPECT_EQ(inlet.SilentBlocksHeard(hold.frames, 20000), hold.heard);
    EXPECT_TRUE(inlet.ActiveAfter(hold.frames, 1e-9)) << "comes back at once";
    EXPECT_EQ(inlet.SilentBlocksHeard(hold.frames, 20000), hold.heard) << "and counts afresh";
}

// clang-format off
constexpr Hold kHolds[] = {
    // name                seconds  rate      frames  heard: the block that completes the time is not
    {"ExactlyWholeBlocks", 2.f,     1000.f,   50,     39},
    {"RoundedUpToBlocks",  2.5f,    1000.f,   64,     39},
    {"RaisedToOneSecond",  0.5f,    1000.f,   10,     99},
    {"LoweredTo500",       1000.f,  1000.f,   1000,   499},
    {"OneSampleBlocks",    1.f,     1000.f,   1,      999},
    {"FastRate",           1.f,     384000.f, 4096,   93},
    {"Zero",               0.f,     1000.f,   4096,   20000},
    {"Negative",           -3.f,    1000.f,   4096,   20000},
    {"NotANumber",         std::numeric_limits<float>::quiet_NaN(), 1000.f, 4096, 20000},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Times, AutoMuteTime, testing::ValuesIn(kHolds), Tests::kByName);

TEST(InletsActivityAnalyzer, StaysAwakeForAnyBitOfSignal) {
    OneInlet inlet;
    inlet.analyzer.SetAutoMuteTime(1.f);
    const DenormalGuard hostThatFlushes;
    for (const double sample :
         {1.0, -1e-300, std::numeric_limits<double>::denorm_min(),
          std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (int block = 0; block < 20; ++block) {
            ASSERT_TRUE(inlet.ActiveAfter(100, sample)) << sample;
        }
    }
}

TEST(InletsActivityAnalyzer, TheHoldLengthFollowsALaterRate) {
    OneInlet inlet(8000.f);
    inlet.analyzer.SetAutoMuteTime(1.f);
    inlet.analyzer.SetSampleRate(2000.f);
    EXPECT_EQ(inlet.SilentBlocksHeard(100, 1000), 19u);
    for (int block = 0; block < 50; ++block) EXPECT_FALSE(inlet.ActiveAfter(100, 0.0));
    inlet.analyzer.SetSampleRate(3000.f);  // silence beyond the hold length was not counted
    EXPECT_EQ(inlet.SilentBlocksHeard(100, 1000), 9u);
}

TEST(InletsActivityAnalyzer, TheCountStandsStillWhileNothingIsWatched) {
    OneInlet inlet;
    inlet.analyzer.SetAutoMuteTime(1.f);
    for (int block = 0; block < 6; ++block) EXPECT_TRUE(inlet.ActiveAfter(100, 0.0));
    inlet.analyzer.SetAutoMute(false);
    for (int block = 0; block < 20; ++block) EXPECT_TRUE(inlet.ActiveAfter(100, 0.0));
    inlet.analyzer.SetAutoMute(true);
    inlet.analyzer.SetConnections(std::vector<short>{0}, {});
    for (int block = 0; block < 20; ++block) EXPECT_FALSE(inlet.ActiveAfter(100, 0.0));
    inlet.analyzer.SetConnections(std::vector<short>{1}, {});
    EXPECT_EQ(inlet.SilentBlocksHeard(100, 1000), 3u);
    EXPECT_FALSE(inlet.ActiveAfter(100, 0.0));
    inlet.analyzer.SetAutoMute(false);
    EXPECT_TRUE(inlet.ActiveAfter(100, 0.0)) << "without another change";
    EXPECT_EQ(inlet.analyzer.AutoMuteTime(), 1.f);
}

}  // namespace
}  // namespace tav
