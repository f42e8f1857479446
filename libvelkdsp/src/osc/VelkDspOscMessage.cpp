// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscMessage.h"

namespace tav {

std::string OSCMessage::TypeTags() const {
    std::string tags;
    for (const OSCArgument& argument : arguments_) tags += argument.Tag();
    return tags;
}

}  // namespace tav
