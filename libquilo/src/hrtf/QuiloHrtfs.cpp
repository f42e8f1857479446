// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfs.h"

#include "text/VelkDspException.h"

namespace Quilo {

namespace {

template <class Code>
std::string TextOf(const tav::KeywordTable<Code>& table, Code code, const char* refusal) {
    const std::string_view text = table.Print(code);
    if (!text.empty()) return std::string(text);
    throw tav::Exception(refusal + std::to_string(static_cast<std::int32_t>(code)));
}

}  // namespace

// clang-format off

const tav::KeywordTable<Hrtfs::Architecture>& Hrtfs::ArchitectureKeywords() {
    using enum Architecture;
    // What is printed is what is accepted; the last one is read only.
    static const tav::KeywordTable<Architecture> table{
        {Binaural,                                  "Binaural",                                  {"Binaural"}},
        {NearfieldCompensationFilter,               "NearfieldCompensationFilter",               {"NearfieldCompensationFilter"}},
        {BinauralToTransauralShufflerSymmetric,     "BinauralToTransauralShufflerSymmetric",     {"BinauralToTransauralShufflerSymmetric"}},
        {BinauralToTransauralShufflerAsymmetric,    "BinauralToTransauralShufflerAsymmetric",    {"BinauralToTransauralShufflerAsymmetric"}},
        {BinauralToTransauralRecursiveSymmetric,    "BinauralToTransauralRecursiveSymmetric",    {"BinauralToTransauralRecursiveSymmetric"}},
        {BinauralToTransauralRecursiveAsymmetric,   "BinauralToTransauralRecursiveAsymmetric",   {"BinauralToTransauralRecursiveAsymmetric"}},
        {BinauralToTransauralFeedForwardSymmetric,  "BinauralToTransauralFeedForwardSymmetric",  {"BinauralToTransauralFeedForwardSymmetric"}},
        {BinauralToTransauralFeedForwardAsymmetric, "BinauralToTransauralFeedForwardAsymmetric", {"BinauralToTransauralFeedForwardAsymmetric"}},
        {BinauralToTransauralLeastSquares,          "BinauralToTransauralLeastSquares",          {"BinauralToTransauralLeastSquares"}},
        {Unspecified,                               "",                                          {"unspecified"}},
    };
    return table;
}

const tav::KeywordTable<Hrtfs::FilterType>& Hrtfs::FilterTypeKeywords() {
    using enum FilterType;
    static const tav::KeywordTable<FilterType> table{
        // code        printed        accepted
        {BiquadCells,  "BiquadCells", {"BiquadCells", "Biquads", "Biquad", "BIQUAD"}},
        {Fir,          "FIR",         {"FIR"}},
        {ShCoeff,      "SH_COEFF",    {"SH_COEFF"}},
        {Unknown,      "",            {"unknown"}},
    };
    return table;
}

// clang-format on

std::string Hrtfs::Text(Architecture architecture) {
    return TextOf(ArchitectureKeywords(), architecture, "unknown hrtf type ");
}

std::string Hrtfs::Text(FilterType filterType) {
    return TextOf(FilterTypeKeywords(), filterType, "unknown hrtf filter type ");
}

}  // namespace Quilo
