// SPDX-License-Identifier: MIT
#include "picture/HostPlanPanel.h"

#include "picture/HostPlot.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo::Host {

namespace {

constexpr double kSmallestExtent = 1.2;  // metres from the listener to the edge of a view
constexpr std::string_view kSpeakerColour = "#3b4652";

double Length(Spot spot) { return std::hypot(spot.x, spot.y); }

/// Half the width and half the height, in metres, that hold everything with some room.
Spot Extents(const Scene& scene, const View& view) {
    Spot extents{0, 0};
    const auto take = [&](const tav::CartesianVector& position) {
        if (!tav::IsFinite(position)) return;
        extents.x = std::max(extents.x, std::abs(static_cast<double>(position.*view.across)));
        extents.y = std::max(extents.y, std::abs(static_cast<double>(position.*view.up)));
    };
    for (const auto& speaker : scene.speakers) take(speaker);
    for (const auto& moment : scene.path)
        for (const auto& source : moment.sources) take(source);
    return {1.25 * extents.x, 1.25 * extents.y};
}

Plot PlotOf(const Scene& scene, const View& view, Spot corner, double width, double height) {
    const Spot extents = Extents(scene, view);
    // Both views of a flat scene have the same scale, for the larger side decides.
    const double across = std::max({kSmallestExtent, extents.x, extents.y * width / height});
    const double up = across * height / width;
    return {corner, width, height, -across, across, -up, up};
}

Spot Place(const Plot& plot, const View& view, const tav::CartesianVector& position) {
    return plot.At(static_cast<double>(position.*view.across),
                   static_cast<double>(position.*view.up));
}

/// Loudspeakers that one view shows at one place carry one label.
struct SpeakerGroup {
    Spot spot;
    std::string label;
    int count = 0;
};

std::vector<SpeakerGroup> GroupSpeakers(const Scene& scene, const Plot& plot, const View& view) {
    // From the side a ring looks like a crowded row: labels gather from farther.
    const double nearby = view.noseUp ? 12 : 28;
    const int most = view.noseUp ? 4 : 2;
    std::vector<SpeakerGroup> groups;
    for (std::size_t k = 0; k < scene.speakers.size(); ++k) {
        const Spot spot = Place(plot, view, scene.speakers[k]);
        auto group = std::ranges::find_if(groups, [&](const SpeakerGroup& other) {
            return Length({other.spot.x - spot.x, other.spot.y - spot.y}) < nearby;
        });
        if (group == groups.end()) group = groups.insert(group, {spot, "", 0});
        ++group->count;
        const std::string number = std::to_string(k + 1);
        if (group->count == 1)
            group->label = number;
        else if (group->count <= most)
            group->label += ", " + number;
        else if (group->count == most + 1)
            group->label += " \u2026";
    }
    return groups;
}

void DrawSpeakers(Svg& svg, const Scene& scene, const Plot& plot, const View& view) {
    const Spot listener = plot.At(0, 0);
    for (const auto& speaker : scene.speakers) {
        const Spot spot = Place(plot, view, speaker);
        const double turn = std::atan2(spot.y - listener.y, spot.x - listener.x);
        DrawSpeaker(svg, spot, turn * 180 / std::numbers::pi);
    }
}

void DrawSpeakerLabels(Svg& svg, const Scene& scene, const Plot& plot, const View& view) {
    const Spot listener = plot.At(0, 0);
    const bool crowded = scene.speakers.size() > (view.noseUp ? 40 : 12);
    for (const SpeakerGroup& group : GroupSpeakers(scene, plot, view)) {
        Spot away{group.spot.x - listener.x, group.spot.y - listener.y};
        const double length = Length(away);
        // From the side most loudspeakers stand in a row with the listener: labels go above it.
        away = length < 1 || !view.noseUp ? Spot{0, -1} : Spot{away.x / length, away.y / length};
        const double room = 17 + (group.count > 1 && std::abs(away.x) > 0.7 ? 10 : 0);
        svg.Text({group.spot.x + room * away.x, group.spot.y + room * away.y}, group.label,
                 {.size = crowded ? 9.0 : 13.0, .anchor = "middle", .bold = true, .halo = true});
    }
}

/// The places of one source, without those where it stands still.
std::vector<Spot> WayOf(const Scene& scene,
                        const Plot& plot,
                        const View& view,
                        std::size_t source) {
    std::vector<Spot> way;
    for (const Scene::Moment& moment : scene.path) {
        if (source >= moment.sources.size() || !tav::IsFinite(moment.sources[source])) continue;
        const Spot spot = Place(plot, view, moment.sources[source]);
        if (way.empty() || Length({spot.x - way.back().x, spot.y - way.back().y}) > 0.3)
            way.push_back(spot);
    }
    return way;
}

/// A dot wherever another step of time has passed, with its time where there is room for it.
void DrawTimeDots(Svg& svg,
                  const Scene& scene,
                  const Plot& plot,
                  const View& view,
                  std::size_t source,
                  double timeStep) {
    const bool labelled = view.noseUp && scene.numInlets <= 3;
    const Spot listener = plot.At(0, 0);
    double due = timeStep;
    for (const Scene::Moment& moment : scene.path) {
        if (moment.seconds < due - 1e-9 || source >= moment.sources.size()) continue;
        const Spot spot = Place(plot, view, moment.sources[source]);
        svg.Circle(spot, 3.2, "#ffffff", {SourceColour(source), 1.6});
        if (labelled) {
            const Spot in{listener.x - spot.x, listener.y - spot.y};
            const double scale = 17 / std::max(Length(in), 17.0);
            svg.Text({spot.x + in.x * scale, spot.y + in.y * scale}, LabelNumber(due) + " s",
                     {.size = 11, .colour = kQuietInk, .anchor = "middle", .halo = true});
        }
        due = timeStep * (std::floor(moment.seconds / timeStep + 1e-9) + 1);
    }
}

/// The ways of all sources, with their beginnings and their dots.
void DrawWays(Svg& svg,
              const Scene& scene,
              const Plot& plot,
              const View& view,
              std::size_t numSources,
              double timeStep) {
    const bool crowded = numSources > 12;
    for (std::size_t k = 0; k < numSources; ++k)
        svg.Polyline(WayOf(scene, plot, view, k),
                     {SourceColour(k), 2.6, crowded ? 0.5 : 0.9, SourceDashes(k)});
    for (std::size_t k = 0; k < numSources; ++k) {
        const std::vector<Spot> way = WayOf(scene, plot, view, k);
        if (way.size() < 2) continue;
        if (!crowded) DrawTimeDots(svg, scene, plot, view, k, timeStep);
        svg.Circle(way.front(), kSourceRadius + 3.5, "none", {SourceColour(k), 2});
    }
}

void DrawSources(
    Svg& svg, const Scene& scene, const Plot& plot, const View& view, std::size_t numSources) {
    for (std::size_t k = 0; k < numSources; ++k) {
        const std::vector<Spot> way = WayOf(scene, plot, view, k);
        if (!way.empty()) DrawSource(svg, way.back(), k);
    }
}

}  // namespace

void DrawSpeaker(Svg& svg, Spot spot, double turnDeg) {
    // A box with its wide mouth towards the listener.
    const double turn = turnDeg * std::numbers::pi / 180;
    const Spot out{std::cos(turn), std::sin(turn)}, along{-out.y, out.x};
    const auto at = [&](double outwards, double sidewards) {
        return Spot{spot.x + outwards * out.x + sidewards * along.x,
                    spot.y + outwards * out.y + sidewards * along.y};
    };
    const Spot box[] = {at(-6, -9), at(0, -5), at(6, -5), at(6, 5), at(0, 5), at(-6, 9)};
    svg.Area(box, kSpeakerColour);
}

void DrawListener(Svg& svg, Spot spot, bool noseUp) {
    const double r = kListenerRadius;
    const Stroke outline{kInk, 1.6};
    const Spot noseAbove[] = {
        {spot.x - 4, spot.y - r + 1}, {spot.x, spot.y - r - 6}, {spot.x + 4, spot.y - r + 1}};
    const Spot noseRight[] = {
        {spot.x + r - 1, spot.y - 3}, {spot.x + r + 6, spot.y + 1}, {spot.x + r - 1, spot.y + 5}};
    if (noseUp) {
        svg.Area(noseAbove, kInk);
        svg.Box({spot.x - r - 3, spot.y - 4}, 5, 8, kInk, 1, 2);
        svg.Box({spot.x + r - 2, spot.y - 4}, 5, 8, kInk, 1, 2);
        svg.Circle(spot, r, "#ffffff", outline);
    } else {
        svg.Area(noseRight, kInk);
        svg.Circle(spot, r, "#ffffff", outline);
        svg.Box({spot.x - 3, spot.y - 4}, 5, 8, kInk, 1, 2);
    }
}

void DrawSource(Svg& svg, Spot spot, std::size_t source) {
    svg.Circle(spot, kSourceRadius, SourceColour(source), {"#ffffff", 1.5});
    const bool isLong = source >= 99;
    svg.Text(spot, std::to_string(source + 1),
             {.size = isLong ? 9.0 : 11.0,
              .colour = SourceNumberColour(source),
              .anchor = "middle",
              .bold = true});
}

void DrawPlan(Svg& svg,
              const Scene& scene,
              const View& view,
              Spot corner,
              double width,
              double height,
              double timeStep) {
    const Plot plot = PlotOf(scene, view, corner, width, height);
    const double step = RoundStep(plot.right - plot.left, 10);
    DrawFrame(svg, plot, step, step, true);
    DrawTitles(svg, plot, view.title, view.acrossTitle, view.upTitle);
    svg.Line(plot.At(plot.left, 0), plot.At(plot.right, 0), {kFrame});
    svg.Line(plot.At(0, plot.bottom), plot.At(0, plot.top), {kFrame});
    const std::size_t numSources = scene.path.empty() ? 0 : scene.path.back().sources.size();
    DrawWays(svg, scene, plot, view, numSources, timeStep);
    DrawListener(svg, plot.At(0, 0), view.noseUp);
    DrawSpeakers(svg, scene, plot, view);
    DrawSpeakerLabels(svg, scene, plot, view);
    DrawSources(svg, scene, plot, view, numSources);
}

}  // namespace Quilo::Host
