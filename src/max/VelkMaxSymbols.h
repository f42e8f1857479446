// SPDX-License-Identifier: MIT
// Symbols that objects of every class use, looked up once.
#pragma once

#include "ext.h"

namespace VelkMax {

struct CommonSymbols {
    t_symbol* dictionary = gensym("dictionary");
    t_symbol* dumpout = gensym("dumpout");
    t_symbol* getName = gensym("getname");
    t_symbol* modified = gensym("modified");
    t_symbol* preset = gensym("_preset");
    t_symbol* recallPreset = gensym("recallpreset");
};

/// The first call looks the symbols up; it must come before any audio.
inline const CommonSymbols& Symbols() {
    static const CommonSymbols symbols;
    return symbols;
}

}  // namespace VelkMax
