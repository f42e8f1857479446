// SPDX-License-Identifier: MIT
// The library's text type: UTF-8 bytes, owning.
#pragma once

#include <string>

namespace tav {

using String = std::string;

}  // namespace tav
