// SPDX-License-Identifier: MIT
#include "hrtf/QuiloNearfieldCompensationFilters.h"

#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"

namespace Quilo {

void NearfieldCompensationFilters::Load(const std::string& path) {
    if (FileExtension(path) != "near") throw tav::Exception("invalid file extension " + path);
    set_ = Hrtf(ReadHrtfFile(path));
}

}  // namespace Quilo
