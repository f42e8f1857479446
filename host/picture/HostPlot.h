// SPDX-License-Identifier: MIT
// The parts that the panels of a picture share: colours, scales with round steps, frames.
#pragma once

#include "picture/HostSvg.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace Quilo::Host {

inline constexpr std::string_view kInk = "#1f2933";
inline constexpr std::string_view kQuietInk = "#66727f";
inline constexpr std::string_view kGrid = "#e4e9ee";
inline constexpr std::string_view kFrame = "#c3ccd5";
inline constexpr std::string_view kGround = "#fafbfc";

/// Colours on a light ground that colour-blind people can tell apart (after M. Okabe and K. Ito,
/// "Color Universal Design", 2008, without its yellow). When they repeat, the dashes differ.
std::string_view SourceColour(std::size_t source);
std::string_view SourceDashes(std::size_t source);
/// White or ink, whichever is legible on the source's colour.
std::string_view SourceNumberColour(std::size_t source);

/// A panel with its scales: numbers from (left, bottom) to (right, top).
struct Plot {
    Spot corner;  // top left, pixels
    double width, height;
    double left, right, bottom, top;

    double X(double number) const { return corner.x + (number - left) / (right - left) * width; }
    double Y(double number) const { return corner.y + (top - number) / (top - bottom) * height; }
    Spot At(double x, double y) const { return {X(x), Y(y)}; }
    double Floor() const { return corner.y + height; }
    double Side() const { return corner.x + width; }
};

/// A step of 1, 2 or 5 times a power of ten that cuts `range` into at most `mostSteps` pieces.
double RoundStep(double range, int mostSteps);

/// Draws the background, the grid lines and the numbers below and at the left; none for a step of
/// 0.
void DrawFrame(Svg& svg, const Plot& plot, double stepX, double stepY, bool numbersBelow);
void DrawTitles(Svg& svg,
                const Plot& plot,
                std::string_view title,
                std::string_view below,
                std::string_view beside);

}  // namespace Quilo::Host
