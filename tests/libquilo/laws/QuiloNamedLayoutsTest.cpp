// SPDX-License-Identifier: MIT
#include "laws/QuiloNamedLayouts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace Quilo {
namespace {

std::vector<std::string> AllNames() {
    std::istringstream words(LayoutNames());
    return {std::istream_iterator<std::string>(words), {}};
}

// "5.1.4" counts all of its loudspeakers, "4+5+1" all but those for low frequencies.
TEST(NamedLayouts, HaveTheLoudspeakersThatTheirNamesCount) {
    for (std::string name : AllNames()) {
        const auto places = FindNamedLayout(name);
        ASSERT_TRUE(places) << name;
        if (name.find_first_of(".+") == std::string::npos) continue;
        const auto numLow = std::ranges::count_if(
            *places, [](const auto& place) { return place.label.starts_with("LFE"); });
        long expected = name.find('.') == std::string::npos ? numLow : 0;
        std::ranges::replace_if(
            name, [](char c) { return c == '.' || c == '+'; }, ' ');
        std::istringstream numbers(name);
        for (long number = 0; numbers >> number;) expected += number;
        EXPECT_EQ(std::ssize(*places), expected) << name;
    }
}

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
    for (const char* name :
         {"", "5.1.3", "K", "a", "Stereo", "sphere-47", "fibonacci-", "fibonacci-0",
          "fibonacci-251", "fibonacci-4x", "fibonacci-99999999999999999999"}) {
        EXPECT_FALSE(FindNamedLayout(name)) << name;
    }
    EXPECT_EQ(FindNamedLayout("sphere-48")->size(), 48u);
    EXPECT_EQ(FindNamedLayout("fibonacci-250")->back().label, "S250");
}

}  // namespace
}  // namespace Quilo
