// SPDX-License-Identifier: MIT
// A scene as a picture: where everything is, how the sources move, what every outlet plays.
#pragma once

#include "HostScene.h"

#include <string>

namespace Quilo::Host {

/// The scene as an SVG document.
std::string DrawScene(const Scene& scene);

/// Throws: Fault (WrongInput) when the file cannot be written.
void WritePicture(const Scene& scene, const std::string& file);

}  // namespace Quilo::Host
