// SPDX-License-Identifier: MIT
// Conversion of functions to the type in which the host stores them.
#pragma once

#include "ext.h"

namespace VelkMax {

/// Casts a function of any type to the type in which the host stores it, and which the host casts
/// back before it calls the function.
template <class Function>
method AsMethod(Function* function) noexcept {
    return reinterpret_cast<method>(reinterpret_cast<void (*)()>(function));
}

}  // namespace VelkMax
