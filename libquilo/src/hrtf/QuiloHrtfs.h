// SPDX-License-Identifier: MIT
// What kinds of HRTF sets there are, and the words for them.
#pragma once

#include "text/VelkDspKeywordTable.h"

#include <cstdint>
#include <string>

namespace Quilo {

struct Hrtfs {
    /// What the filters of a set are for.
    enum class Architecture : std::int32_t {
        Binaural,
        NearfieldCompensationFilter,
        BinauralToTransauralShufflerSymmetric,
        BinauralToTransauralShufflerAsymmetric,
        BinauralToTransauralRecursiveSymmetric,
        BinauralToTransauralRecursiveAsymmetric,
        BinauralToTransauralFeedForwardSymmetric,
        BinauralToTransauralFeedForwardAsymmetric,
        BinauralToTransauralLeastSquares,
        Unspecified  // can be read, has no text
    };

    /// How the filters of a set are stored.
    enum class FilterType : std::int32_t {
        BiquadCells,
        Fir,
        ShCoeff,
        Unknown  // can be read, has no text
    };

    /// Thread: any; a table is built once, on first use.
    static const tav::KeywordTable<Architecture>& ArchitectureKeywords();
    static const tav::KeywordTable<FilterType>& FilterTypeKeywords();

    /// Throws: tav::Exception with the code when it has no text.
    static std::string Text(Architecture architecture);
    static std::string Text(FilterType filterType);
};

}  // namespace Quilo
