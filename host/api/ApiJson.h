// SPDX-License-Identifier: MIT
// JSON text to dictionaries; inside the library only.
#pragma once

#include "ApiDictionaries.h"

#include <string>
#include <string_view>

namespace HostApi {

/// Whole numbers become longs, others floats, true and false 1 and 0, text symbols, arrays atom
/// arrays, objects dictionaries; null makes no entry.
/// @param fault  what is wrong and in which line, when the result is null
t_dictionary* ReadJson(std::string_view text, std::string& fault);

}  // namespace HostApi
