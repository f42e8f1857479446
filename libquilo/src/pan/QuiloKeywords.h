// SPDX-License-Identifier: MIT
// Every keyword table of the panning library: what is printed and what is accepted, side by side.
//
// Matching is exact and case-sensitive. What an unknown word means is said by the caller.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloPan.h"
#include "processors/VelkDspCrossfade.h"
#include "text/VelkDspKeywordTable.h"

namespace Quilo {

/// Thread: any; a table is built once, on first use.
const tav::KeywordTable<Pan::Type>& PanTypeKeywords();
const tav::KeywordTable<Pan::SubType>& PanSubTypeKeywords();
const tav::KeywordTable<Pan::SpreadingMode>& PanSpreadingModeKeywords();
const tav::KeywordTable<InterauralTimeDifference::Type>& ItdTypeKeywords();
const tav::KeywordTable<InterauralTimeDifference::LatencyMode>& ItdLatencyKeywords();
const tav::KeywordTable<tav::FadeShape>& FadeShapeKeywords();
const tav::KeywordTable<HrtfRealisation>& HrtfRealisationKeywords();

}  // namespace Quilo
