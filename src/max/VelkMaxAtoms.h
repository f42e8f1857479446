// SPDX-License-Identifier: MIT
// The arguments of a message or the values of an attribute, as handlers read them.
#pragma once

#include "ext.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace VelkMax {

/// A view of a list of atoms; what it looks at must outlive it. Questions about an index beyond
/// the list are answered with no, 0, NaN and the empty symbol.
/// Thread: any.  Throws: nothing but for lack of memory.
class Atoms {
public:
    Atoms() = default;
    Atoms(max_long count, const t_atom* atoms);
    explicit Atoms(std::span<const t_atom> atoms) : atoms_(atoms) {}

    std::size_t Size() const noexcept { return atoms_.size(); }
    bool Empty() const noexcept { return atoms_.empty(); }
    /// What follows the first `count` atoms; the first `count` atoms.
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

    /// As the API coerces: floats are truncated, a symbol counts when it reads as a number.
    t_atom_long Long(std::size_t index) const noexcept;
    double Float(std::size_t index) const noexcept;
    /// Interned text of the atom, whatever its type.
    t_symbol* Symbol(std::size_t index) const;

    /// The values as single precision; an atom that is no number is NaN.
    std::vector<float> Numbers() const;
    /// The same without memory of its own, as many as fit.  @return what was filled
    std::span<float> Numbers(std::span<float> values) const noexcept;

    /// As a message box shows them, separated by one blank; floats with the fewest digits that
    /// read back to the same 32-bit value.
    std::string Text() const;

private:
    max_long Type(std::size_t index) const noexcept;

    std::span<const t_atom> atoms_;
};

/// Room for the answer of a getter, by the API's protocol: in the caller's memory where it handed
/// some in, else newly allocated. Then *argc is `count`.
/// @return the error for the caller: GENERIC, his memory is too small; OUT_OF_MEM, there is none
t_max_err ReserveAnswer(std::size_t count, max_long* argc, t_atom** argv) noexcept;

/// 1-based number of a message, as far as an int reaches: for console texts.
int SaturatedInt(t_atom_long value) noexcept;

}  // namespace VelkMax
