// SPDX-License-Identifier: MIT
#include "picture/HostTimePanel.h"

#include "math/VelkDspCoordinates.h"
#include "picture/HostPlot.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quilo::Host {

namespace {

constexpr double kQuietest = -60;  // dB, at the bottom of a strip
constexpr std::string_view kLevelColour = "#3f6c9b";

/// One coordinate of a position over time.
struct Trace {
    std::string_view title;
    std::string_view unit;
    double bottom, top, step;
    bool wraps;  // cyclic: a change of more than half the range breaks the line
    double (*number)(const tav::CartesianVector&);
};

std::vector<double> NumbersOf(const Scene& scene, const Trace& trace, std::size_t source) {
    std::vector<double> numbers;
    numbers.reserve(scene.path.size());
    for (const Scene::Moment& moment : scene.path)
        numbers.push_back(source < moment.sources.size() ? trace.number(moment.sources[source])
                                                         : 0.0);
    return numbers;
}

void DrawTraceOf(
    Svg& svg, const Scene& scene, const Trace& trace, const Plot& plot, std::size_t k) {
    const bool crowded = scene.path.front().sources.size() > 24;
    const Stroke stroke{SourceColour(k), crowded ? 0.8 : 2.2, crowded ? 0.5 : 0.9,
                        crowded ? "" : SourceDashes(k)};
    const std::vector<double> numbers = NumbersOf(scene, trace, k);
    std::vector<Spot> line;
    for (std::size_t m = 0; m < numbers.size(); ++m) {
        const bool jumps = trace.wraps && m > 0 &&
                           std::abs(numbers[m] - numbers[m - 1]) > (trace.top - trace.bottom) / 2;
        if (jumps) {
            svg.Polyline(line, stroke);
            line.clear();
        }
        const bool rests = m > 0 && m + 1 < numbers.size() && numbers[m] == numbers[m - 1] &&
                           numbers[m] == numbers[m + 1];
        if (!rests || jumps)
            line.push_back(plot.At(scene.path[m].seconds, std::min(numbers[m], trace.top)));
    }
    if (!line.empty())
        line.push_back({plot.Side(), line.back().y});  // the last value lasts to the end
    svg.Polyline(line, stroke);
}

/// Smallest and largest value over all sources.
std::pair<double, double> RangeOf(const Scene& scene, const Trace& trace) {
    double least = std::numeric_limits<double>::max(), most = std::numeric_limits<double>::lowest();
    for (const Scene::Moment& moment : scene.path)
        for (const auto& source : moment.sources) {
            least = std::min(least, trace.number(source));
            most = std::max(most, trace.number(source));
        }
    return {least, most};
}

/// Whether the distance of any source changes by more than 2 %.
bool DistancesChange(const Scene& scene) {
    const auto& first = scene.path.front().sources;
    return std::ranges::any_of(scene.path, [&](const Scene::Moment& moment) {
        for (std::size_t k = 0; k < std::min(first.size(), moment.sources.size()); ++k) {
            const double before = DistanceOf(first[k]), now = DistanceOf(moment.sources[k]);
            if (std::abs(now - before) > 0.02 * before) return true;
        }
        return false;
    });
}

std::vector<Trace> TracesOf(const Scene& scene) {
    std::vector<Trace> traces;
    if (scene.path.empty() || scene.path.front().sources.empty()) return traces;
    using Position = tav::CartesianVector;
    const Trace azimuth{
        "Azimuth of the sources", "degrees", -180, 180, 90, true, [](const Position& p) {
            return static_cast<double>(tav::NavigationalAzimuthDeg(p));
        }};
    const Trace elevation{
        "Elevation of the sources", "degrees", -90, 90, 45, false, [](const Position& p) {
            return static_cast<double>(tav::ElevationDeg(p));
        }};
    Trace distance{"Distance of the sources",
                   "m",
                   0,
                   1,
                   1,
                   false,
                   [](const Position& p) {
                       return DistanceOf(p); }};
    traces.push_back(azimuth);
    const auto [lowest, highest] = RangeOf(scene, elevation);
    if (lowest < -0.5 || highest > 0.5) traces.push_back(elevation);
    // Distances beyond the reach of the scene are drawn at the top.
    const double farthest = std::min(RangeOf(scene, distance).second, ReachOf(scene));
    distance.step = RoundStep(farthest, 3);
    distance.top = distance.step * std::max(1.0, std::ceil(farthest / distance.step * 1.02));
    if (DistancesChange(scene)) traces.push_back(distance);
    return traces;
}

/// Level of an outlet over several slots, from 0 (-60 dB or less) to 1 (full scale).
double Loudness(std::span<const double> power) {
    double sum = 0;
    for (const double slot : power) sum += slot;
    const double decibel = 10 * std::log10(sum / static_cast<double>(power.size()) + 1e-30);
    return std::clamp((decibel - kQuietest) / -kQuietest, 0.0, 1.0);
}

void DrawStrip(Svg& svg, std::span<const double> power, Spot corner, double width, double height) {
    std::vector<Spot> outline{{corner.x, corner.y + height}};
    for (std::size_t k = 0; k < power.size(); ++k) {
        const double x =
            corner.x + (static_cast<double>(k) + 0.5) / static_cast<double>(power.size()) * width;
        outline.push_back({x, corner.y + height * (1 - Loudness(power.subspan(k, 1)))});
    }
    outline.push_back({corner.x + width, corner.y + height});
    svg.Area(outline, kLevelColour, 0.85);
}

void DrawBand(Svg& svg,
              std::span<const double> power,
              Spot corner,
              double width,
              double height,
              std::size_t numColumns) {
    numColumns = std::min(numColumns, power.size());
    const auto columnStart = [&](std::size_t column) { return column * power.size() / numColumns; };
    for (std::size_t k = 0; k < numColumns; ++k) {
        const std::size_t first = columnStart(k), end = columnStart(k + 1);
        const double loudness = Loudness(power.subspan(first, end - first));
        const double step = width / static_cast<double>(numColumns);
        if (loudness > 0)
            svg.Box({corner.x + static_cast<double>(k) * step, corner.y}, step + 0.2, height,
                    kLevelColour, loudness);
    }
}

/// Draws the number of an outlet and, if it is a loudspeaker, its direction.
void DrawOutletLabel(Svg& svg, const Scene& scene, std::size_t outlet, Spot spot, bool small) {
    const bool placed = scene.speakers.size() == scene.power.size();
    const double size = small ? 9 : 13;
    const double direction = placed ? 50 : 0;
    svg.Text({spot.x - direction, spot.y}, std::to_string(outlet + 1),
             {.size = size, .anchor = "end", .bold = true});
    if (!placed) return;
    const double azimuth = static_cast<double>(tav::NavigationalAzimuthDeg(scene.speakers[outlet]));
    svg.Text(spot, LabelNumber(azimuth, 0) + "\u00b0",
             {.size = size, .colour = kQuietInk, .anchor = "end"});
}

}  // namespace

double DrawTraces(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep) {
    constexpr double kHeight = 110, kGap = 50;
    double used = 0;
    svg.Begin("traces");
    for (const Trace& trace : TracesOf(scene)) {
        const Plot plot{
            {corner.x, corner.y + used}, width, kHeight, 0, scene.seconds, trace.bottom, trace.top};
        DrawFrame(svg, plot, timeStep, trace.step, false);
        DrawTitles(svg, plot, trace.title, "", trace.unit);
        for (std::size_t k = 0; k < scene.path.front().sources.size(); ++k)
            DrawTraceOf(svg, scene, trace, plot, k);
        used += kHeight + kGap;
    }
    svg.End();
    return used;
}

double DrawLevels(Svg& svg, const Scene& scene, Spot corner, double width, double timeStep) {
    const std::size_t numOutlets = scene.power.size();
    if (numOutlets == 0) return 0;
    const double row = std::clamp(440 / static_cast<double>(numOutlets), 4.0, 48.0);
    const double height = row * static_cast<double>(numOutlets);
    const Plot plot{corner, width, height, 0, scene.seconds, 0, 1};
    svg.Begin("levels");
    DrawFrame(svg, plot, timeStep, 0, true);
    DrawTitles(svg, plot, "Level of the outlets (RMS)", "time (s)", "");

    const bool bands = row < 16;
    const auto numColumns = std::clamp<std::size_t>(16000 / numOutlets, 60, 250);
    const auto labelEvery = static_cast<std::size_t>(std::ceil(11 / row));
    for (std::size_t k = 0; k < numOutlets; ++k) {
        const Spot place{corner.x, corner.y + row * static_cast<double>(k)};
        if (bands)
            DrawBand(svg, scene.power[k], place, width, row, numColumns);
        else
            DrawStrip(svg, scene.power[k], {place.x, place.y + 3}, width, row - 3);
        if (!bands && k > 0) svg.Line(place, {plot.Side(), place.y}, {kGrid});
        if (k % labelEvery == 0)
            DrawOutletLabel(svg, scene, k, {place.x - 8, place.y + row / 2}, row < 14);
    }
    if (row >= 30) {
        const TextStyle scale{.size = 10, .colour = kQuietInk};
        svg.Text({plot.Side() + 5, corner.y + 6}, "0 dB", scale);
        svg.Text({plot.Side() + 5, corner.y + row - 5}, LabelNumber(kQuietest) + " dB", scale);
    }
    svg.Text({plot.Side(), corner.y - 15},
             bands ? "white: \u221260 dB and below, full colour: 0 dB"
                   : "each strip from \u221260 to 0 dB of full scale",
             {.size = 12, .colour = kQuietInk, .anchor = "end"});
    svg.End();
    return height + 50;
}

}  // namespace Quilo::Host
