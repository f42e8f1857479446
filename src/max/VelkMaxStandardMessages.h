// SPDX-License-Identifier: MIT
// The messages that every object of the suite answers.
#pragma once

#include "max/VelkMaxHandlers.h"

namespace VelkMax {

/// Posting, dumping, storing and restoring attributes, and the reference page. The object needs an
/// outlet stored under "dumpout" and the class what AddClassDocumentation gives it.
std::span<const MessageRow> StandardMessages();

}  // namespace VelkMax
