// SPDX-License-Identifier: MIT
// Writes dictionaries as JSON text; inside the library only.
#pragma once

#include "ApiDictionaries.h"

#include <string>

namespace HostApi {

/// The text in Max's format: tabs, a blank on both sides of the colon, lists in one line, a decimal
/// point in every float. Numbers read back to the same values; NaN and infinity, which JSON does
/// not have, become null.
std::string JsonText(const Dictionary& dictionary);

}  // namespace HostApi
