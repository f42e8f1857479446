// SPDX-License-Identifier: MIT
// Dictionaries to JSON text; inside the library only.
#pragma once

#include "ApiDictionaries.h"

#include <string>

namespace HostApi {

/// In the manner of Max's writer: tabs, a blank on both sides of the colon, lists in one line, a
/// decimal point in every float. Numbers read back to the same values; what is no number in JSON
/// (nan, infinity) becomes null.
std::string JsonText(const Dictionary& dictionary);

}  // namespace HostApi
