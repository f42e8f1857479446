// SPDX-License-Identifier: MIT
// What an HRTF set consists of: measured directions with their filters, and what it says of itself.
#pragma once

#include "hrtf/QuiloHrtfs.h"
#include "math/VelkDspCartesian.h"
#include "math/VelkDspMatrix.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Quilo {

/// Key and text, ordered by key.
using HrtfInfos = std::map<std::string, std::string>;

/// The keys of HrtfInfos, as set files write them.
namespace HrtfInfo {
inline constexpr const char* kAuthor = "Author";
inline constexpr const char* kCopyright = "Copyright";
inline constexpr const char* kDataType = "DataType";
inline constexpr const char* kDateCreated = "DateCreated";
inline constexpr const char* kFiltersLength = "FiltersLength";
inline constexpr const char* kFiltersType = "FiltersType";
inline constexpr const char* kGenerated = "Generated";
inline constexpr const char* kInterpolationSet = "InterpolationSet";
inline constexpr const char* kLicense = "License";
inline constexpr const char* kListenerShortName = "ListenerShortName";
inline constexpr const char* kMeasurementSet = "MeasurementSet";
inline constexpr const char* kNumChannels = "NumChannels";
inline constexpr const char* kNumPoints = "NumPoints";
inline constexpr const char* kOrganization = "Organization";
inline constexpr const char* kOwner = "Owner";
inline constexpr const char* kSamplingRate = "SamplingRate";
inline constexpr const char* kSpatialInterpolation = "SpatialInterpolation";
inline constexpr const char* kSubject = "Subject";
inline constexpr const char* kSymmetrization = "Symmetrization";
inline constexpr const char* kUrl = "URL";  // added by the loader: the path of the file
}  // namespace HrtfInfo

/// One measured direction.
struct HrtfPoint {
    tav::CartesianVector position;  ///< x right, y front, z up
    /// Milliseconds, arrival at the left ear minus arrival at the right one; 0 in FIR sets, whose
    /// responses hold their delays.
    float delay = 0.f;
    /// numChannels x filtersLength, row per ear (left, right). Biquad cells take six values each,
    /// b0 b1 b2 a0 a1 a2 with a0 = 1, and are stable.
    tav::Matrix<float> filters;
    std::uint32_t index = 0;  ///< place in the set
};

/// A whole set. As it stands here: the empty one.
struct HrtfData {
    Hrtfs::Architecture architecture = Hrtfs::Architecture::Binaural;
    Hrtfs::FilterType filterType = Hrtfs::FilterType::BiquadCells;
    std::uint32_t filtersLength = 0;  ///< numbers per channel and point
    std::uint32_t numChannels = 0;
    float samplingRate = 0.f;  ///< Hz
    std::uint32_t numPoints = 0;
    HrtfInfos infos;
    std::vector<HrtfPoint> points;  ///< numPoints
};

}  // namespace Quilo
