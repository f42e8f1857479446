// SPDX-License-Identifier: MIT
// The formats of presets that are text.
#pragma once

#include "osc/VelkDspOscBundle.h"

#include <string>
#include <string_view>

namespace tav {

std::string WriteTextPreset(const OSCBundle& messages);
std::string WriteXmlPreset(const OSCBundle& messages);
std::string WriteJsonPreset(const OSCBundle& messages);

// Throws: tav::Exception "line N: what is wrong".
OSCBundle ReadTextPreset(std::string_view content);
OSCBundle ReadXmlPreset(std::string_view content);
OSCBundle ReadJsonPreset(std::string_view content);

}  // namespace tav
