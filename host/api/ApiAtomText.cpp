// SPDX-License-Identifier: MIT
// Text to atoms and back.
#include "ApiAtomText.h"

#include "reading/HostWords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <system_error>

namespace HostApi {
namespace {

t_atom SymbolAtom(const std::string& text) {
    t_atom atom{};
    atom_setsym(&atom, gensym(text.c_str()));
    return atom;
}

template <class Number>
std::string Shortest(Number value) {
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::string Quoted(std::string_view text, bool escape) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (escape && (c == '"' || c == '\\')) quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

std::string SymbolText(const t_symbol& symbol) {
    const std::vector<t_atom> back = ParseAtoms(symbol.s_name);
    const bool plain = back.size() == 1 && back[0].a_type == A_SYM && back[0].a_w.w_sym == &symbol;
    return plain ? symbol.s_name : Quoted(symbol.s_name, true);
}

std::string TextWithFlags(const t_atom& atom, max_long flags) {
    if (atom.a_type == A_SYM) {
        const t_symbol* symbol = atom_getsym(&atom);
        if (flags & OBEX_UTIL_ATOM_GETTEXT_SYM_NO_QUOTE) return symbol->s_name;
        if (flags & OBEX_UTIL_ATOM_GETTEXT_SYM_FORCE_QUOTE)
            return Quoted(symbol->s_name, !(flags & OBEX_UTIL_ATOM_GETTEXT_NOESCAPE));
    }
    if (atom.a_type == A_FLOAT && (flags & OBEX_UTIL_ATOM_GETTEXT_NUM_HI_RES))
        return Shortest(atom.a_w.w_float);
    return AtomText(atom);
}

template <class T>
void Append(std::vector<t_atom>& atoms, t_max_err (*set)(t_atom*, T), T value) {
    set(&atoms.emplace_back(), value);
}

/// Appends `count` values of type T behind a pointer, each through `set`.
template <class T, class Argument>
void AppendArray(std::vector<t_atom>& atoms,
                 max_long count,
                 const T* values,
                 t_max_err (*set)(t_atom*, Argument)) {
    for (max_long i = 0; i < count; ++i)
        set(&atoms.emplace_back(), static_cast<Argument>(values[i]));
}

}  // namespace

std::vector<t_atom> ParseAtoms(std::string_view text) {
    const auto words = HostReading::SplitWords(text, HostReading::Dialect::Max);
    if (!words) return {};  // never: nothing is an error in this dialect
    std::vector<t_atom> atoms;
    for (const HostReading::Word& word : *words) {
        const auto number = word.isLiteral ? std::nullopt : ParseNumber(word.text);
        atoms.push_back(number.value_or(SymbolAtom(word.text)));
    }
    return atoms;
}

std::string AtomText(const t_atom& atom) {
    switch (atom.a_type) {
        case A_LONG: return Shortest(atom.a_w.w_long);
        case A_FLOAT: return Shortest(static_cast<float>(atom.a_w.w_float));
        case A_SYM: return SymbolText(*atom_getsym(&atom));
        case A_OBJ: return "<object>";
        case A_SEMI: return ";";
        case A_COMMA: return ",";
        default: return "";
    }
}

std::string AtomText(std::span<const t_atom> atoms) {
    std::string text;
    for (const t_atom& atom : atoms) {
        if (&atom != atoms.data()) text += ' ';
        text += AtomText(atom);
    }
    return text;
}

std::vector<t_atom> FormatAtoms(const char* format, std::va_list arguments) {
    std::vector<t_atom> atoms;
    for (const char* letter = format; *letter; ++letter) {
        // Each letter reads one argument; a capital letter reads a count and a pointer to an array.
        const max_long count = std::strchr("CLFDSOA", *letter) ? va_arg(arguments, max_long) : 0;
        switch (*letter) {
            case 'c': Append<t_atom_long>(atoms, atom_setlong, va_arg(arguments, int)); break;
            case 'l': Append(atoms, atom_setlong, va_arg(arguments, t_atom_long)); break;
            case 'f':
            case 'd': Append(atoms, atom_setfloat, va_arg(arguments, double)); break;
            case 's': Append(atoms, atom_setsym, va_arg(arguments, t_symbol*)); break;
            case 'o': Append(atoms, atom_setobj, va_arg(arguments, void*)); break;
            case 'a': atoms.push_back(*va_arg(arguments, t_atom*)); break;
            case 'p':
                for (const t_atom& atom : ParseAtoms(va_arg(arguments, const char*)))
                    atoms.push_back(atom);
                break;
            case 'C':
                AppendArray(atoms, count, va_arg(arguments, const char*), atom_setlong);
                break;
            case 'L':
                AppendArray(atoms, count, va_arg(arguments, const t_atom_long*), atom_setlong);
                break;
            case 'F':
                AppendArray(atoms, count, va_arg(arguments, const float*), atom_setfloat);
                break;
            case 'D':
                AppendArray(atoms, count, va_arg(arguments, const double*), atom_setfloat);
                break;
            case 'S': AppendArray(atoms, count, va_arg(arguments, t_symbol**), atom_setsym); break;
            case 'O': AppendArray(atoms, count, va_arg(arguments, void**), atom_setobj); break;
            case 'A':
                for (const t_atom& atom : Atoms(count, va_arg(arguments, const t_atom*)))
                    atoms.push_back(atom);
                break;
            default: break;
        }
    }
    return atoms;
}

t_max_err HandOut(std::span<const t_atom> from, max_long* count, t_atom** atoms) {
    char allocated = 0;
    const auto wanted = static_cast<max_long>(from.size());
    const bool isHandedIn = *count > 0 && *atoms;
    if (isHandedIn && *count < wanted) return MAX_ERR_OUT_OF_MEM;
    if (const t_max_err error = atom_alloc_array(wanted, count, atoms, &allocated)) return error;
    std::ranges::copy(from, *atoms);
    *count = wanted;
    return MAX_ERR_NONE;
}

}  // namespace HostApi

using namespace HostApi;

t_max_err atom_setparse(max_long* count, t_atom** atoms, const char* text) {
    if (!text) return MAX_ERR_INVALID_PTR;
    return HandOut(ParseAtoms(text), count, atoms);
}

t_max_err atom_setformat(max_long* count, t_atom** atoms, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    const std::vector<t_atom> made = FormatAtoms(fmt, arguments);
    va_end(arguments);
    return HandOut(made, count, atoms);
}

t_max_err atom_gettext(max_long count, t_atom* atoms, max_long* size, char** text, max_long flags) {
    if (!size || !text) return MAX_ERR_INVALID_PTR;
    const char* const separator = flags & OBEX_UTIL_ATOM_GETTEXT_COMMA_DELIM ? ", " : " ";
    std::string made;
    for (const t_atom& atom : Atoms(count, atoms)) {
        if (!made.empty()) made += separator;
        made += TextWithFlags(atom, flags);
    }
    if (!*text) {
        *size = static_cast<max_long>(made.size() + 1);
        *text = sysmem_newptr(made.size() + 1);
        if (!*text) return MAX_ERR_OUT_OF_MEM;
    }
    strncpy_zero(*text, made.c_str(), *size);
    return MAX_ERR_NONE;
}
