// SPDX-License-Identifier: MIT
#include "picture/HostPlanPanel.h"

#include "picture/HostLabels.h"
#include "picture/HostPlot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace Quilo::Host {

namespace {

constexpr double kSmallestExtent = 1.2;  // metres from the listener to the edge of a view
constexpr double kEdge = 16;  // pixels from the edge at which positions beyond the view are drawn
constexpr std::string_view kSpeakerColour = "#3b4652";

double Length(Spot spot) { return std::hypot(spot.x, spot.y); }

double Between(Spot a, Spot b) { return Length({a.x - b.x, a.y - b.y}); }

/// Half the width and half the height, in metres, of a view of all positions within reach.
Spot Extents(const Scene& scene, const View& view, double reach) {
    Spot extents{0, 0};
    const auto take = [&](const tav::CartesianVector& position) {
        if (!(DistanceOf(position) <= reach)) return;
        extents.x = std::max(extents.x, std::abs(static_cast<double>(position.*view.across)));
        extents.y = std::max(extents.y, std::abs(static_cast<double>(position.*view.up)));
    };
    for (const auto& speaker : scene.speakers) take(speaker);
    for (const auto& moment : scene.path)
        for (const auto& source : moment.sources) take(source);
    return {1.25 * extents.x, 1.25 * extents.y};
}

Plot PlotOf(const Scene& scene, const View& view, Spot corner, double width, double height) {
    const Spot extents = Extents(scene, view, ReachOf(scene));
    // The larger side decides, so that both views of a flat scene have the same scale.
    const double across = std::max({kSmallestExtent, extents.x, extents.y * width / height});
    const double up = across * height / width;
    return {corner, width, height, -across, across, -up, up};
}

/// Loudspeakers at the same place in a view; they share one label.
struct SpeakerGroup {
    Spot spot;
    std::string label;
    std::size_t first = 0;  // outlet, from 0
    int count = 0;
};

constexpr std::size_t kCountable = 60;  // if there are more loudspeakers, only some have a label

/// Whether an outlet has a round number: 1 or a multiple of 5.
bool IsRound(std::size_t outlet) { return outlet == 0 || (outlet + 1) % 5 == 0; }

/// Order in which labels are placed: round numbers first, so that dense layouts can be counted.
int LabelRank(std::size_t outlet) {
    if (outlet == 0 || (outlet + 1) % 50 == 0) return 0;
    return (outlet + 1) % 10 == 0 ? 1 : IsRound(outlet) ? 2 : 3;
}

/// Draws one view.
class Plan {
public:
    Plan(Svg& svg, const Scene& scene, const View& view, Spot corner, double width, double height)
        : svg_(svg),
          scene_(scene),
          view_(view),
          reach_(ReachOf(scene)),
          plot_(PlotOf(scene, view, corner, width, height)),
          room_(corner, width, height),
          listener_(plot_.At(0, 0)),
          numSources_(scene.path.empty() ? 0 : scene.path.back().sources.size()) {
        for (const auto& speaker : scene.speakers) speakers_.push_back(Place(speaker));
        speakerSize_ = SpeakerSize();
        sourceRadius_ = std::clamp(
            kSourceRadius * std::sqrt(24 / std::max(1.0, static_cast<double>(numSources_))), 3.0,
            kSourceRadius);
    }

    void Draw(double timeStep) {
        const double step = RoundStep(plot_.right - plot_.left, 10);
        DrawFrame(svg_, plot_, step, step, true);
        DrawTitles(svg_, plot_, view_.title, view_.acrossTitle, view_.upTitle);
        svg_.Line(plot_.At(plot_.left, 0), plot_.At(plot_.right, 0), {kFrame});
        svg_.Line(plot_.At(0, plot_.bottom), plot_.At(0, plot_.top), {kFrame});
        DrawWays();
        DrawDots(timeStep);
        DrawListener(svg_, listener_, view_.noseUp);
        room_.Block(listener_, 3 * kListenerRadius, 3 * kListenerRadius);
        DrawSpeakers();
        DrawSources();
        DrawFarLabels();
        DrawSpeakerLabels();
        DrawTimes(timeStep);
        if (!HasNumberedDiscs()) DrawSourceLabels();
    }

private:
    bool IsCrowd() const { return numSources_ > 12; }
    bool HasNumberedDiscs() const { return sourceRadius_ > 7; }

    /// Where a position is drawn; one beyond the frame is moved to its edge, towards the listener.
    Spot Place(const tav::CartesianVector& position) const {
        const double across = static_cast<double>(position.*view_.across);
        const double up = static_cast<double>(position.*view_.up);
        const double most =
            std::max(std::abs(across) * (plot_.width / 2) / (plot_.width / 2 - kEdge) / plot_.right,
                     std::abs(up) * (plot_.height / 2) / (plot_.height / 2 - kEdge) / plot_.top);
        const double pull = most > 1 && !(DistanceOf(position) <= reach_) ? 1 / most : 1;
        return plot_.At(across * pull, up * pull);
    }

    /// Size factor of loudspeakers, smaller where they are close to each other.
    double SpeakerSize() const {
        std::vector<double> nearest;
        for (const Spot& spot : speakers_) {
            double least = std::numeric_limits<double>::max();
            for (const Spot& other : speakers_)
                if (const double d = Between(spot, other); d > 1) least = std::min(least, d);
            nearest.push_back(least);
        }
        if (nearest.size() < 12) return 1;
        const auto middle = nearest.begin() + static_cast<std::ptrdiff_t>(nearest.size() / 2);
        std::ranges::nth_element(nearest, middle);
        return std::clamp(*middle / 20, 0.25, 1.0);
    }

    void DrawSpeakers() {
        for (const Spot& spot : speakers_) {
            const double turn = std::atan2(spot.y - listener_.y, spot.x - listener_.x);
            DrawSpeaker(svg_, spot, turn * 180 / std::numbers::pi, speakerSize_);
            room_.Block(spot, 13 * speakerSize_, 13 * speakerSize_);
        }
    }

    std::vector<SpeakerGroup> GroupSpeakers() const {
        // Seen from the side, a ring is a dense row, so a label stands for more neighbours.
        const double nearby = speakerSize_ < 1 ? 2 : view_.noseUp ? 12 : 28;
        const int most = view_.noseUp && speakerSize_ == 1 ? 4 : 2;
        std::vector<SpeakerGroup> groups;
        for (std::size_t k = 0; k < speakers_.size(); ++k) {
            auto group = std::ranges::find_if(groups, [&](const SpeakerGroup& other) {
                return Between(other.spot, speakers_[k]) < nearby;
            });
            if (group == groups.end()) group = groups.insert(group, {speakers_[k], "", k, 0});
            ++group->count;
            const std::string number = std::to_string(k + 1);
            if (group->count == 1)
                group->label = number;
            else if (group->count <= most)
                group->label += ", " + number;
            else if (group->count == most + 1)
                group->label += " \u2026";
        }
        std::ranges::stable_sort(groups, {},
                                 [](const SpeakerGroup& group) { return LabelRank(group.first); });
        return groups;
    }

    void DrawSpeakerLabels() {
        const double size = speakerSize_ < 1 ? 9 : 13;
        for (const SpeakerGroup& group : GroupSpeakers()) {
            if (speakers_.size() > kCountable && !IsRound(group.first)) continue;
            Spot away{group.spot.x - listener_.x, group.spot.y - listener_.y};
            const double length = Length(away);
            // Seen from the side, most loudspeakers are in a row with the listener, so labels go
            // above.
            away =
                length < 1 || !view_.noseUp ? Spot{0, -1} : Spot{away.x / length, away.y / length};
            const double half = TextWidth(group.label, size) / 2;
            const auto at = [&](double distance) {
                const double room = distance + 7 * speakerSize_ + size / 2 +
                                    std::max(0.0, half - size / 2) * std::abs(away.x);
                return Spot{group.spot.x + room * away.x, group.spot.y + room * away.y};
            };
            const Spot aside{group.spot.x + half + 9 * speakerSize_ + 1, group.spot.y};
            const Spot below{group.spot.x, group.spot.y + 7 * speakerSize_ + size / 2 + 2};
            const Spot spots[] = {at(1), at(7), aside, below};
            room_.Place(svg_, std::span(spots).first(speakerSize_ < 1 ? 2 : 4), group.label,
                        {.size = size, .bold = true, .halo = true});
        }
    }

    /// The path of one source, without repeated places.
    std::vector<Spot> WayOf(std::size_t source) const {
        std::vector<Spot> way;
        for (const Scene::Moment& moment : scene_.path) {
            if (source >= moment.sources.size() || !tav::IsFinite(moment.sources[source])) continue;
            const Spot spot = Place(moment.sources[source]);
            if (way.empty() || Between(spot, way.back()) > 0.3) way.push_back(spot);
        }
        return way;
    }

    void DrawWays() {
        for (std::size_t k = 0; k < numSources_; ++k)
            svg_.Polyline(WayOf(k), {SourceColour(k), IsCrowd() ? 1.2 : 2.6, IsCrowd() ? 0.4 : 0.9,
                                     SourceDashes(k)});
        for (std::size_t k = 0; k < numSources_; ++k)
            if (const std::vector<Spot> way = WayOf(k); way.size() > 1)
                svg_.Circle(way.front(), sourceRadius_ + (IsCrowd() ? 1.5 : 3.5), "none",
                            {SourceColour(k), IsCrowd() ? 1.0 : 2.0});
    }

    void DrawSources() {
        for (std::size_t k = 0; k < numSources_; ++k) {
            const std::vector<Spot> way = WayOf(k);
            if (way.empty()) continue;
            if (HasNumberedDiscs())
                DrawSource(svg_, way.back(), k);
            else
                svg_.Circle(way.back(), sourceRadius_, SourceColour(k), {"white", 0.6});
            room_.Block(way.back(), 2 * sourceRadius_, 2 * sourceRadius_);
        }
    }

    void DrawSourceLabels() {
        std::vector<std::size_t> order(numSources_);
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::ranges::stable_sort(order, {}, LabelRank);
        for (const std::size_t k : order) {
            const std::vector<Spot> way = WayOf(k);
            if (way.empty()) continue;
            const double aside = sourceRadius_ + 9;
            const Spot spots[] = {{way.back().x + aside, way.back().y},
                                  {way.back().x - aside, way.back().y},
                                  {way.back().x, way.back().y - sourceRadius_ - 6}};
            room_.Place(svg_, spots, std::to_string(k + 1),
                        {.size = 8, .colour = SourceColour(k), .halo = true});
        }
    }

    /// Labels a position beyond the frame with its distance.
    void DrawFarLabel(const tav::CartesianVector& position) {
        if (DistanceOf(position) <= reach_) return;
        const Spot spot = Place(position);
        const std::string text = MetresText(DistanceOf(position));
        const double aside = TextWidth(text, 11) / 2 + kSourceRadius + 1;
        const Spot spots[] = {{spot.x, spot.y - 17},
                              {spot.x, spot.y + 17},
                              {spot.x - aside, spot.y},
                              {spot.x + aside, spot.y}};
        room_.Place(svg_, spots, text, {.size = 11, .colour = kQuietInk, .halo = true});
    }

    void DrawFarLabels() {
        for (std::size_t k = 0; k < numSources_; ++k) DrawFarLabel(scene_.path.back().sources[k]);
        for (const auto& speaker : scene_.speakers) DrawFarLabel(speaker);
    }

    /// Where a source was at a multiple of the time step.
    struct Dot {
        std::size_t source;
        Spot spot;
        double seconds;
    };

    /// The dots of a path; none while the source rests, nor at the start and the end.
    std::vector<Dot> DotsOf(std::size_t source, double timeStep) const {
        std::vector<Dot> dots;
        const std::vector<Spot> way = WayOf(source);
        if (way.size() < 2) return dots;
        double due = timeStep;
        Spot last = way.front();
        for (const Scene::Moment& moment : scene_.path) {
            if (moment.seconds < due - 1e-9 || source >= moment.sources.size()) continue;
            const Spot spot = Place(moment.sources[source]);
            if (Between(spot, last) >= 1 && Between(spot, way.back()) > sourceRadius_)
                dots.push_back({source, spot, due});
            last = spot;
            due = timeStep * (std::floor(moment.seconds / timeStep + 1e-9) + 1);
        }
        return dots;
    }

    void DrawDots(double timeStep) {
        if (IsCrowd()) return;
        for (std::size_t k = 0; k < numSources_; ++k)
            for (const Dot& dot : DotsOf(k, timeStep))
                svg_.Circle(dot.spot, 3.2, "white", {SourceColour(k), 1.6});
    }

    void DrawTimes(double timeStep) {
        if (!view_.noseUp || numSources_ > 3) return;
        for (std::size_t k = 0; k < numSources_; ++k)
            for (const Dot& dot : DotsOf(k, timeStep)) {
                const Spot in{listener_.x - dot.spot.x, listener_.y - dot.spot.y};
                const double scale = 19 / std::max(Length(in), 19.0);
                const Spot spots[] = {{dot.spot.x + in.x * scale, dot.spot.y + in.y * scale},
                                      {dot.spot.x - in.x * scale, dot.spot.y - in.y * scale}};
                room_.Place(svg_, spots, LabelNumber(dot.seconds) + " s",
                            {.size = 11, .colour = kQuietInk, .halo = true});
            }
    }

    Svg& svg_;
    const Scene& scene_;
    const View& view_;
    double reach_;  // metres
    Plot plot_;
    LabelRoom room_;
    Spot listener_;
    std::size_t numSources_;
    std::vector<Spot> speakers_;
    double speakerSize_ = 1;
    double sourceRadius_ = kSourceRadius;  // pixels
};

}  // namespace

void DrawSpeaker(Svg& svg, Spot spot, double turnDeg, double size) {
    // A loudspeaker symbol that opens towards the listener.
    const double turn = turnDeg * std::numbers::pi / 180;
    const Spot out{size * std::cos(turn), size * std::sin(turn)}, along{-out.y, out.x};
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
        svg.Circle(spot, r, "white", outline);
    } else {
        svg.Area(noseRight, kInk);
        svg.Circle(spot, r, "white", outline);
        svg.Box({spot.x - 3, spot.y - 4}, 5, 8, kInk, 1, 2);
    }
}

void DrawSource(Svg& svg, Spot spot, std::size_t source) {
    svg.Circle(spot, kSourceRadius, SourceColour(source), {"white", 1.5});
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
    svg.Begin(view.name);
    Plan(svg, scene, view, corner, width, height).Draw(timeStep);
    svg.End();
}

}  // namespace Quilo::Host
