// SPDX-License-Identifier: MIT
// Dictionaries as JSON text; inside the library only.
#pragma once

#include "ApiDictionaries.h"

#include <string>
#include <string_view>

namespace HostApi {

/// In the manner of Max's writer: tabs, a blank on both sides of the colon, lists in one line, a
/// decimal point in every float. Numbers read back to the same values; what is no number in JSON
/// (nan, infinity) becomes null.
std::string JsonText(const Dictionary& dictionary);

/// Whole numbers become longs, others floats, true and false 1 and 0, text symbols, arrays atom
/// arrays, objects dictionaries; null makes no entry.
/// @param fault  what is wrong and in which line, when the result is null
t_dictionary* ReadJson(std::string_view text, std::string& fault);

}  // namespace HostApi
