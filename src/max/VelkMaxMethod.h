// SPDX-License-Identifier: MIT
// Functions as the host stores them.
#pragma once

#include "ext.h"

namespace VelkMax {

/// A function of any form as the host stores it; it is cast back before it is called.
template <class Function>
method AsMethod(Function* function) noexcept {
    return reinterpret_cast<method>(reinterpret_cast<void (*)()>(function));
}

}  // namespace VelkMax
