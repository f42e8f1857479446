// SPDX-License-Identifier: MIT
// The keyword tables of this library: what is printed and what is accepted.
//
// Matching is exact and case-sensitive. Callers decide what an unknown word means.
#pragma once

#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "text/VelkDspKeywordTable.h"

namespace tav {

/// Thread: any; a table is built once, on first use.
const KeywordTable<SphericalHarmonic::Normalization>& NormalizationKeywords();
const KeywordTable<HoaEncodingVector::Mode>& HoaModeKeywords();

}  // namespace tav
