// SPDX-License-Identifier: MIT
// Names of parametrised tests: those of their rows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Tests {

inline constexpr auto kByName = [](const auto& test) {
    if constexpr (std::is_class_v<std::decay_t<decltype(test.param)>>) {
        return std::string(test.param.name);
    } else {
        return std::string(test.param);
    }
};

}  // namespace Tests
