// SPDX-License-Identifier: MIT
// Reads dictionaries from JSON text; inside the library only.
#pragma once

#include "ApiDictionaries.h"

#include <string>
#include <string_view>

namespace HostApi {

/// Whole numbers become longs, others floats, true and false 1 and 0, text symbols, arrays atom
/// arrays, objects dictionaries; null makes no entry.
/// @param fault  the error and its line, when the result is null
t_dictionary* ReadJson(std::string_view text, std::string& fault);

}  // namespace HostApi
