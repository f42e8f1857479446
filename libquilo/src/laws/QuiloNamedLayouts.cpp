// SPDX-License-Identifier: MIT
#include "laws/QuiloNamedLayouts.h"

#include "math/VelkDspSpherePoints.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>

namespace Quilo {

namespace {

using Places = std::span<const LoudspeakerPlace>;

// clang-format off

// Systems A to E of BS.2051: each begins with those before it, so one list holds them all.
constexpr LoudspeakerPlace kFiveAndTops[] = {
    {"L", -30, 0},    {"R", 30, 0},
    {"C", 0, 0},      {"LFE", -60, -30}, {"Ls", -110, 0},  {"Rs", 110, 0},
    {"Ltf", -30, 30}, {"Rtf", 30, 30},
    {"Ltr", -110, 30}, {"Rtr", 110, 30},
    {"Cbf", 0, -30},
};

// Systems I, J and G, likewise.
constexpr LoudspeakerPlace kSevenAndTops[] = {
    {"L", -30, 0},    {"R", 30, 0},    {"C", 0, 0},       {"LFE", -60, -30},
    {"Lss", -90, 0},  {"Rss", 90, 0},  {"Lrs", -135, 0},  {"Rrs", 135, 0},
    {"Ltf", -45, 30}, {"Rtf", 45, 30}, {"Ltb", -135, 30}, {"Rtb", 135, 30},
    {"Lsc", -15, 0},  {"Rsc", 15, 0},
};

constexpr LoudspeakerPlace kSystemF[] = {
    {"C", 0, 0},    {"L", -30, 0}, {"R", 30, 0},    {"LH", -45, 30}, {"RH", 45, 30},  {"LS", -90, 0},
    {"RS", 90, 0},  {"LB", -135, 0}, {"RB", 135, 0}, {"CH", 180, 45}, {"LFE1", -60, -30}, {"LFE2", 60, -30},
};

constexpr LoudspeakerPlace kSystemH[] = {
    {"FL", -60, 0},     {"FR", 60, 0},     {"FC", 0, 0},      {"LFE1", -60, -30}, {"BL", -135, 0},   {"BR", 135, 0},
    {"FLc", -30, 0},    {"FRc", 30, 0},    {"BC", 180, 0},    {"LFE2", 60, -30},  {"SiL", -90, 0},   {"SiR", 90, 0},
    {"TpFL", -45, 30},  {"TpFR", 45, 30},  {"TpFC", 0, 30},   {"TpC", 0, 90},     {"TpBL", -135, 30}, {"TpBR", 135, 30},
    {"TpSiL", -90, 30}, {"TpSiR", 90, 30}, {"TpBC", 180, 30}, {"BtFC", 0, -30},   {"BtFL", -45, -30}, {"BtFR", 45, -30},
};

// Regular ones go round clockwise from front left, from the bottom up.
constexpr LoudspeakerPlace kQuad[] = {{"FL", -45, 0}, {"FR", 45, 0}, {"BR", 135, 0}, {"BL", -135, 0}};

constexpr LoudspeakerPlace kOctagon[] = {
    {"M1", -22.5f, 0}, {"M2", 22.5f, 0},   {"M3", 67.5f, 0},   {"M4", 112.5f, 0},
    {"M5", 157.5f, 0}, {"M6", -157.5f, 0}, {"M7", -112.5f, 0}, {"M8", -67.5f, 0},
};

constexpr float kCubeDeg = 35.2643897f;  // atan(1 / sqrt(2))
constexpr LoudspeakerPlace kCube[] = {
    {"BtFL", -45, -kCubeDeg}, {"BtFR", 45, -kCubeDeg}, {"BtBR", 135, -kCubeDeg}, {"BtBL", -135, -kCubeDeg},
    {"TpFL", -45, kCubeDeg},  {"TpFR", 45, kCubeDeg},  {"TpBR", 135, kCubeDeg},  {"TpBL", -135, kCubeDeg},
};

constexpr LoudspeakerPlace kDome24[] = {
    {"M1", -15, 0},     {"M2", 15, 0},      {"M3", 45, 0},       {"M4", 75, 0},       {"M5", 105, 0},   {"M6", 135, 0},
    {"M7", 165, 0},     {"M8", -165, 0},    {"M9", -135, 0},     {"M10", -105, 0},    {"M11", -75, 0},  {"M12", -45, 0},
    {"U1", -22.5f, 30}, {"U2", 22.5f, 30},  {"U3", 67.5f, 30},   {"U4", 112.5f, 30},
    {"U5", 157.5f, 30}, {"U6", -157.5f, 30}, {"U7", -112.5f, 30}, {"U8", -67.5f, 30},
    {"T1", -45, 60},    {"T2", 45, 60},     {"T3", 135, 60},     {"T4", -135, 60},
};

constexpr Places kFive(kFiveAndTops), kSeven(kSevenAndTops);

struct LayoutRow {
    Places places;
    std::array<std::string_view, 3> names;  // in BS.2051's terms the second and third
    std::string_view withoutLfe;            // "" where there is no low-frequency channel to leave out
};

const LayoutRow kLayouts[] = {
    // loudspeakers       names                       without LFE
    {kFive.first(2),     {"stereo", "0+2+0", "A"},   ""},
    {kQuad,              {"quad"},                   ""},
    {kFive.first(6),     {"5.1", "0+5+0", "B"},      "5.0"},
    {kFive.first(8),     {"5.1.2", "2+5+0", "C"},    "5.0.2"},
    {kFive.first(10),    {"5.1.4", "4+5+0", "D"},    "5.0.4"},
    {kFive,              {"5.1.4+1", "4+5+1", "E"},  "5.0.4+1"},
    {kSeven.first(8),    {"7.1", "0+7+0", "I"},      "7.0"},
    {kSeven.first(12),   {"7.1.4", "4+7+0", "J"},    "7.0.4"},
    {kSystemF,           {"7.2.3", "3+7+0", "F"},    "7.0.3"},
    {kSeven,             {"9.1.4", "4+9+0", "G"},    "9.0.4"},
    {kSystemH,           {"22.2", "9+10+3", "H"},    "22.0"},
    {kOctagon,           {"octagon"},                ""},
    {kCube,              {"cube"},                   ""},
    {kDome24,            {"dome-24"},                ""},
};

// clang-format on

constexpr std::string_view kFibonacci = "fibonacci-";
constexpr std::size_t kMostGridPlaces = 250;  // outlets of a panner

/// Labels S1, S2, ... for ever.
std::string_view GridLabel(std::size_t place) {
    static const auto labels = [] {
        std::array<std::string, kMostGridPlaces> texts;
        for (std::size_t k = 0; k < texts.size(); ++k) texts[k] = "S" + std::to_string(k + 1);
        return texts;
    }();
    return labels[place];
}

std::vector<LoudspeakerPlace> GridPlaces(std::span<const tav::SphereDirection> directions) {
    std::vector<LoudspeakerPlace> places;
    for (const tav::SphereDirection& direction : directions) {
        places.push_back({GridLabel(places.size()), static_cast<float>(direction.azimuthDeg),
                          static_cast<float>(direction.elevationDeg)});
    }
    return places;
}

/// Evenly spread loudspeakers all round.
std::optional<std::vector<LoudspeakerPlace>> FindGrid(std::string_view name) {
    for (const tav::SphereSet& set : tav::SphereSets()) {
        if (set.name == name) return GridPlaces(set.directions);
    }
    if (!name.starts_with(kFibonacci)) return std::nullopt;
    name.remove_prefix(kFibonacci.size());
    std::size_t count = 0;
    const auto [stop, fault] = std::from_chars(name.data(), name.data() + name.size(), count);
    const bool isNumber = fault == std::errc() && stop == name.data() + name.size();
    if (!isNumber || count == 0 || count > kMostGridPlaces) return std::nullopt;
    return GridPlaces(tav::FibonacciGrid(count));
}

bool IsLowFrequency(const LoudspeakerPlace& place) { return place.label.starts_with("LFE"); }

}  // namespace

std::optional<std::vector<LoudspeakerPlace>> FindNamedLayout(std::string_view name) {
    if (name.empty()) return std::nullopt;
    for (const LayoutRow& row : kLayouts) {
        const bool isWhole = std::ranges::find(row.names, name) != row.names.end();
        if (!isWhole && row.withoutLfe != name) continue;
        std::vector<LoudspeakerPlace> places(row.places.begin(), row.places.end());
        if (!isWhole) std::erase_if(places, IsLowFrequency);
        return places;
    }
    return FindGrid(name);
}

std::string LayoutNames() {
    std::string names;
    const auto add = [&](std::string_view name) {
        if (!name.empty()) names += (names.empty() ? "" : " ") + std::string(name);
    };
    for (const LayoutRow& row : kLayouts) {
        std::ranges::for_each(row.names, add);
        add(row.withoutLfe);
    }
    for (const tav::SphereSet& set : tav::SphereSets()) add(set.name);
    return names;
}

}  // namespace Quilo
