// SPDX-License-Identifier: MIT
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <utility>

namespace tav {
namespace {

TEST(Guarded, ConvertsWhateverEscapes) {
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] { throw std::bad_alloc(); }, "out of memory occured in loading"},
        {[] { throw std::runtime_error("bad disk"); }, "exception bad disk occured in loading"},
        {[] { throw 5; }, "unknown exception occured in loading"},
    };
    for (const auto& [operation, message] : cases) {
        const int line = __LINE__ + 2;
        try {
            Guarded("loading", operation);
            ADD_FAILURE() << "nothing thrown, expected: " << message;
        } catch (const UnknownException& fault) {
            EXPECT_STREQ(fault.what(), message);
            EXPECT_EQ(fault.Line(), line);
        }
    }
}

TEST(Guarded, PassesResultsAndOwnExceptions) {
    int value = 1;
    int& same = Guarded("reading", [&]() -> int& { return value; });
    EXPECT_EQ(&same, &value);
    try {
        Guarded("reading", [] { throw Exception("own", SourceSite{"libvelkdsp/src/a", 7}); });
        ADD_FAILURE() << "nothing thrown";
    } catch (const Exception& fault) {
        EXPECT_EQ(fault.Message(), "own");
        EXPECT_EQ(fault.File(), "libvelkdsp/src/a");
        EXPECT_EQ(fault.Line(), 7);
        EXPECT_EQ(dynamic_cast<const UnknownException*>(&fault), nullptr);
    }
}

TEST(ExceptionDeathTest, PrintsItsPlaceWhereKnownAndEndsTheProcessOnlyWhenAsked) {
    const Exception placed("no room", SourceSite{"libvelkdsp/src/text/VelkDspString", 12});
    const Exception unplaced("no room", Exception::NoSite());
    EXPECT_FALSE(unplaced.HasLocation());
    testing::internal::CaptureStderr();
    placed.Print();
    unplaced.Print();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception occured in : libvelkdsp/src/text/VelkDspString at line 12 : \n"
              "  no room\n\n"
              "Exception occured : no room\n\n");
    EXPECT_EXIT(unplaced.Print(true), testing::ExitedWithCode(1), "Exception occured : no room");
}

TEST(Exception, NamesLibraryPathsWithoutFoldersAndExtension) {
    const char* const cases[][2] = {
        {"/any/where/libvelkdsp/src/text/VelkDspString.cpp", "libvelkdsp/src/text/VelkDspString"},
        {"C:\\src\\x\\libquilo\\src\\pan\\QuiloPan.h", "libquilo/src/pan/QuiloPan"},
        {"libvelkdsp/src/math/A.b.cpp", "libvelkdsp/src/math/A.b"},
        {"/else/where/thing.cpp", "thing"},
        {"/else.where/thing", "thing"},
        {"", ""},
    };
    for (const auto& [path, expected] : cases) EXPECT_EQ(LibraryPath(path), expected);
}

}  // namespace
}  // namespace tav
