// SPDX-License-Identifier: MIT
#include "picture/HostLabels.h"

#include <algorithm>

namespace Quilo::Host {

LabelRoom::Box LabelRoom::BoxAt(Spot centre, double width, double height) {
    return {centre.x - width / 2, centre.y - height / 2, centre.x + width / 2,
            centre.y + height / 2};
}

LabelRoom::LabelRoom(Spot corner, double width, double height)
    : all_{corner.x, corner.y, corner.x + width, corner.y + height} {}

void LabelRoom::Block(Spot centre, double width, double height) {
    taken_.push_back(BoxAt(centre, width, height));
}

bool LabelRoom::Take(Spot centre, double width, double height) {
    const Box box = BoxAt(centre, width, height);
    if (box.left < all_.left || box.right > all_.right || box.top < all_.top ||
        box.bottom > all_.bottom)
        return false;
    const auto overlaps = [&](const Box& other) {
        return box.left < other.right && other.left < box.right && box.top < other.bottom &&
               other.top < box.bottom;
    };
    if (std::ranges::any_of(taken_, overlaps)) return false;
    taken_.push_back(box);
    return true;
}

bool LabelRoom::Place(Svg& svg,
                      std::span<const Spot> spots,
                      std::string_view text,
                      TextStyle style) {
    style.anchor = "middle";
    for (const Spot& spot : spots) {
        if (!Take(spot, TextWidth(text, style.size), 1.05 * style.size)) continue;
        svg.Text(spot, text, style);
        return true;
    }
    return false;
}

double TextWidth(std::string_view text, double size) {
    const auto letters = std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; });
    return 0.7 * size * static_cast<double>(letters);
}

}  // namespace Quilo::Host
