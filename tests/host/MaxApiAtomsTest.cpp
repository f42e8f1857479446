// SPDX-License-Identifier: MIT
// Symbols, atoms, their text, memory.
#include "MaxApiProbe.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

struct Reading {
    const char* name;
    const char* text;
    int type;
    double number;       // of A_LONG and A_FLOAT
    const char* symbol;  // of A_SYM
    const char* again;   // how the atom prints
};

void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.name; }

class AtomReading : public testing::TestWithParam<Reading> {};

TEST_P(AtomReading, GivesOneAtomThatPrintsBack) {
    const Reading& reading = GetParam();
    const auto atoms = HostApi::ParseAtoms(reading.text);
    ASSERT_EQ(atoms.size(), 1u);
    EXPECT_EQ(atoms[0].a_type, reading.type);
    if (reading.type == A_SYM) {
        EXPECT_STREQ(atom_getsym(&atoms[0])->s_name, reading.symbol);
    } else {
        EXPECT_EQ(atom_getfloat(&atoms[0]), reading.number);
    }
    EXPECT_EQ(HostApi::AtomText(atoms), reading.again);
}

// clang-format off
constexpr Reading kReadings[] = {
    // name              text            type     number              symbol         again
    {"Whole",            "12",           A_LONG,  12,                 "",            "12"},
    {"Negative",         "-3",           A_LONG,  -3,                 "",            "-3"},
    {"SignedPlus",       "+5",           A_LONG,  5,                  "",            "5"},
    {"Largest",          "9223372036854775807", A_LONG, 9223372036854775807.0, "",   "9223372036854775807"},
    {"BeyondLong",       "9223372036854775808", A_FLOAT, 9223372036854775808.0, "",  "9.223372e+18"},
    {"Decimal",          "0.5",          A_FLOAT, 0.5,                "",            "0.5"},
    {"TrailingPoint",    "1.",           A_FLOAT, 1,                  "",            "1"},
    {"LeadingPoint",     "-.25",         A_FLOAT, -0.25,              "",            "-0.25"},
    {"Exponent",         "1e3",          A_FLOAT, 1000,               "",            "1000"},
    {"ShortestSingle",   "12.3",         A_FLOAT, 12.3,               "",            "12.3"},
    {"Hexadecimal",      "0x10",         A_SYM,   0,                  "0x10",        "0x10"},
    {"NoNumber",         "nan",          A_SYM,   0,                  "nan",         "nan"},
    {"Infinity",         "inf",          A_SYM,   0,                  "inf",         "inf"},
    {"LoneSign",         "-",            A_SYM,   0,                  "-",           "-"},
    {"TwoSigns",         "+-5",          A_SYM,   0,                  "+-5",         "+-5"},
    {"Increment",        "azim++",       A_SYM,   0,                  "azim++",      "azim++"},
    {"QuotedNumber",     "\"1\"",        A_SYM,   0,                  "1",           "\"1\""},
    {"QuotedBlank",      "\"two words\"",A_SYM,   0,                  "two words",   "\"two words\""},
    {"QuotedNothing",    "\"\"",         A_SYM,   0,                  "",            "\"\""},
    {"EscapedBlank",     "two\\ words",  A_SYM,   0,                  "two words",   "\"two words\""},
    {"QuoteInside",      "\"a \\\"b\\\"\"", A_SYM, 0,                 "a \"b\"",     "\"a \\\"b\\\"\""},
    {"PlainBackslash",   "C:\\dir\\x",   A_SYM,   0,                  "C:\\dir\\x",  "C:\\dir\\x"},
    {"OpenQuote",        "\"to the end", A_SYM,   0,                  "to the end",  "\"to the end\""},
    {"QuoteWithin",      "a\"b",         A_SYM,   0,                  "a\"b",        "a\"b"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Texts, AtomReading, testing::ValuesIn(kReadings), [](const auto& row) {
    return row.param.name;
});

TEST(AtomText, ReadsBackToTheSameSingle) {
    std::mt19937 random(71);
    for (int i = 0; i < 20000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random());
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        t_atom atom{};
        atom_setfloat(&atom, static_cast<double>(value));
        const auto back = HostApi::ParseAtoms(HostApi::AtomText(atom));
        ASSERT_EQ(back.size(), 1u);
        ASSERT_EQ(static_cast<float>(atom_getfloat(&back[0])), value) << HostApi::AtomText(atom);
    }
}

TEST(Symbols, AreUniqueAndSortByBytes) {
    EXPECT_EQ(gensym("quad"), gensym(std::string("quad").c_str()));
    EXPECT_NE(symbol_unique(), symbol_unique());
    EXPECT_STREQ(gensym("")->s_name, "");
    EXPECT_EQ(gensym("quad")->s_thing, nullptr);
    t_symbol* list[] = {gensym("b"), gensym("\xC3\xA4"), gensym("a"), gensym("B")};
    symbolarray_sort(4, list);
    EXPECT_EQ(std::string(list[0]->s_name) + list[1]->s_name + list[2]->s_name + list[3]->s_name,
              "Bab\xC3\xA4");
}

TEST(Atoms, CoerceNumbersAndNothingElse) {
    t_atom atom{};
    atom_setfloat(&atom, -2.9);
    EXPECT_EQ(atom_getlong(&atom), -2);
    EXPECT_EQ(atom_getsym(&atom), gensym(""));
    atom_setsym(&atom, gensym("7.5"));
    EXPECT_EQ(atom_getfloat(&atom), 7.5);
    EXPECT_EQ(atom_getlong(&atom), 7);
    atom_setsym(&atom, gensym("seven"));
    EXPECT_EQ(atom_getlong(&atom), 0);
    atom_setfloat(&atom, 1e300);
    EXPECT_EQ(atom_getlong(&atom), std::numeric_limits<t_atom_long>::max());
    float unchanged = 5;
    atom_setsym(&atom, gensym("8"));
    EXPECT_NE(atom_arg_getfloat(&unchanged, 0, 1, &atom), 0);
    EXPECT_NE(atom_arg_getfloat(&unchanged, 1, 1, &atom), 0);
    EXPECT_EQ(unchanged, 5);
}

TEST(Atoms, AreFormattedLetterByLetter) {
    t_atom_long longs[] = {1, 2};
    float floats[] = {0.5f, 1.5f};
    max_long count = 0;
    t_atom* atoms = nullptr;
    ASSERT_EQ(atom_setformat(&count, &atoms, "lfsLFp", t_atom_long{9}, 2.5, gensym("a b"), 2, longs,
                             2, floats, "x 3"),
              MAX_ERR_NONE);
    max_long size = 0;
    char* text = nullptr;
    atom_gettext(count, atoms, &size, &text, OBEX_UTIL_ATOM_GETTEXT_DEFAULT);
    EXPECT_STREQ(text, "9 2.5 \"a b\" 1 2 0.5 1.5 x 3");
    char small[6] = "";
    char* given = small;
    size = sizeof small;
    atom_gettext(count, atoms, &size, &given, OBEX_UTIL_ATOM_GETTEXT_COMMA_DELIM);
    EXPECT_STREQ(small, "9, 2.");
    sysmem_freeptr(text);
    sysmem_freeptr(atoms);
}

TEST(Memory, KnowsItsSizeAndKeepsItsContents) {
    t_ptr block = sysmem_newptrclear(10);
    EXPECT_EQ(sysmem_ptrsize(block), 10u);
    EXPECT_EQ(block[9], 0);
    std::memcpy(block, "quad", 5);
    block = sysmem_resizeptrclear(block, 1000);
    EXPECT_EQ(sysmem_ptrsize(block), 1000u);
    EXPECT_STREQ(block, "quad");
    EXPECT_EQ(block[999], 0);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    char copy[5];
    sysmem_copyptr(block, copy, 5);
    EXPECT_STREQ(copy, "quad");
    sysmem_freeptr(block);
    sysmem_freeptr(nullptr);
    EXPECT_EQ(sysmem_newptr(~t_ptr_size{0}), nullptr);
    const t_handle handle = sysmem_newhandleclear(3);
    EXPECT_EQ(sysmem_resizehandle(handle, 30), MAX_ERR_NONE);
    EXPECT_EQ(sysmem_handlesize(handle), 30u);
    sysmem_freehandle(handle);
}

TEST(Memory, OfAnAnswerIsTheCallersOrNew) {
    max_long count = 0;
    t_atom* atoms = nullptr;
    char allocated = 0;
    ASSERT_EQ(atom_alloc_array(3, &count, &atoms, &allocated), MAX_ERR_NONE);
    EXPECT_TRUE(allocated && count == 3 && sysmem_ptrsize(atoms) == 3 * sizeof(t_atom));
    t_atom* const same = atoms;
    EXPECT_EQ(atom_alloc_array(2, &count, &atoms, &allocated), MAX_ERR_NONE);
    EXPECT_TRUE(!allocated && count == 2 && atoms == same);
    EXPECT_NE(atom_alloc_array(5, &count, &atoms, &allocated), MAX_ERR_NONE);
    EXPECT_TRUE(count == 2 && atoms == same);
    sysmem_freeptr(atoms);
}

}  // namespace
