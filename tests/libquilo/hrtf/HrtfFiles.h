// SPDX-License-Identifier: MIT
// Set files that tests make and damage.
#pragma once

#include "SdifWriter.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Quilo {

struct HrtfFrame {
    std::int32_t stream = 1;
    std::vector<Sdif::Matrix> matrices;
    std::string signature = "HRTF";
};

struct HrtfFileContent {
    std::map<std::string, std::string> infos;
    std::vector<HrtfFrame> frames;

    std::string Bytes() const;
};

/// Two points, ahead and above right, two ears: two cells, or three taps.
HrtfFileContent SmallCellSet();
HrtfFileContent SmallFirSet();

}  // namespace Quilo
