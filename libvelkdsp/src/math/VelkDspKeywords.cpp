// SPDX-License-Identifier: MIT
#include "math/VelkDspKeywords.h"

namespace tav {

// clang-format off

const KeywordTable<SphericalHarmonic::Normalization>& NormalizationKeywords() {
    using Normalization = SphericalHarmonic::Normalization;
    static const KeywordTable<Normalization> table{
        // code                         printed         accepted
        {Normalization::Unnormalized,   "Unnormalized", {"unnormalized"}},  // Deliberate: lower case
        {Normalization::SN3D,           "SN3D",         {"SN3D", "SchmidtSeminormalized3D", "Schmidt-Seminormalized3D", "Schmidt-Seminormalized-3D"}},
        {Normalization::SN2D,           "SN2D",         {"SN2D", "SchmidtSeminormalized2D", "Schmidt-Seminormalized2D", "Schmidt-Seminormalized-2D"}},
        {Normalization::N3D,            "N3D",          {"N3D", "FullyNormalized3D", "Full-3D-Normalization"}},
        {Normalization::N2D,            "N2D",          {"N2D", "FullyNormalized2D"}},
        {Normalization::FuMa,           "FuMa",         {"FuMa"}},
        {Normalization::MaxN,           "MaxN",         {"MaxN", "Max-Normalization"}},
        {Normalization::RONB,           "RONB",         {"RONB", "realorthonormal"}},
    };
    return table;
}

const KeywordTable<HoaEncodingVector::Mode>& HoaModeKeywords() {
    using Mode = HoaEncodingVector::Mode;
    static const KeywordTable<Mode> table{
        // code          printed    accepted
        {Mode::Precise,  "precise", {"precise"}},
        {Mode::Fast,     "fast",    {"fast"}},
    };
    return table;
}

// clang-format on

}  // namespace tav
