// SPDX-License-Identifier: MIT
// The checks themselves ran while this program was built; here: that they were many, and would have
// seen a fault.
#include "MaxAbiCounts.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace Tests {
namespace {

const std::string kSource = QUILO_SOURCE_DIR;
const std::string kHeaders = kSource + "/maxapi";
const std::string kRows = kSource + "/tests/data/max-abi.tsv";

void Replace(std::string& text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    ASSERT_NE(at, std::string::npos) << what;
    text.replace(at, what.size(), by);
}

/// What the command says on standard error, and an empty line when it succeeds.
std::string ErrorsOf(const TemporaryFolder& folder, const std::string& command) {
    const std::filesystem::path errors = folder / "errors";
    const int status = std::system((command + " 2>'" + errors.string() + "'").c_str());
    return status == 0 ? "\n" : ReadText(errors);
}

std::string Generate(const TemporaryFolder& folder,
                     const std::string& rows,
                     const std::string& headers) {
    return ErrorsOf(folder, QUILO_PYTHON " '" + kSource + "/tools/make_abi_checks.py' '" + rows +
                                "' '" + headers + "' '" + (folder / "Checks.cpp").string() + "'");
}

TEST(MaxAbi, IsCheckedRowByRow) {
    constexpr int kAtLeast[] = {41, 58, 73, 255};
    for (int k = 0; k < 4; ++k) {
        const MaxAbiCount& count = kMaxAbiCounts[k];
        EXPECT_GE(count.checked, kAtLeast[k]) << count.kind;
        EXPECT_LE(count.checked, count.rows) << count.kind;
        RecordProperty(count.kind, count.checked);
    }
}

TEST(MaxAbi, DoesNotCompileAgainstOtherRows) {
    const struct {
        const char *what, *by, *fault;
    } cases[] = {
        {"struct\tt_object\t32", "struct\tt_object\t40", "t_object"},
        {"field\tt_atom.a_w\t8\t8", "field\tt_atom.a_w\t4\t8", "t_atom.a_w"},
        {"field\tt_atomarray.ac\t32\t4", "field\tt_atomarray.ac\t32\t8", "t_atomarray.ac"},
        {"const\tA_FLOAT\t2", "const\tA_FLOAT\t3", "A_FLOAT"},
        {"atom_getlong(const t_atom *a)", "atom_getlong(t_atom *a)", "atom_getlong"},
        {"set_zero64(double *dst, long n)", "set_zero64(double *dst, short n)", "set_zero64"},
    };
    const TemporaryFolder folder;
    std::string rows = ReadText(kRows);
    for (const auto& row : cases) Replace(rows, row.what, row.by);
    WriteText(folder / "rows.tsv", rows);
    ASSERT_EQ(Generate(folder, (folder / "rows.tsv").string(), kHeaders), "\n");
    const std::string errors =
        ErrorsOf(folder, QUILO_COMPILER " -std=c++20 -fsyntax-only -I'" + kHeaders + "' -I'" +
                             kSource + "/tests/maxapi' '" + (folder / "Checks.cpp").string() + "'");
    for (const auto& row : cases) {
        EXPECT_NE(errors.find(std::string(": ") + row.fault + "\n"), std::string::npos) << errors;
    }
}

}  // namespace
}  // namespace Tests
