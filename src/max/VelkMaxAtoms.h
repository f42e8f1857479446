// SPDX-License-Identifier: MIT
// The arguments of a message or the values of an attribute, as handlers read them.
#pragma once

#include "ext.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace VelkMax {

/// A view of a list of atoms, which must outlive it. For an index beyond the list the answers are
/// false, 0, NaN and the empty symbol.
/// Thread: any.  Throws: std::bad_alloc, where memory is needed.
class Atoms {
public:
    Atoms() = default;
    Atoms(max_long count, const t_atom* atoms);
    explicit Atoms(std::span<const t_atom> atoms) : atoms_(atoms) {}

    std::size_t Size() const noexcept { return atoms_.size(); }
    bool Empty() const noexcept { return atoms_.empty(); }
    /// From: all but the first `count` atoms.  First: the first `count` atoms.
    Atoms From(std::size_t count) const noexcept;
    Atoms First(std::size_t count) const noexcept;
    std::span<const t_atom> Span() const noexcept { return atoms_; }

    bool IsLong(std::size_t index) const noexcept { return Type(index) == A_LONG; }
    bool IsSymbol(std::size_t index) const noexcept { return Type(index) == A_SYM; }
    bool IsNumber(std::size_t index) const noexcept {
        return IsLong(index) || Type(index) == A_FLOAT;
    }

    /// Whether the list is exactly `count` numbers, all finite in single precision.
    bool AreNumbers(std::size_t count) const noexcept;

    /// Converted as Max does: floats are truncated, a symbol that spells a number is that number.
    t_atom_long Long(std::size_t index) const noexcept;
    double Float(std::size_t index) const noexcept;
    /// The symbol of the atom's text, whatever its type.
    t_symbol* Symbol(std::size_t index) const;

    /// The values as single precision; an atom that is no number is NaN.
    std::vector<float> Numbers() const;
    /// The same into `values`, as many as fit.  @return the part that was filled
    std::span<float> Numbers(std::span<float> values) const noexcept;

    /// The atoms as a message box shows them, separated by one blank; floats with the fewest digits
    /// that read back to the same 32-bit value.
    std::string Text() const;

private:
    max_long Type(std::size_t index) const noexcept;

    std::span<const t_atom> atoms_;
};

/// Provides memory for a getter's answer as the API demands: the caller's own where it passes some,
/// else a new block. Then *argc is `count`.
/// @return MAX_ERR_GENERIC when the caller's memory is too small, MAX_ERR_OUT_OF_MEM when there is
/// none
t_max_err ReserveAnswer(std::size_t count, max_long* argc, t_atom** argv) noexcept;

/// The value clamped to the range of an int, for console texts.
int SaturatedInt(t_atom_long value) noexcept;

}  // namespace VelkMax
