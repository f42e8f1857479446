// SPDX-License-Identifier: MIT
// What the classes of the suite are, in the words of their reference pages.
#pragma once

#include <string_view>

namespace Quilo::External {

struct ClassTexts {
    std::string_view name;
    const char* digest;
    const char* description;  // well-formed XML
};

/// @param name  of a class of the suite; another name is a fault of the program
const ClassTexts& TextsOf(std::string_view name) noexcept;

}  // namespace Quilo::External
