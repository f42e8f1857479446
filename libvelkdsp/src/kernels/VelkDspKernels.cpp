// SPDX-License-Identifier: MIT
#include "kernels/VelkDspKernels.h"

#include "kernels/VelkDspKernelsSets.h"

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
    bool avx512 = false;  // foundation
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

struct KernelTable {
    NamedKernels sets[3];
    std::size_t count = 0;

    KernelTable() noexcept {
        Add("scalar", ScalarKernels());
#if defined(TAV_X86_KERNELS)
        const ProcessorFeatures features = DetectFeatures();
        if (features.avx2) Add("avx2", Avx2Kernels());
        if (features.avx512) Add("avx512", Avx512Kernels());
#endif
    }
    void Add(std::string_view name, const Kernels& kernels) noexcept {
        sets[count++] = {name, &kernels};
    }
};

const NamedKernels& ChooseKernels() noexcept {
    const std::span<const NamedKernels> runnable = RunnableKernels();
#if defined(_MSC_VER)
#pragma warning(suppress : 4996)  // read once, before audio starts
#endif
    if (const char* wanted = std::getenv("TAV_SIMD")) {
        for (const NamedKernels& set : runnable) {
            if (set.name == wanted) return set;
        }
    }
    return runnable.back();
}

}  // namespace

std::span<const NamedKernels> RunnableKernels() noexcept {
    static const KernelTable table;
    return {table.sets, table.count};
}

const NamedKernels& BestKernels() noexcept {
    static const NamedKernels& best = ChooseKernels();
    return best;
}

}  // namespace tav
