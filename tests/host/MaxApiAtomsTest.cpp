// SPDX-License-Identifier: MIT
// Words and atoms, as messages and scripts read them.
#include "HostAtoms.h"
#include "MaxApiProbe.h"

#include <cmath>
#include <cstring>
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
    // A script reads what it does not quote in the same way.
    if (std::string_view(reading.text).find_first_of("\"\\") != std::string_view::npos) return;
    const Quilo::Host::Atom word = Quilo::Host::AtomOf({reading.text});
    if (const auto* whole = std::get_if<std::int64_t>(&word)) {
        EXPECT_EQ(reading.type, A_LONG);
        EXPECT_EQ(*whole, atom_getlong(atoms.data()));
    } else if (const auto* number = std::get_if<double>(&word)) {
        EXPECT_EQ(reading.type, A_FLOAT);
        EXPECT_EQ(*number, reading.number);
    } else {
        EXPECT_EQ(word, Quilo::Host::Atom(reading.symbol));
    }
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
    {"LongestNegative",  "-9223372036854775808", A_LONG, -9223372036854775808.0, "", "-9223372036854775808"},
    {"SignedExponent",   "+2.5E-1",      A_FLOAT, 0.25,               "",            "0.25"},
    {"LonePoint",        ".",            A_SYM,   0,                  ".",           "."},
    {"LoneExponent",     "e5",           A_SYM,   0,                  "e5",          "e5"},
    {"OpenExponent",     "1e+",          A_SYM,   0,                  "1e+",         "1e+"},
    {"TwoPoints",        "1.2.3",        A_SYM,   0,                  "1.2.3",       "1.2.3"},
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

}  // namespace
