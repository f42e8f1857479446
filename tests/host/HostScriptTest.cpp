// SPDX-License-Identifier: MIT
#include "HostScript.h"

#include "HostFault.h"
#include "HostOptions.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace {

using namespace Quilo::Host;

std::int64_t Long(std::int64_t value) { return value; }

TEST(ScriptAtoms, AreSymbolsWhereTheyAreQuotedAndKeepTheirBackslashes) {
    EXPECT_EQ(ReadAtoms("\tload \"two  words\"  \"1\" \"\" 1 C:\\\\a\\,b -1e999 1e-999"),
              (std::vector<Atom>{"load", "two  words", "1", "", Long(1), "C:\\\\a\\,b",
                                 -std::numeric_limits<double>::infinity(), 0.0}));
}

TEST(Script, RunsUntimedStatementsInFileOrderThenByTimeThenByFileOrder) {
    const Script script = ParseScript(
        "# made for this test\n\nobject quilo.pan~ 2\nat 0.5 a\nb\nat 0.25 c\nat .5 d\ne\nat 0 f\n",
        "s.txt");
    std::string order;
    for (const Statement& statement : script.statements) order += AtomSpelling(statement.atoms[0]);
    EXPECT_EQ(order, "befcad");
    EXPECT_EQ(script.objectLine, 3);
    EXPECT_EQ(script.box, (std::vector<Atom>{"quilo.pan~", Long(2)}));
}

TEST(Script, ReadsTheSameWithAnyLineEndsTabsAndMark) {
    const Script plain = ParseScript("object a~ 1\nat 1 b 2.5\n\nhost rate 8000\n", "s");
    const Script other =
        ParseScript("\xEF\xBB\xBFobject\ta~ 1 \r\n at\t1 b  2.5\r\n \t\r\nhost rate 8000", "s");
    ASSERT_EQ(other.statements.size(), plain.statements.size());
    EXPECT_EQ(other.box, plain.box);
    for (std::size_t k = 0; k < plain.statements.size(); ++k) {
        EXPECT_EQ(other.statements[k].line, plain.statements[k].line);
        EXPECT_EQ(other.statements[k].seconds, plain.statements[k].seconds);
        EXPECT_EQ(other.statements[k].atoms, plain.statements[k].atoms);
    }
}

TEST(Script, TakesAQuotedKeywordAsAMessage) {
    const Script script = ParseScript("object a~\n\"host\" sync\n\"at\" 1\n", "s");
    EXPECT_EQ(script.statements[0].directive, nullptr);
    EXPECT_EQ(script.statements[0].atoms.size(), 2u);
    EXPECT_FALSE(script.statements[1].timed);
}

struct Slip {
    std::string text;
    int line;
    const char* fault;
};

// clang-format off
const Slip kSlips[] = {
    {"", 1, "no object"}, {"# nothing\n\n", 2, "no object"},
    {"source 1 az 1\n", 1, "first statement"}, {"host sync\nobject a~\n", 1, "first statement"},
    {"host fail object_alloc\nobject a~\n", 1, "FUNCTION N"},
    {"\"object\" a~\n", 1, "first statement"}, {"object\n", 1, "box text"},
    {"object 12\n", 1, "name of a class"}, {"object a~\nobject a~\n", 2, "made already"},
    {"object a~\n\nat 1 object b~\n", 3, "made already"},
    {"object a~\nat\n", 2, "time is missing"}, {"object a~\nat 1\n", 2, "nothing stands"},
    {"object a~\nat soon a\n", 2, "'soon' is no time"}, {"object a~\nat -0.1 a\n", 2, "no time"},
    {"object a~\nat 1e999 a\n", 2, "no time"}, {"object a~\nat \"1\" a\n", 2, "no time"},
    {"object a~\nat 1 at 2 a\n", 2, "one time only"},
    {"object a~\nsay \"no end\n", 2, "quotation mark"},
    {"object a~\nsay a\"b\"\n", 2, "quotation mark"},
    {"object a~\nsay \"a\"b\n", 2, "quotation mark"},
    {"object a~\nsay gr\xfc\xdf\n", 2, "byte 7 of the line is no UTF-8"},
    {std::string("object a~\nsay a\0b\n", 17), 2, ""}, {"\xff\xfeo", 1, "no UTF-8"},
    {"object a~\nhost\n", 2, "directive is missing"},
    {"object a~\nhost nonsense\n", 2, "unknown directive 'host nonsense'"},
    {"object a~\nhost coverag\n", 2, "did you mean coverage?"},
    {"object a~\nhost layout 5.1.5\n", 2, "did you mean 5.1.2?"},
    {"object a~\nhost layout 5.3\n", 2, "NAME, one of"},
    {"object a~\nhost osc\n", 2, "expects FILE"},
    {"object a~\nhost from elsewhere a\n", 2, "main|scheduler|audio"},
    {"object a~\nhost preset store x\n", 2, "store|recall|print SLOT"},
    {"object a~\nhost pattr cut\n", 2, "cut N"},
    {"object a~\nhost dictionary d read\n", 2, "read FILE"},
    {"object a~\nhost fail gensym 1\n", 2, "that can fail"},
    {"object a~\nhost free\nhost from main a\n", 3, "has been freed"},
    {"object a~\nhost sync 1\n", 2, "expects nothing"},
    {"object a~\nhost connect 1\n", 2, "INLET 0|1"},
    {"object a~\nhost connect 0 1\n", 2, "INLET 0|1"},
    {"object a~\nhost connect 1 2\n", 2, "INLET 0|1"},
    {"object a~\nhost rate 0\n", 2, "expects HZ"},
    {"object a~\nhost rate fast\n", 2, "expects HZ"},
    {"object a~\nat 1 host vector 48\n", 2, "expects N"},
    {"object a~\nhost vector 8192\n", 2, "expects N"},
    {"object a~\nhost free\nclear\n", 3, "freed"},
    {"object a~\nat 2 clear\nat 1 host free\n", 2, "freed"},
};
// clang-format on
TEST(Script, SlipsAreNamedWithFileAndLine) {
    for (const Slip& slip : kSlips) {
        try {
            ParseScript(slip.text, "s.txt");
            ADD_FAILURE() << "accepted: " << slip.text;
        } catch (const Fault& fault) {
            const std::string said = fault.what();
            EXPECT_TRUE(said.starts_with("s.txt:" + std::to_string(slip.line) + ": ")) << said;
            EXPECT_NE(said.find(slip.fault), std::string::npos) << said;
            EXPECT_EQ(fault.Status(), ExitStatus::WrongInput);
        }
    }
}

TEST(Directives, StandInTheHelpAndInTheDocumentationAlike) {
    const auto keywords = [](const std::string& text, const std::string& before) {
        std::set<std::string> found;
        for (std::size_t at = 0; (at = text.find(before, at)) != text.npos;) {
            at += before.size();
            found.insert(
                text.substr(at, text.find_first_not_of("abcdefghijklmnopqrstuvwxyz", at) - at));
        }
        return found;
    };
    auto documented = keywords(Tests::ReadText(QUILO_SOURCE_DIR "/docs/host.md"), "`host ");
    documented.erase("");  // `host DIRECTIVE ...`
    const auto helped = keywords(HelpText(), "\n  host ");
    EXPECT_EQ(documented, helped);
    EXPECT_GT(helped.size(), 20u);
    for (const std::string& keyword : helped) EXPECT_NE(FindDirective(keyword), nullptr) << keyword;
}

TEST(Script, AllowsHostStatementsOnceTheObjectIsFree) {
    EXPECT_EQ(ParseScript("object a~\nclear\nhost free\nhost sync\n", "s").statements.size(), 3u);
    EXPECT_EQ(ParseScript("object a~\nat 1 host free\nclear\n", "s").statements.size(), 2u);
}

}  // namespace
