// SPDX-License-Identifier: MIT
#include "picture/HostPicture.h"

#include "picture/HostMapPanel.h"
#include "picture/HostPlanPanel.h"
#include "picture/HostPlot.h"
#include "picture/HostTimePanel.h"

#include <algorithm>

namespace Quilo::Host {

namespace {

constexpr double kWidth = 1200;  // of the picture
constexpr double kLeft = 96;     // of the panels
constexpr double kRight = 1152;
constexpr double kPlanTop = 124;
constexpr double kPlanSize = 500;  // the view from above is a square
constexpr double kSideLeft = 680;  // of the right column
constexpr double kSideHeight = 230;

std::string Count(std::size_t number, std::string_view thing) {
    return std::to_string(number) + " " + std::string(thing) + (number == 1 ? "" : "s");
}

/// At most that many characters; never cut within one.
std::string Shortened(const std::string& text, std::size_t most) {
    if (text.size() <= most) return text;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
    return text.substr(0, end) + "\u2026";
}

void DrawHead(Svg& svg, const Scene& scene) {
    svg.Text({kLeft, 44}, Shortened(scene.title, 84), {.size = 22, .bold = true});
    const std::string facts =
        LabelNumber(scene.seconds, 3) + " s at " + LabelNumber(scene.rateHz, 0) +
        " Hz in vectors of " + std::to_string(scene.vector) + " \u00b7 " +
        Count(scene.numInlets, "source") + " \u00b7 " + Count(scene.power.size(), "outlet");
    svg.Text({kLeft, 74}, facts, {.size = 14, .colour = kQuietInk});
}

void DrawSourceKey(Svg& svg, std::size_t numSources, Spot spot) {
    constexpr std::size_t kMost = 7;
    const std::size_t shown = numSources > kMost ? kMost - 1 : numSources;
    for (std::size_t k = 0; k < shown; ++k, spot.y += 26) {
        const Spot line[] = {{spot.x, spot.y}, {spot.x + 44, spot.y}};
        svg.Polyline(line, {SourceColour(k), 2.6, 1, SourceDashes(k)});
        DrawSource(svg, {spot.x + 22, spot.y}, k);
        svg.Text({spot.x + 56, spot.y}, "source " + std::to_string(k + 1));
    }
    if (shown < numSources)
        svg.Text(spot, "and " + std::to_string(numSources - shown) + " more",
                 {.colour = kQuietInk});
}

void DrawSignKey(Svg& svg, Spot spot, double timeStep, bool hasLoudspeakers) {
    constexpr double kRow = 26, kText = 30;
    if (hasLoudspeakers) {
        DrawSpeaker(svg, spot, 180);
        svg.Text({spot.x + kText, spot.y}, "loudspeaker, with its outlet");
        spot.y += kRow;
    }
    DrawListener(svg, spot, true);
    svg.Text({spot.x + kText, spot.y}, "listener, facing the front");
    spot.y += kRow;
    svg.Circle(spot, kSourceRadius + 1.5, "none", {kQuietInk, 2});
    svg.Text({spot.x + kText, spot.y}, "where a moving source begins");
    spot.y += kRow;
    svg.Circle(spot, kSourceRadius, kQuietInk);
    svg.Text({spot.x + kText, spot.y}, "where a source ends or stays");
    spot.y += kRow;
    svg.Circle(spot, 3.2, "white", {kQuietInk, 1.6});
    svg.Text({spot.x + kText, spot.y}, "every " + LabelNumber(timeStep) + " s on its way");
}

}  // namespace

std::string DrawScene(const Scene& scene) {
    Svg svg;
    const double timeStep = RoundStep(scene.seconds, 10);
    DrawHead(svg, scene);
    DrawPlan(svg, scene, kFromAbove, {kLeft, kPlanTop}, kPlanSize, kPlanSize, timeStep);
    DrawPlan(svg, scene, kFromTheSide, {kSideLeft, kPlanTop}, kRight - kSideLeft, kSideHeight,
             timeStep);
    const double keyTop = kPlanTop + kSideHeight + 92;
    const std::size_t numSources = scene.path.empty() ? 0 : scene.path.back().sources.size();
    DrawSourceKey(svg, numSources, {kSideLeft, keyTop});
    DrawSignKey(svg, {kSideLeft + 210, keyTop}, timeStep, !scene.speakers.empty());

    double y = kPlanTop + kPlanSize + 94;
    y += DrawCoverage(svg, scene, {kLeft, y}, kSideLeft);
    if (scene.seconds > 0) {
        y += DrawTraces(svg, scene, {kLeft, y}, kRight - kLeft, timeStep);
        y += DrawLevels(svg, scene, {kLeft, y}, kRight - kLeft, timeStep);
    }
    return svg.Document(kWidth, y + 10, scene.title);
}

}  // namespace Quilo::Host
