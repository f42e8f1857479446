// SPDX-License-Identifier: MIT
// Every keyword table of the foundation library: what is printed and what is accepted.
//
// Matching is exact and case-sensitive. What an unknown word means is said by the caller.
#pragma once

#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "text/VelkDspKeywordTable.h"

namespace tav {

/// Thread: any; a table is built once, on first use.
const KeywordTable<SphericalHarmonic::Normalization>& NormalizationKeywords();
const KeywordTable<HoaEncodingVector::Mode>& HoaModeKeywords();

}  // namespace tav
