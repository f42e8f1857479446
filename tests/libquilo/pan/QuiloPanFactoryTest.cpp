// SPDX-License-Identifier: MIT
#include "pan/QuiloNullPanning.h"
#include "pan/QuiloPan.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace Quilo {
namespace {

struct Request {
    const char* type;
    const char* subtype;
    unsigned inputs, outputs;
    const char* madeType;
    const char* madeSubtype;
};

// clang-format off
constexpr Request kRequests[] = {
    // type        subtype       in   out   type       subtype
    {"xy",         "direct",      1,   2,  "xy",       "direct"},
    {"xy",         "direct",      1,   3,  "null",     "direct"},
    {"ms",         "direct",      1,   2,  "ms",       "direct"},
    {"ms",         "direct",      1,   1,  "null",     "direct"},
    {"ab",         "direct",      1,   2,  "ab",       "direct"},
    {"ab",         "direct",      1,   4,  "null",     "direct"},
    {"surround",   "direct",      1,   2,  "null",     "direct"},
    {"surround",   "direct",      1,   3,  "surround", "direct"},
    {"surround",   "direct",      1,   4,  "surround", "direct"},
    {"surround",   "direct",      1,   5,  "null",     "direct"},
    {"panr",       "direct",      1,  10,  "null",     "direct"},
    {"angular",    "direct",      0,   0,  "angular",  "direct"},
    {"angular",    "direct",      250, 250, "angular", "direct"},
    {"vbap2d",     "direct",      1,   1,  "null",     "direct"},
    {"vbap2d",     "direct",      1,   2,  "vbap2d",   "direct"},
    {"vbip2d",     "direct",      1,   1,  "null",     "direct"},
    {"vbip2d",     "direct",      1,   2,  "vbip2d",   "direct"},
    {"vbap",       "direct",      1,   2,  "null",     "direct"},
    {"bformat",    "direct",      1,   2,  "null",     "direct"},
    {"b-format",   "direct",      1,   3,  "bformat",  "direct"},
    {"bformat",    "direct",      1,   4,  "bformat",  "direct"},
    {"bformat",    "direct",      1,   5,  "null",     "direct"},
    {"hoa3d",      "direct",      1,   8,  "null",     "direct"},
    {"hoa2d",      "direct",      1,   4,  "null",     "direct"},
    {"spcap",      "direct",      0,   9,  "null",     "direct"},
    {"knn",        "direct",      1,   0,  "null",     "direct"},
    {"binaural",   "diffuse",     1,   2,  "null",     "direct"},
    {"binaural",   "early",       1,   3,  "null",     "direct"},
    // The subtype matters for binaural and diffuse only; an unknown one is direct.
    {"vbap2d",     "early",       1,   4,  "vbap2d",   "early"},
    {"ms",         "snowman",     1,   2,  "ms",       "snowmanmodel"},
    {"vbap2d",     "sh",          1,   4,  "vbap2d",   "direct"},
    // Exact matching: unknown types are the null type, and so is its own word.
    {"Angular",    "direct",      1,   4,  "null",     "direct"},
    {"angular ",   "direct",      1,   4,  "null",     "direct"},
    {"null",       "early",       1,   4,  "null",     "direct"},
    {"",           "",            1,   4,  "null",     "direct"},
};
// clang-format on

class PanFactory : public testing::TestWithParam<Request> {};

TEST_P(PanFactory, MakesWhatFitsAndSilenceOtherwise) {
    const Request& r = GetParam();
    const std::unique_ptr<Pan> pan = Pan::Create(r.inputs, r.outputs, r.type, r.subtype);
    ASSERT_NE(pan, nullptr);
    EXPECT_EQ(pan->GetTypeName(), r.madeType);
    EXPECT_EQ(pan->GetSubTypeName(), r.madeSubtype);
    EXPECT_EQ(pan->NumInputs(), r.inputs);
    EXPECT_EQ(pan->NumOutputs(), r.outputs);
    const bool silent = std::string(r.madeType) == "null";
    EXPECT_EQ(dynamic_cast<NullPanning*>(pan.get()) != nullptr, silent);
    EXPECT_EQ(pan->SupportsSpread(), !silent && std::string(r.madeType) != "ab");
    EXPECT_EQ(pan->IsPlanar(), std::string(r.madeType) == "bformat" && r.outputs == 3);
    std::vector<std::string> lines{"old"};
    pan->Dump(lines);
    const std::vector<std::string> expected{"panning type : " + std::string(r.madeType),
                                            "panning subtype : " + std::string(r.madeSubtype)};
    EXPECT_EQ(lines, expected);
}

INSTANTIATE_TEST_SUITE_P(Requests, PanFactory, testing::ValuesIn(kRequests), [](const auto& test) {
    std::string name = std::to_string(test.index) + "_" + test.param.type + test.param.subtype;
    std::erase_if(name, [](unsigned char c) { return !std::isalnum(c) && c != '_'; });
    return name + "_" + std::to_string(test.param.outputs);
});

TEST(PanFactory, RefusesCodesOutsideTheEnumerations) {
    const auto pan = Pan::Create(1, 4, static_cast<Pan::Type>(99), Pan::SubType::Direct);
    EXPECT_EQ(pan->GetType(), Pan::Type::Null);
    const auto odd = Pan::Create(1, 4, Pan::Type::Angular, static_cast<Pan::SubType>(99));
    EXPECT_EQ(odd->GetTypeName(), "angular");
    EXPECT_EQ(odd->GetSubTypeName(), "null");
}

}  // namespace
}  // namespace Quilo
