// SPDX-License-Identifier: MIT
// Messages from outside: type lists, attributes, get messages, refusals.
#include "MaxApiProbe.h"

namespace {

struct Exchange {
    const char* name;
    const char* message;
    std::vector<std::string> lines;
};

void PrintTo(const Exchange& exchange, std::ostream* out) { *out << exchange.message; }

class Dispatch : public MaxApiTest, public testing::WithParamInterface<Exchange> {};

TEST_P(Dispatch, CallsOrRefuses) { EXPECT_EQ(Send(GetParam().message), GetParam().lines); }

// clang-format off
const Exchange kExchanges[] = {
    {"NoArguments",      "nothing",                {"nothing"}},
    {"SurplusIsPosted",  "nothing 1",              {"error: extra arguments for message \"nothing\"", "nothing"}},
    {"FloatsTruncate",   "longs 1.9 -2.9",         {"longs 1 -2"}},
    {"Missing",          "longs 1",                {"error: bad arguments for message \"longs\""}},
    {"SymbolForNumber",  "longs 1 x",              {"error: bad arguments for message \"longs\""}},
    {"QuotedIsNoNumber", "longs 1 \"2\"",          {"error: bad arguments for message \"longs\""}},
    {"FloatsByTheirType","mixed 1 left -2.5 7.9",  {"mixed 1 left -2.5 7"}},
    {"NumberForSymbol",  "mixed 1 2 3 4",          {"error: bad arguments for message \"mixed\""}},
    {"Defaults",         "optional 0.5",           {"mixed 0.5 \"\" 0 0"}},
    {"SomeDefaults",     "optional 0.5 3",         {"mixed 0.5 \"\" 0 3"}},
    {"WrongOptional",    "optional 0.5 x",         {"error: bad arguments for message \"optional\""}},
    {"RawAtoms",         "raw 1 0.5 x \"y z\"",    {"raw raw (1 0.5 x \"y z\") inlet 0"}},
    {"UntypedIsHidden",  "hidden",                 {"error: doesn't understand \"hidden\""}},
    {"Unknown",          "nobody 1 2",             {"error: doesn't understand \"nobody\""}},
    {"IntIsNoFloat",     "int x",                  {"error: bad arguments for message \"int\""}},
    {"ListIsSpread",     "list 4 0.5 6 7",         {"int 6 inlet 2", "float 0.5 inlet 1", "int 4 inlet 0"}},
    {"AttributeSet",     "mode 2",                 {"set mode (2)"}},
    {"ClippedAbove",     "mode 300",               {"set mode (3)"}},
    {"ClippedBelow",     "mode -2.5",              {"set mode (-2)"}},
    {"SymbolsNotClipped","mode high",              {"set mode (high)"}},
    {"ReadOnly",         "frozen 1",               {"error: doesn't understand \"frozen\""}},
    {"AnswerOfDefault",  "getgain",                {"outlet 2 dumpout: gain 0"}},
    {"AnswerOfGetter",   "getmode",                {"outlet 2 dumpout: mode 0"}},
    {"AnswerOfReadOnly", "getfrozen",              {"outlet 2 dumpout: frozen 0"}},
    {"AnswerOfArray",    "getpoints",              {"outlet 2 dumpout: points "}},
    {"NobodysAnswer",    "getnobody",              {"error: doesn't understand \"getnobody\""}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Messages, Dispatch, testing::ValuesIn(kExchanges), [](const auto& row) {
    return row.param.name;
});

TEST_F(MaxApiTest, AMessageForADeadObjectIsRefused) {
    object_free(object_);
    EXPECT_EQ(Take(), Lines{"freed"});
    EXPECT_EQ(HostApi::DeliverMessage(object_, 0, gensym("nothing"), {}), MAX_ERR_INVALID_PTR);
    EXPECT_NE(object_free(object_), MAX_ERR_NONE);
    EXPECT_EQ(Take(), (Lines{"bug: an object of class \"probe\" is used after it was freed",
                             "bug: object_free: the object is not alive"}));
}

}  // namespace
