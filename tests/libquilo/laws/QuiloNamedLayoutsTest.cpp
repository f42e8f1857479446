// SPDX-License-Identifier: MIT
#include "laws/QuiloNamedLayouts.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <sstream>

namespace Quilo {
namespace {

std::vector<std::string> AllNames() {
    std::istringstream words(LayoutNames());
    return {std::istream_iterator<std::string>(words), {}};
}

/// Middle, upper, bottom and low-frequency loudspeakers of "5.1.4", "9+10+3" and the like.
struct Counts {
    const char* name;
    unsigned middle, upper, bottom, lfe;
};

class NamedLayout : public testing::TestWithParam<Counts> {};

TEST_P(NamedLayout, HasTheLoudspeakersThatItsNameCounts) {
    const Counts& expected = GetParam();
    const auto places = FindNamedLayout(expected.name);
    ASSERT_TRUE(places);
    Counts found{expected.name, 0, 0, 0, 0};
    for (const LoudspeakerPlace& place : *places) {
        const float up = place.elevationDeg;
        ++(place.label.starts_with("LFE") ? found.lfe
           : up > 0                       ? found.upper
           : up < 0                       ? found.bottom
                                          : found.middle);
    }
    EXPECT_EQ(found.middle, expected.middle);
    EXPECT_EQ(found.upper, expected.upper);
    EXPECT_EQ(found.bottom, expected.bottom);
    EXPECT_EQ(found.lfe, expected.lfe);
}

// clang-format off
constexpr Counts kNames[] = {
    {"stereo", 2, 0, 0, 0}, {"quad", 4, 0, 0, 0}, {"5.1", 5, 0, 0, 1}, {"5.0", 5, 0, 0, 0},
    {"2+5+0", 5, 2, 0, 1}, {"5.1.4", 5, 4, 0, 1}, {"4+5+1", 5, 4, 1, 1}, {"0+7+0", 7, 0, 0, 1},
    {"7.1.4", 7, 4, 0, 1}, {"3+7+0", 7, 3, 0, 2}, {"4+9+0", 9, 4, 0, 1}, {"22.2", 10, 9, 3, 2},
    {"22.0", 10, 9, 3, 0}, {"octagon", 8, 0, 0, 0}, {"cube", 0, 4, 4, 0},
    {"dome-24", 12, 12, 0, 0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Names, NamedLayout, testing::ValuesIn(kNames));

TEST(NamedLayouts, MirrorLeftAndRightAndStandApart) {
    for (const std::string& name : AllNames()) {
        const auto places = FindNamedLayout(name);
        ASSERT_TRUE(places) << name;
        std::set<std::pair<float, float>> stands;
        std::set<std::string_view> labels;
        for (const auto& [label, azimuth, elevation] : *places) {
            EXPECT_TRUE(labels.insert(label).second) << name << label;
            if (label == "LFE") continue;  // alone on the left
            EXPECT_TRUE(stands.insert({azimuth, elevation}).second) << name << label;
            if (label.starts_with("LFE")) continue;  // a number follows, no side
            const int side = label.starts_with("L") - label.starts_with("R");
            EXPECT_TRUE(side == 0 || static_cast<float>(side) * azimuth < 0) << name << label;
        }
        for (const auto& [azimuth, elevation] : stands) {
            const float mirrored = azimuth == 180.f ? 180.f : -azimuth;
            EXPECT_TRUE(stands.contains({mirrored, elevation})) << name << " " << azimuth;
        }
    }
}

TEST(NamedLayouts, KnowNoOtherName) {
    for (const char* name : {"", "5.1.3", "K", "a", "Stereo"}) EXPECT_FALSE(FindNamedLayout(name));
}

}  // namespace
}  // namespace Quilo
