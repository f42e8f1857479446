// SPDX-License-Identifier: MIT
// Set files: SDIF with one frame "HRTF" per direction.
//
//     name-value table    the infos; FiltersType, NumChannels, FiltersLength, NumPoints and
//                         SamplingRate have to be there
//     frame "HRTF"        stream: place of the point, from 1 on; any order
//       XCAR | XAED       position, x y z or azimuth and elevation in degrees and distance
//       XIIR              biquad cells: a row per channel, a gain and b1 b2 a1 a2 of every cell
//       XITD              with XIIR: arrival at the left ear minus arrival at the right one, ms
//       XFIR              finite responses: a row per channel
//     anything else       is passed over
#pragma once

#include "hrtf/QuiloHrtfData.h"

#include <istream>
#include <string>
#include <string_view>

namespace Quilo {

/// What follows the last dot of the file's name; empty where there is none.
std::string_view FileExtension(std::string_view path) noexcept;

/// Reads a set file. Memory is taken for what is there, never for what a header announces.
/// @param path  UTF-8
/// Thread: control.  Throws: tav::Exception, whose message ends with the path.
HrtfData ReadHrtfFile(const std::string& path);
/// The same from an open file.
/// @param stream  binary and seekable      @param path  for the messages and the infos
HrtfData ReadHrtfStream(std::istream& stream, const std::string& path);

}  // namespace Quilo
