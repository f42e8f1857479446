// SPDX-License-Identifier: MIT
#include "picture/HostPlot.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quilo::Host {

namespace {

constexpr std::array<std::string_view, 7> kSourceColours = {
    "#d55e00", "#0072b2", "#009e73", "#cc79a7", "#e69f00", "#56b4e9", "#333333"};
constexpr std::array<std::string_view, 4> kSourceDashes = {"", "7 4", "2 4", "9 3 2 3"};

/// Number of decimals that multiples of the step need.
int Decimals(double step) {
    return std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
}

}  // namespace

std::string_view SourceColour(std::size_t source) {
    return kSourceColours[source % kSourceColours.size()];
}

std::string_view SourceDashes(std::size_t source) {
    return kSourceDashes[source / kSourceColours.size() % kSourceDashes.size()];
}

std::string_view SourceNumberColour(std::size_t source) {
    const std::size_t colour = source % kSourceColours.size();
    return colour >= 3 && colour <= 5 ? kInk : "white";
}

double RoundStep(double range, int mostSteps) {
    if (!(range > 0)) return 1;
    const double power = std::pow(10.0, std::floor(std::log10(range / mostSteps)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power * mostSteps >= range * (1 - 1e-9)) return factor * power;
    return 10 * power;
}

void DrawFrame(Svg& svg, const Plot& plot, double stepX, double stepY, bool numbersBelow) {
    svg.Box(plot.corner, plot.width, plot.height, kGround);
    const TextStyle below{.size = 12, .colour = kQuietInk, .anchor = "middle"};
    const TextStyle beside{.size = 12, .colour = kQuietInk, .anchor = "end"};
    if (stepX > 0)
        for (double k = std::ceil(plot.left / stepX - 1e-9); k * stepX <= plot.right + 1e-9 * stepX;
             ++k) {
            const double x = plot.X(k * stepX);
            svg.Line({x, plot.corner.y}, {x, plot.Floor()}, {kGrid});
            if (numbersBelow)
                svg.Text({x, plot.Floor() + 14}, LabelNumber(k * stepX, Decimals(stepX)), below);
        }
    if (stepY > 0)
        for (double k = std::ceil(plot.bottom / stepY - 1e-9); k * stepY <= plot.top + 1e-9 * stepY;
             ++k) {
            const double y = plot.Y(k * stepY);
            svg.Line({plot.corner.x, y}, {plot.Side(), y}, {kGrid});
            svg.Text({plot.corner.x - 8, y}, LabelNumber(k * stepY, Decimals(stepY)), beside);
        }
    svg.Box(plot.corner, plot.width, plot.height, "none", 1, 0, {kFrame});
}

void DrawTitles(Svg& svg,
                const Plot& plot,
                std::string_view title,
                std::string_view below,
                std::string_view beside) {
    svg.Text({plot.corner.x, plot.corner.y - 15}, title, {.size = 15, .bold = true});
    const TextStyle quiet{.size = 12, .colour = kQuietInk, .anchor = "middle"};
    svg.Text({plot.corner.x + plot.width / 2, plot.Floor() + 33}, below, quiet);
    TextStyle turned = quiet;
    turned.turnDeg = -90;
    svg.Text({plot.corner.x - 62, plot.corner.y + plot.height / 2}, beside, turned);
}

}  // namespace Quilo::Host
