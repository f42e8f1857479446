// SPDX-License-Identifier: MIT
// Places labels so that they do not overlap each other or the marks of a drawing.
#pragma once

#include "picture/HostSvg.h"

#include <vector>

namespace Quilo::Host {

/// The occupied boxes of a panel. Block the marks first, then place the labels in order of
/// importance.
class LabelRoom {
public:
    /// The area of the panel; labels stay inside it.
    LabelRoom(Spot corner, double width, double height);

    /// Occupies a box, for a mark that is drawn in any case.
    void Block(Spot centre, double width, double height);
    /// Occupies a box if it is free.  @return whether it was
    bool Take(Spot centre, double width, double height);

    /// Draws a text centred at the first of these spots where it has room.
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

/// An upper estimate of the width of a text in pixels; the widths of the viewer's font are unknown.
double TextWidth(std::string_view text, double size);

}  // namespace Quilo::Host
