// SPDX-License-Identifier: MIT
// Room for letters: labels take a place only where nothing else stands yet.
#pragma once

#include "picture/HostSvg.h"

#include <vector>

namespace Quilo::Host {

/// The boxes of a panel that are taken. Marks are blocked first, then labels ask, the most
/// important ones before the others.
class LabelRoom {
public:
    /// Nothing outside of this box is free.
    LabelRoom(Spot corner, double width, double height);

    /// Takes a box whatever stands there: a mark that is drawn in any case.
    void Block(Spot centre, double width, double height);
    /// Takes a box if it is free.
    bool Take(Spot centre, double width, double height);

    /// Draws a text, its middle at the first of these spots where there is room for it.
    /// @return whether there was one
    bool Place(Svg& svg, std::span<const Spot> spots, std::string_view text, TextStyle style);

private:
    struct Box {
        double left, top, right, bottom;
    };
    static Box BoxAt(Spot centre, double width, double height);

    Box all_;
    std::vector<Box> taken_;
};

/// Pixels that a text needs, rounded up: the letters of the picture's fonts are not known here.
double TextWidth(std::string_view text, double size);

}  // namespace Quilo::Host
