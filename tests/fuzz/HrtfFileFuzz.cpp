// SPDX-License-Identifier: MIT
// Any bytes as a set file: refused with a message that names the file, or read with every promise
// of HrtfData kept, so that panners can play it.
#include "hrtf/QuiloHrtf.h"
#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

using namespace Quilo;

namespace {

bool IsStable(std::span<const float> cells) {
    for (; !cells.empty(); cells = cells.subspan(6)) {
        if (cells[3] != 1.f) return false;
        if (!(std::abs(cells[5]) < 1.f && std::abs(cells[4]) < 1.f + cells[5])) return false;
    }
    return true;
}

bool KeepsItsPromises(const HrtfData& set) {
    const bool isFir = set.filterType == Hrtfs::FilterType::Fir;
    const bool isCells = set.filterType == Hrtfs::FilterType::BiquadCells;
    if (set.points.empty() || set.points.size() != set.numPoints) return false;
    if (!(set.samplingRate >= 8000.f && set.samplingRate <= 384000.f)) return false;
    for (const HrtfPoint& point : set.points) {
        if (!tav::IsFinite(point.position) || !std::isfinite(point.delay)) return false;
        if (isFir && point.delay != 0.f) return false;
        if (!isFir && !isCells) continue;
        if (point.filters.Rows() != set.numChannels) return false;
        if (point.filters.Columns() != set.filtersLength) return false;
        for (std::size_t channel = 0; channel < set.numChannels; ++channel) {
            const std::span<const float> filter = point.filters.Row(channel);
            for (const float value : filter) {
                if (!std::isfinite(value)) return false;
            }
            if (isCells && !IsStable(filter)) return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cerr.setstate(std::ios::failbit);  // the log would fill the screen
    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    try {
        const Hrtf set(ReadHrtfStream(stream, "a.hrtf"));
        if (!KeepsItsPromises(set.Data()) || set.InfoLines().size() < 7) std::abort();
        for (const HrtfPoint& point : set.Data().points) {
            if (!set.NearestPoint(point.position)) std::abort();
        }
    } catch (const tav::Exception& fault) {
        const bool isForeign = fault.Message().starts_with("unknown exception");
        if (isForeign || !fault.Message().ends_with("a.hrtf")) std::abort();
    }
    return 0;
}
