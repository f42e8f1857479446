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
    unsigned inputs, outputs;
    const char* madeType;
    const char* subtype = "direct";
    const char* madeSubtype = "direct";
};

// clang-format off
constexpr Request kRequests[] = {  // type, inputs, outputs, type made; subtype, subtype made
    {"xy", 1, 2, "xy"}, {"xy", 1, 3, "null"}, {"ms", 1, 2, "ms"}, {"ms", 1, 1, "null"},
    {"ab", 1, 2, "ab"}, {"ab", 1, 4, "null"}, {"surround", 1, 2, "null"},
    {"surround", 1, 3, "surround"}, {"surround", 1, 4, "surround"}, {"surround", 1, 5, "null"},
    {"panr", 1, 10, "null"}, {"angular", 0, 0, "angular"}, {"angular", 250, 250, "angular"},
    {"vbap2d", 1, 1, "null"}, {"vbap2d", 1, 2, "vbap2d"}, {"vbip2d", 1, 1, "null"},
    {"vbip2d", 1, 2, "vbip2d"}, {"vbap", 1, 2, "null"}, {"bformat", 1, 2, "null"},
    {"b-format", 1, 3, "bformat"}, {"bformat", 1, 4, "bformat"}, {"bformat", 1, 5, "null"},
    {"hoa3d", 1, 8, "null"}, {"hoa2d", 1, 4, "null"}, {"spcap", 0, 9, "null"},
    {"knn", 1, 0, "null"}, {"binaural", 1, 2, "null", "diffuse"},
    {"binaural", 1, 3, "null", "early"},
    // The subtype matters for binaural and diffuse only; an unknown one is direct.
    {"vbap2d", 1, 4, "vbap2d", "early", "early"}, {"ms", 1, 2, "ms", "snowman", "snowmanmodel"},
    {"vbap2d", 1, 4, "vbap2d", "sh"},
    // Exact matching: unknown types are the null type, and so is its own word.
    {"Angular", 1, 4, "null"}, {"angular ", 1, 4, "null"}, {"null", 1, 4, "null", "early"},
    {"", 1, 4, "null", ""},
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
