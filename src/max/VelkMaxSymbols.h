// SPDX-License-Identifier: MIT
// Tables of symbols, each looked up once, and the table that objects of every class use.
#pragma once

#include "ext.h"

namespace VelkMax {

/// The one table of its type. The first call looks its symbols up; it must come before any audio.
template <class Table>
const Table& SymbolsOf() {
    static const Table table;
    return table;
}

struct CommonSymbols {
    t_symbol* dictionary = gensym("dictionary");
    t_symbol* dumpout = gensym("dumpout");
    t_symbol* getName = gensym("getname");
    t_symbol* modified = gensym("modified");
    t_symbol* preset = gensym("_preset");
    t_symbol* recallPreset = gensym("recallpreset");
};

inline const CommonSymbols& Symbols() { return SymbolsOf<CommonSymbols>(); }

}  // namespace VelkMax
