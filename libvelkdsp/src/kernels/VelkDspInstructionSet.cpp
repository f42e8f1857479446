// SPDX-License-Identifier: MIT
#include "kernels/VelkDspInstructionSet.h"

#include <cstddef>
#include <cstdlib>
#include <string_view>

#if defined(TAV_X86_KERNELS) && defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace tav {
namespace {

struct ProcessorFeatures {
    bool avx2 = false;    // with FMA
    bool avx512 = false;  // the foundation (F)
};

#if !defined(TAV_X86_KERNELS)
ProcessorFeatures DetectFeatures() noexcept { return {}; }
#elif defined(_MSC_VER) && !defined(__clang__)
bool Bit(int word, int index) noexcept {
    return ((static_cast<unsigned>(word) >> index) & 1u) != 0;
}

ProcessorFeatures DetectFeatures() noexcept {
    int leaf[4] = {};  // eax, ebx, ecx, edx
    __cpuid(leaf, 0);
    if (leaf[0] < 7) return {};
    __cpuid(leaf, 1);
    const bool fma = Bit(leaf[2], 12);
    if (!Bit(leaf[2], 27)) return {};  // the operating system keeps no vector registers
    const unsigned long long kept = _xgetbv(0);
    __cpuidex(leaf, 7, 0);
    constexpr unsigned long long kYmm = 0x6;
    constexpr unsigned long long kZmm = 0xe6;
    ProcessorFeatures features;
    features.avx2 = fma && Bit(leaf[1], 5) && (kept & kYmm) == kYmm;
    features.avx512 = features.avx2 && Bit(leaf[1], 16) && (kept & kZmm) == kZmm;
    return features;
}
#else
ProcessorFeatures DetectFeatures() noexcept {
    __builtin_cpu_init();
    ProcessorFeatures features;
    features.avx2 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    features.avx512 = features.avx2 && __builtin_cpu_supports("avx512f") != 0;
    return features;
}
#endif

constexpr InstructionSet kAll[] = {InstructionSet::Scalar, InstructionSet::Avx2,
                                   InstructionSet::Avx512};

InstructionSet Choose() noexcept {
    const std::span<const InstructionSet> runnable = RunnableInstructionSets();
#if defined(_MSC_VER)
#pragma warning(suppress : 4996)  // read once, before audio starts
#endif
    if (const char* wanted = std::getenv("TAV_SIMD")) {
        for (const InstructionSet set : runnable) {
            if (NameOf(set) == wanted) return set;
        }
    }
    return runnable.back();
}

}  // namespace

std::string_view NameOf(InstructionSet set) noexcept {
    constexpr std::string_view kNames[] = {"scalar", "avx2", "avx512"};
    return kNames[static_cast<std::size_t>(set)];
}

std::span<const InstructionSet> RunnableInstructionSets() noexcept {
    static const ProcessorFeatures features = DetectFeatures();
    return {kAll, features.avx512 ? 3u : features.avx2 ? 2u : 1u};
}

InstructionSet BestInstructionSet() noexcept {
    static const InstructionSet best = Choose();
    return best;
}

}  // namespace tav
