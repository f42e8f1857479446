// SPDX-License-Identifier: MIT
// A scene as a picture: where everything is, how the sources move, what every outlet plays.
#pragma once

#include "picture/HostScene.h"

#include <string>

namespace Quilo::Host {

/// The scene as an SVG document.
std::string DrawScene(const Scene& scene);

}  // namespace Quilo::Host
