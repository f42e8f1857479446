// SPDX-License-Identifier: MIT
#include "picture/HostMapPanel.h"

#include "math/VelkDspCoordinates.h"
#include "picture/HostLabels.h"
#include "picture/HostPlot.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo::Host {

namespace {

constexpr double kRadius = 118;  // pixels, radius of a disc
constexpr double kMargin = 20;   // round it

struct Shade {
    double fromDeg;  // least error of direction in this shade
    std::string_view colour;
    std::string_view text;
};
constexpr Shade kShades[] = {
    {0, "", "within 10\u00b0 of where it should be"},
    {10, "#fbdcb8", "misplaced by 10\u00b0 to 20\u00b0"},
    {20, "#f0a35c", "by 20\u00b0 to 45\u00b0"},
    {45, "#c4541a", "by more"},
};
constexpr Shade kSilent{0, "#3b4652", "silent"};

constexpr double kRounding = 0.01;  // degrees, for errors that lie on a limit but for rounding

const Shade& ShadeOf(const CoverageMap::Cell& cell) {
    if (cell.isSilent) return kSilent;
    const Shade* shade = kShades;
    for (const Shade& row : kShades)
        if (cell.errorDeg >= row.fromDeg + kRounding) shade = &row;
    return *shade;
}

/// One half of the sphere, drawn as a disc with the zenith (or the nadir) in its middle.
struct Half {
    Spot centre;
    double sign;  // 1 upper, -1 lower
    std::string_view title;

    /// Lambert's azimuthal equal-area projection: equal areas on the sphere are equal on the disc.
    Spot At(double azimuthDeg, double elevationDeg) const {
        const double colatitude = (90 - sign * elevationDeg) * std::numbers::pi / 180;
        const double radius = kRadius * std::numbers::sqrt2 * std::sin(colatitude / 2);
        const double azimuth = azimuthDeg * std::numbers::pi / 180;
        return {centre.x + radius * std::sin(azimuth), centre.y - radius * std::cos(azimuth)};
    }
};

/// Draws the area between two elevations and two azimuths.
void DrawPiece(Svg& svg,
               const Half& half,
               double fromDeg,
               double toDeg,
               double lowDeg,
               double highDeg,
               std::string_view colour) {
    const int steps = std::max(1, static_cast<int>(std::ceil((toDeg - fromDeg) / 6)));
    const auto azimuth = [&](int k) { return fromDeg + (toDeg - fromDeg) * k / steps; };
    std::vector<Spot> outline;
    for (int k = 0; k <= steps; ++k) outline.push_back(half.At(azimuth(k), lowDeg));
    for (int k = steps; k >= 0; --k) outline.push_back(half.At(azimuth(k), highDeg));
    svg.Area(outline, colour);
}

/// Draws the cells; neighbours of the same shade become one area.
void DrawCells(Svg& svg, const CoverageMap& map, const Half& half) {
    const auto& cells = map.cells;
    for (std::size_t first = 0; first < cells.size();) {
        const Shade& shade = ShadeOf(cells[first]);
        std::size_t end = first + 1;
        while (end < cells.size() && cells[end].bottomDeg == cells[first].bottomDeg &&
               &ShadeOf(cells[end]) == &shade)
            ++end;
        const double low = std::max(
            0.0, half.sign * (half.sign > 0 ? cells[first].bottomDeg : cells[first].topDeg));
        const double high =
            half.sign * (half.sign > 0 ? cells[first].topDeg : cells[first].bottomDeg);
        constexpr double kSeamDeg =
            0.2;  // overlap of the rings, since gaps between them would show as lines
        if (high > low && !shade.colour.empty()) {
            const double from = cells[first].azimuthDeg - cells[first].widthDeg / 2;
            DrawPiece(svg, half, from,
                      from + cells[first].widthDeg * static_cast<double>(end - first),
                      half.sign * low, half.sign * std::min(high + kSeamDeg, 90.0), shade.colour);
        }
        first = end;
    }
}

void DrawSpeakerDots(Svg& svg, const Scene& scene, const Half& half) {
    LabelRoom room({half.centre.x - kRadius - kMargin, half.centre.y - kRadius - kMargin},
                   2 * (kRadius + kMargin), 2 * (kRadius + kMargin));
    std::vector<std::pair<Spot, std::size_t>> dots;
    for (std::size_t k = 0; k < scene.speakers.size(); ++k) {
        const double elevation = static_cast<double>(tav::ElevationDeg(scene.speakers[k]));
        if (half.sign * elevation < -0.5 || !(DistanceOf(scene.speakers[k]) > 0)) continue;
        const double azimuth = static_cast<double>(tav::NavigationalAzimuthDeg(scene.speakers[k]));
        dots.emplace_back(half.At(azimuth, elevation), k);
    }
    const double size = dots.size() > 40 ? 2 : 3.5;
    for (const auto& [spot, k] : dots) {
        svg.Circle(spot, size, kInk, {"white", 1});
        room.Block(spot, 2 * size, 2 * size);
    }
    for (const auto& [spot, k] : dots) {
        if (dots.size() > 40 && (k + 1) % 5 != 0 && k != 0) continue;
        const double out = std::atan2(spot.y - half.centre.y, spot.x - half.centre.x);
        const Spot spots[] = {{spot.x + 12 * std::cos(out), spot.y + 12 * std::sin(out)},
                              {spot.x - 12 * std::cos(out), spot.y - 12 * std::sin(out)},
                              {spot.x + 14, spot.y},
                              {spot.x - 14, spot.y}};
        room.Place(svg, spots, std::to_string(k + 1), {.size = 9, .bold = true, .halo = true});
    }
}

void DrawHalf(Svg& svg, const Scene& scene, const Half& half) {
    svg.Circle(half.centre, kRadius, "white");
    DrawCells(svg, scene.coverage, half);
    for (const double elevation : {30.0, 60.0}) {
        const Spot spot = half.At(0, half.sign * elevation);
        svg.Circle(half.centre, half.centre.y - spot.y, "none", {kFrame});
    }
    for (const double azimuth : {0.0, 90.0})
        svg.Line(half.At(azimuth, 0), half.At(azimuth + 180, 0), {kFrame});
    svg.Circle(half.centre, kRadius, "none", {kQuietInk});
    DrawSpeakerDots(svg, scene, half);
    const double below = half.centre.y + kRadius + kMargin + 8;
    svg.Text({half.centre.x, below}, half.title,
             {.size = 12, .colour = kQuietInk, .anchor = "middle"});
}

void DrawKey(Svg& svg, Spot spot) {
    const auto row = [&](const Shade& shade) {
        svg.Box({spot.x, spot.y - 7}, 22, 14, shade.colour.empty() ? "white" : shade.colour, 1, 2,
                {kFrame});
        svg.Text({spot.x + 32, spot.y}, shade.text);
        spot.y += 22;
    };
    for (const Shade& shade : kShades) row(shade);
    row(kSilent);
}

std::string Percent(double share) { return LabelNumber(100 * share, 1) + " %"; }

std::vector<std::string> Facts(const CoverageMap& map) {
    std::vector<std::string> facts{
        "silent: " + Percent(map.silentShare) + " of the sphere, " + Percent(map.silentUpperShare) +
            " of its upper half",
        "misplaced by " + LabelNumber(map.meanErrorDeg, 1) + "\u00b0 in the mean, at worst by " +
            LabelNumber(map.worstErrorDeg, 0) + "\u00b0",
        "(azimuth " + LabelNumber(map.worstAzimuthDeg, 0) + "\u00b0, elevation " +
            LabelNumber(map.worstElevationDeg, 0) + "\u00b0)"};
    facts.push_back("on the horizon by " + LabelNumber(map.meanHorizonErrorDeg, 1) +
                    "\u00b0 in the mean, at worst by " + LabelNumber(map.worstHorizonErrorDeg, 0) +
                    "\u00b0");
    if (map.isFlat) facts.emplace_back("flat: all loudspeakers stand at the height of the ears");
    if (map.leftRight)
        facts.push_back(*map.leftRight < 1e-3 ? "left and right are mirror images"
                                              : "left and right differ by gains of up to " +
                                                    LabelNumber(*map.leftRight, 3));
    return facts;
}

}  // namespace

double DrawCoverage(Svg& svg, const Scene& scene, Spot corner, double keyLeft) {
    const CoverageMap& map = scene.coverage;
    if (map.cells.empty()) return 0;
    svg.Begin("coverage");
    svg.Text(
        {corner.x, corner.y - 15},
        "How a source is heard from every direction, " + MetresText(map.distanceMetres) + " away",
        {.size = 15, .bold = true});
    const double middle = corner.y + kMargin + kRadius;
    const double left = corner.x + kMargin + kRadius;
    DrawHalf(svg, scene, {{left, middle}, 1, "upper half, from above"});
    DrawHalf(svg, scene,
             {{left + 2 * kRadius + 2.5 * kMargin, middle}, -1, "lower half, from above"});
    DrawKey(svg, {keyLeft, corner.y + kMargin});
    double y = corner.y + kMargin + 130;
    for (const std::string& fact : Facts(map)) {
        svg.Text({keyLeft, y}, fact, {.size = 13, .colour = kQuietInk});
        y += 20;
    }
    svg.End();
    return 2 * (kRadius + kMargin) + 82;
}

}  // namespace Quilo::Host
