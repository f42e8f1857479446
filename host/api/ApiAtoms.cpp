// SPDX-License-Identifier: MIT
// Atoms: setting, reading with coercion, arrays, and memory for the answers of getters.
#include "ApiAtoms.h"

#include "ApiFaults.h"
#include "reading/HostWords.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace HostApi {

std::optional<t_atom> ParseNumber(std::string_view text) {
    const auto number = HostReading::ReadNumber(text);
    if (!number || !number->isInRange) return {};
    t_atom atom{};
    if (number->isWhole)
        atom_setlong(&atom, static_cast<t_atom_long>(number->whole));
    else
        atom_setfloat(&atom, number->value);
    return atom;
}

namespace {

/// Truncates towards zero. Values beyond the range of integers become the nearest integer, NaN
/// becomes 0.
t_atom_long Truncate(double value) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) return 0;
    if (value >= kLimit) return std::numeric_limits<t_atom_long>::max();
    if (value <= -kLimit) return std::numeric_limits<t_atom_long>::min();
    return static_cast<t_atom_long>(value);
}

/// The number that an atom holds or spells; A_NOTHING when there is none.
t_atom NumberOf(const t_atom& atom) {
    t_atom none{};
    if (atom.a_type == A_LONG || atom.a_type == A_FLOAT) return atom;
    if (atom.a_type == A_SYM && atom.a_w.w_sym)
        return ParseNumber(atom.a_w.w_sym->s_name).value_or(none);
    return none;
}

/// The smaller of two counts, at least 0.
std::size_t Common(max_long count, max_long n) {
    return static_cast<std::size_t>(std::max(max_long{0}, std::min(count, n)));
}

bool IsNumeric(max_long index, max_long argc, const t_atom* argv) {
    return index >= 0 && index < argc && argv &&
           (argv[index].a_type == A_LONG || argv[index].a_type == A_FLOAT);
}

}  // namespace
}  // namespace HostApi

using namespace HostApi;

t_max_err atom_setlong(t_atom* a, t_atom_long v) {
    if (!a) return MAX_ERR_INVALID_PTR;
    a->a_type = A_LONG;
    a->a_w.w_long = v;
    return MAX_ERR_NONE;
}

t_max_err atom_setfloat(t_atom* a, double v) {
    if (!a) return MAX_ERR_INVALID_PTR;
    a->a_type = A_FLOAT;
    a->a_w.w_float = v;
    return MAX_ERR_NONE;
}

t_max_err atom_setsym(t_atom* a, t_symbol* s) {
    if (!a) return MAX_ERR_INVALID_PTR;
    a->a_type = A_SYM;
    a->a_w.w_sym = s;
    return MAX_ERR_NONE;
}

t_max_err atom_setobj(t_atom* a, void* p) {
    if (!a) return MAX_ERR_INVALID_PTR;
    a->a_type = A_OBJ;
    a->a_w.w_obj = static_cast<t_object*>(p);
    return MAX_ERR_NONE;
}

t_atom_long atom_getlong(const t_atom* a) {
    if (!a) return 0;
    const t_atom number = NumberOf(*a);
    if (number.a_type == A_LONG) return number.a_w.w_long;
    return number.a_type == A_FLOAT ? Truncate(number.a_w.w_float) : 0;
}

t_atom_float atom_getfloat(const t_atom* a) {
    if (!a) return 0;
    const t_atom number = NumberOf(*a);
    if (number.a_type == A_FLOAT) return number.a_w.w_float;
    return number.a_type == A_LONG ? static_cast<double>(number.a_w.w_long) : 0;
}

t_symbol* atom_getsym(const t_atom* a) {
    return a && a->a_type == A_SYM && a->a_w.w_sym ? a->a_w.w_sym : gensym("");
}

void* atom_getobj(const t_atom* a) { return a && a->a_type == A_OBJ ? a->a_w.w_obj : nullptr; }

max_long atom_gettype(const t_atom* a) { return a ? a->a_type : static_cast<max_long>(A_NOTHING); }

// ---- One of a list

t_max_err atom_arg_getlong(t_atom_long* out, max_long index, max_long argc, const t_atom* argv) {
    if (!IsNumeric(index, argc, argv)) return MAX_ERR_GENERIC;
    *out = atom_getlong(&argv[index]);
    return MAX_ERR_NONE;
}

max_long atom_arg_getfloat(float* out, max_long index, max_long argc, const t_atom* argv) {
    if (!IsNumeric(index, argc, argv)) return MAX_ERR_GENERIC;
    *out = static_cast<float>(atom_getfloat(&argv[index]));
    return MAX_ERR_NONE;
}

max_long atom_arg_getdouble(double* out, max_long index, max_long argc, const t_atom* argv) {
    if (!IsNumeric(index, argc, argv)) return MAX_ERR_GENERIC;
    *out = atom_getfloat(&argv[index]);
    return MAX_ERR_NONE;
}

max_long atom_arg_getsym(t_symbol** out, max_long index, max_long argc, const t_atom* argv) {
    if (index < 0 || index >= argc || !argv || argv[index].a_type != A_SYM) return MAX_ERR_GENERIC;
    *out = atom_getsym(&argv[index]);
    return MAX_ERR_NONE;
}

// ---- Memory for answers

t_max_err atom_alloc(max_long* count, t_atom** atoms, char* allocated) {
    if (const auto code = InjectedFailure("atom_alloc")) return *code;
    return atom_alloc_array(1, count, atoms, allocated);
}

t_max_err atom_alloc_array(max_long minsize, max_long* count, t_atom** atoms, char* allocated) {
    if (const auto code = InjectedFailure("atom_alloc_array")) return *code;
    if (!count || !atoms || minsize < 0) return MAX_ERR_INVALID_PTR;
    if (allocated) *allocated = 0;
    // As in Max, memory that the caller passes is used as it is: the size is not checked, the count
    // not set.
    if (*count > 0 && *atoms) return MAX_ERR_NONE;
    // At least one atom, so that the caller of an empty answer also has memory to free.
    const auto room = static_cast<t_ptr_size>(std::max(minsize, max_long{1}));
    *atoms = reinterpret_cast<t_atom*>(sysmem_newptrclear(room * sizeof(t_atom)));
    if (!*atoms) return MAX_ERR_OUT_OF_MEM;
    if (allocated) *allocated = 1;
    *count = minsize;
    return MAX_ERR_NONE;
}

// ---- Arrays

t_max_err atom_getlong_array(max_long count, t_atom* atoms, max_long n, t_atom_long* out) {
    for (std::size_t i = 0; i < Common(count, n); ++i) out[i] = atom_getlong(&atoms[i]);
    return MAX_ERR_NONE;
}

t_max_err atom_getfloat_array(max_long count, t_atom* atoms, max_long n, float* out) {
    for (std::size_t i = 0; i < Common(count, n); ++i)
        out[i] = static_cast<float>(atom_getfloat(&atoms[i]));
    return MAX_ERR_NONE;
}

t_max_err atom_getdouble_array(max_long count, t_atom* atoms, max_long n, double* out) {
    for (std::size_t i = 0; i < Common(count, n); ++i) out[i] = atom_getfloat(&atoms[i]);
    return MAX_ERR_NONE;
}

t_max_err atom_getsym_array(max_long count, t_atom* atoms, max_long n, t_symbol** out) {
    for (std::size_t i = 0; i < Common(count, n); ++i) out[i] = atom_getsym(&atoms[i]);
    return MAX_ERR_NONE;
}

t_max_err atom_setlong_array(max_long count, t_atom* atoms, max_long n, t_atom_long* in) {
    for (std::size_t i = 0; i < Common(count, n); ++i) atom_setlong(&atoms[i], in[i]);
    return MAX_ERR_NONE;
}

t_max_err atom_setfloat_array(max_long count, t_atom* atoms, max_long n, float* in) {
    for (std::size_t i = 0; i < Common(count, n); ++i)
        atom_setfloat(&atoms[i], static_cast<double>(in[i]));
    return MAX_ERR_NONE;
}

t_max_err atom_setdouble_array(max_long count, t_atom* atoms, max_long n, double* in) {
    for (std::size_t i = 0; i < Common(count, n); ++i) atom_setfloat(&atoms[i], in[i]);
    return MAX_ERR_NONE;
}

t_max_err atom_setsym_array(max_long count, t_atom* atoms, max_long n, t_symbol** in) {
    for (std::size_t i = 0; i < Common(count, n); ++i) atom_setsym(&atoms[i], in[i]);
    return MAX_ERR_NONE;
}
