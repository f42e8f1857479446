// SPDX-License-Identifier: MIT
// The choice of the processor's instruction set for the kernels.
//
// The program runs on every x86-64 processor; further instruction sets are detected once, before
// audio starts. A family of kernels is a struct of function pointers; its static member functions
// Scalar(), Avx2() and Avx512() return the functions for each set. Scalar() is the reference for
// the other two, which a family may lack.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace tav {

/// Each includes those before it.
enum class InstructionSet : std::uint8_t {
    Scalar,
    Avx2,    // with FMA
    Avx512,  // the foundation (F)
};

/// "scalar", "avx2", "avx512"
std::string_view NameOf(InstructionSet set) noexcept;
/// Every set that this machine can run, from the scalar one to the largest.
std::span<const InstructionSet> RunnableInstructionSets() noexcept;
/// The largest of them, or the one that the environment variable TAV_SIMD names. A name that is
/// unknown, or of a set that this machine cannot run, is ignored. Decided at the first call.
/// Thread: control.
InstructionSet BestInstructionSet() noexcept;

#if defined(TAV_X86_KERNELS)
inline constexpr bool kHasVectorKernels = true;
#else
inline constexpr bool kHasVectorKernels = false;  // they are not linked either
#endif

/// The kernels of a family for an instruction set, or for the next smaller one that the family has.
/// @pre  this machine can run the set
template <class Family>
const Family& KernelsFor([[maybe_unused]] InstructionSet set) noexcept {
    if constexpr (kHasVectorKernels) {
        if constexpr (requires { Family::Avx512(); }) {
            if (set >= InstructionSet::Avx512) return Family::Avx512();
        }
        if constexpr (requires { Family::Avx2(); }) {
            if (set >= InstructionSet::Avx2) return Family::Avx2();
        }
    }
    return Family::Scalar();
}

/// Thread: control.
template <class Family>
const Family& BestKernels() noexcept {
    return KernelsFor<Family>(BestInstructionSet());
}

}  // namespace tav
