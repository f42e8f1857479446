// SPDX-License-Identifier: MIT
#include "max/VelkMaxAtoms.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace VelkMax {

namespace {

std::string FloatText(double value) {
    char digits[64];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<float>(value)).ptr;
    return {digits, end};
}

std::string AtomText(const t_atom& atom) {
    switch (atom_gettype(&atom)) {
        case A_LONG: return std::to_string(atom_getlong(&atom));
        case A_FLOAT: return FloatText(atom_getfloat(&atom));
        default: return atom_getsym(&atom)->s_name;
    }
}

}  // namespace

Atoms::Atoms(max_long count, const t_atom* atoms) {
    if (count > 0 && atoms != nullptr) atoms_ = {atoms, static_cast<std::size_t>(count)};
}

Atoms Atoms::From(std::size_t count) const noexcept {
    return Atoms(atoms_.subspan(std::min(count, Size())));
}

Atoms Atoms::First(std::size_t count) const noexcept {
    return Atoms(atoms_.first(std::min(count, Size())));
}

max_long Atoms::Type(std::size_t index) const noexcept {
    return index < Size() ? atom_gettype(&atoms_[index]) : max_long{A_NOTHING};
}

bool Atoms::AreNumbers(std::size_t count) const noexcept {
    constexpr auto kLargest = static_cast<double>(std::numeric_limits<float>::max());
    std::size_t index = 0;
    while (IsNumber(index) && std::fabs(Float(index)) <= kLargest) ++index;
    return index == count && Size() == count;
}

t_atom_long Atoms::Long(std::size_t index) const noexcept {
    return index < Size() ? atom_getlong(&atoms_[index]) : 0;
}

double Atoms::Float(std::size_t index) const noexcept {
    return index < Size() ? atom_getfloat(&atoms_[index]) : 0.0;
}

t_symbol* Atoms::Symbol(std::size_t index) const {
    if (IsSymbol(index)) return atom_getsym(&atoms_[index]);
    return gensym(From(index).First(1).Text().c_str());
}

std::vector<float> Atoms::Numbers() const {
    std::vector<float> values(Size());
    Numbers(values);
    return values;
}

std::span<float> Atoms::Numbers(std::span<float> values) const noexcept {
    values = values.first(std::min(values.size(), Size()));
    for (std::size_t index = 0; index < values.size(); ++index) {
        values[index] = IsNumber(index) ? static_cast<float>(Float(index))
                                        : std::numeric_limits<float>::quiet_NaN();
    }
    return values;
}

std::string Atoms::Text() const {
    std::string text;
    for (const t_atom& atom : atoms_) {
        if (!text.empty()) text += ' ';
        text += AtomText(atom);
    }
    return text;
}

// Max's own helpers check neither the size of memory that the caller passes nor set the count; this
// does both.
t_max_err ReserveAnswer(std::size_t count, max_long* argc, t_atom** argv) noexcept {
    const auto needed = static_cast<max_long>(count);
    if (*argc > 0 && *argv != nullptr) {
        if (*argc < needed) return MAX_ERR_GENERIC;
    } else if (needed > 0) {
        char isAllocated = 0;
        const t_max_err error = needed == 1 ? atom_alloc(argc, argv, &isAllocated)
                                            : atom_alloc_array(needed, argc, argv, &isAllocated);
        if (error != MAX_ERR_NONE || *argv == nullptr) return MAX_ERR_OUT_OF_MEM;
    }
    *argc = needed;
    return MAX_ERR_NONE;
}

int SaturatedInt(t_atom_long value) noexcept {
    return static_cast<int>(std::clamp<t_atom_long>(value, std::numeric_limits<int>::min(),
                                                    std::numeric_limits<int>::max()));
}

}  // namespace VelkMax
