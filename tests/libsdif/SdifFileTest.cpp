// SPDX-License-Identifier: MIT
// SDIF files put together here byte by byte, and what the reader makes of the writer's.
#include "SdifReader.h"
#include "SdifWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Sdif::ElementType;
using std::string_literals::operator""s;

/// Everything that a reader can be asked for.
struct Content {
    Sdif::NameValues pairs;
    std::vector<Sdif::FrameHeader> frames;
    std::vector<Sdif::Matrix> matrices;
};

Content ReadAll(const std::string& bytes) {
    std::istringstream stream(bytes);
    Sdif::Reader reader(stream);
    Content content{reader.ReadNameValues(), {}, {}};
    while (const auto frame = reader.NextFrame()) {
        content.frames.push_back(*frame);
        while (const auto m = reader.NextMatrix()) {
            content.matrices.push_back(
                {m->signature, m->type, m->rows, m->columns, reader.ReadMatrix()});
        }
    }
    return content;
}

std::string Written(const Sdif::NameValues& pairs, const std::vector<Sdif::Matrix>& matrices) {
    std::ostringstream stream;
    Sdif::Writer writer(stream);
    writer.WriteNameValues(pairs);
    writer.WriteFrame("HRTF", 0.5, 7, matrices);
    return stream.str();
}

const std::string kHeader = "SDIF\0\0\0\x08\0\0\0\x03\0\0\0\x01"s;
const std::string kPairs = "1NVT\0\0\0\x08{\na\tb;\n}"s;
const std::string kMatrix = "XITD\0\0\x01\x02\0\0\0\x01\0\0\0\x03\xff\xfe\x01\x00\x00\x07\0\0"s;
const std::string kFrame = "HRTF\0\0\0\x28\x3f\xe0\0\0\0\0\0\0\0\0\0\x07\0\0\0\x01"s + kMatrix;

TEST(SdifFile, IsWrittenAndReadAsTheFormatSays) {
    const Sdif::Matrix matrix{"XITD", ElementType::Int16, 1, 3, {-2, 256, 7}};
    EXPECT_EQ(Written({{"a", "b"}}, {matrix}), kHeader + kPairs + kFrame);
    const Content content = ReadAll(kHeader + kPairs + kFrame);
    EXPECT_EQ(content.pairs, (Sdif::NameValues{{"a", "b"}}));
    ASSERT_EQ(content.frames.size(), 1u);
    EXPECT_EQ(content.frames[0].signature, "HRTF");
    EXPECT_EQ(content.frames[0].time, 0.5);
    EXPECT_EQ(content.frames[0].stream, 7);
    ASSERT_EQ(content.matrices.size(), 1u);
    EXPECT_EQ(content.matrices[0].values, matrix.values);
}

// Extremes, what lies beyond them, and counts that need every amount of padding.
TEST(SdifFile, EveryElementTypeComesBack) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Range {
        ElementType type;
        double lowest, highest;
    };
    using enum ElementType;
    // clang-format off
    const Range ranges[] = {
        {Int8,  -128, 127},             {Int16,  -32768, 32767}, {Int32,   -0x1p31, 0x7fffffff},
        {Int64, -0x1p63, 0x1p63},       {UInt8,  0, 255},        {UInt16,  0, 65535},
        {UInt32, 0, 0xffffffffu},       {UInt64, 0, 0x1p64},     {Text,    0, 255},
        {Float32, -inf, inf},           {Float64, -inf, inf},
    };
    // clang-format on
    std::vector<Sdif::Matrix> matrices;
    for (const Range& range : ranges) {
        for (std::uint32_t n = 1; n <= 9; ++n) {
            Sdif::Matrix matrix{"TEST", range.type, n, 1, std::vector<double>(n, 3)};
            matrix.values.front() = -inf;
            if (n > 1) matrix.values.back() = inf;
            matrices.push_back(matrix);
        }
    }
    const Content content = ReadAll(Written({}, matrices));
    ASSERT_EQ(content.matrices.size(), matrices.size());
    for (std::size_t k = 0; k < matrices.size(); ++k) {
        const Range& range = ranges[k / 9];
        std::vector<double> expected = matrices[k].values;
        expected.front() = range.lowest;
        if (expected.size() > 1) expected.back() = range.highest;
        EXPECT_EQ(content.matrices[k].values, expected) << k;
    }
}

struct Case {
    const char* name;
    std::string bytes;
    std::size_t pairs, frames, matrices;
};

// clang-format off
TEST(SdifFile, OddButSoundFilesAreRead) {
    const std::string unsized = "1NVT\0\0\0\x05{a b}"s + "\0\0\0"s;
    const Case cases[] = {
        {"NothingBehindTheHeader", kHeader,                                                        0, 0, 0},
        {"LongerHeader",           "SDIF\0\0\0\x10\0\0\0\x03\0\0\0\x01........"s + kFrame,         0, 1, 1},
        {"PaddingNotCounted",      kHeader + unsized + kFrame,                                     1, 1, 1},
        {"OtherChunks",            kHeader + "1TYP\0\0\0\x08{      }1IDS\0\0\0\0"s + kPairs + kFrame, 1, 1, 1},
        {"ManyTables",             kHeader + kPairs + kPairs + kFrame,                             2, 1, 1},
        {"ValuesWithBlanksOrNone", kHeader + "1NVT\0\0\0\x10{a  b c ;d;;e\n}\0"s + kFrame,         3, 1, 1},
        {"RoomBehindTheMatrices",  kHeader + "HRTF\0\0\0\x18................"s.replace(8, 16, std::string(16, '\0')) + "????????", 0, 1, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Content content = ReadAll(c.bytes);
        EXPECT_EQ(content.pairs.size(), c.pairs);
        EXPECT_EQ(content.frames.size(), c.frames);
        EXPECT_EQ(content.matrices.size(), c.matrices);
    }
}
// clang-format on

// Sizes that lie must not reach an allocation; 0xffffffff x 0xffffffff elements would not end.
TEST(SdifFile, DamageIsRefused) {
    const std::string whole = kHeader + kPairs + kFrame;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::size_t frame = kHeader.size() + kPairs.size();
        if (size == kHeader.size() || size == frame) continue;  // a whole file
        EXPECT_THROW(ReadAll(whole.substr(0, size)), Sdif::Error) << size << " bytes";
    }
    for (const std::size_t at :
         {4u, 20u, 36u, 64u, 68u}) {  // of header, chunk, frame; rows, columns
        std::string lie = whole;
        lie.replace(at, 4, "\xff\xff\xff\xff");
        EXPECT_THROW(ReadAll(lie), Sdif::Error) << at;
    }
    std::string strange = whole;
    strange.replace(60, 4, "\0\0\x04\x00"s);  // a type of no size
    strange.replace(64, 8, "\xff\xff\xff\xff\xff\xff\xff\xff");
    EXPECT_THROW(ReadAll(strange), Sdif::Error);
}

TEST(SdifFile, WhatTheFormatCannotHoldIsNotWritten) {
    EXPECT_THROW(Written({{"two words", "x"}}, {}), Sdif::Error);
    EXPECT_THROW(Written({{"a", "x;y"}}, {}), Sdif::Error);
    EXPECT_THROW(Written({}, {{"XCARS", ElementType::Int8, 1, 1, {0}}}), Sdif::Error);
    EXPECT_THROW(Written({}, {{"XCAR", ElementType::Int8, 1, 2, {0}}}), Sdif::Error);
}

}  // namespace
