// SPDX-License-Identifier: MIT
// How many of the documented rows of the Max API's binary interface the compiler has checked.
#pragma once

namespace Tests {

struct MaxAbiCount {
    const char* kind;  // of row: struct, field, const, func
    int checked;       // about something that our headers declare
    int rows;
};

/// Written with the checks, by tools/make_abi_checks.py.
extern const MaxAbiCount kMaxAbiCounts[4];

}  // namespace Tests
