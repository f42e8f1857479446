// SPDX-License-Identifier: MIT
#include "text/VelkDspStringHelper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

TEST(StringHelper, ShortestFloatTextReadsBackToTheSameFloat) {
    std::mt19937 generator(5);
    std::uniform_real_distribution<float> mantissa(-1.f, 1.f);
    for (int exponent = -140; exponent <= 127; ++exponent) {
        const float value = std::ldexp(mantissa(generator), exponent);
        EXPECT_EQ(std::strtof(tav::NumberText(value).c_str(), nullptr), value) << value;
    }
    EXPECT_EQ(tav::NumberText(12.3f), "12.3");
    EXPECT_EQ(tav::NumberText(1.f), "1");
}

TEST(StringHelper, NumbersAreReadWholeOrNotAtAll) {
    EXPECT_EQ(tav::ParseNumber("-2.5e3"), -2500.0);
    EXPECT_EQ(tav::ParseNumber("+4"), 4.0);
    for (const char* text : {"", "+", "+-4", "1x", " 1", "1 ", "0x10", "one"}) {
        EXPECT_FALSE(tav::ParseNumber(text)) << text;
    }
}

TEST(StringHelper, TextIsCutMappedAndRecognised) {
    EXPECT_EQ(tav::Split("a,,b,", ','), (std::vector<tav::String>{"a", "", "b", ""}));
    EXPECT_EQ(tav::Split("", ','), std::vector<tav::String>{""});
    EXPECT_EQ(tav::Trimmed("\t a b \r\n"), "a b");
    EXPECT_EQ(tav::Trimmed(" \n"), "");
    EXPECT_EQ(tav::LowerCase("Az\xC3\x84-9"), "az\xC3\x84-9");
    EXPECT_EQ(tav::UpperCase("aZ_1"), "AZ_1");
    EXPECT_TRUE(tav::IsUrl("HTTPS://a"));
    EXPECT_TRUE(tav::IsUrl("ftp:x"));
    EXPECT_FALSE(tav::IsUrl("file:http:"));
}

}  // namespace
