// SPDX-License-Identifier: MIT
// The picture of a run: the positions, the movements of the sources, the level of each outlet.
#pragma once

#include "picture/HostScene.h"

#include <string>

namespace Quilo::Host {

/// The scene as an SVG document.
std::string DrawScene(const Scene& scene);

}  // namespace Quilo::Host
