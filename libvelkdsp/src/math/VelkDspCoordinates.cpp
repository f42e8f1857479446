// SPDX-License-Identifier: MIT
#include "math/VelkDspCoordinates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace tav {
namespace {

using Format = Coordinates::Format;
using Position = CartesianVector;
using Change = void (*)(Position& p, const float* v);

struct FormatRow {
    Format format;
    std::string_view keyword;
    unsigned numValues;
    Change change;
};

// Sets a distance of at least 0.00001, so that the position keeps a direction.
void SetFlooredDistance(Position& p, float distance) {
    // In this order a NaN is kept, and the position is refused afterwards.
    SetDistance(p, std::max(distance, 0.00001f));
}

// clang-format off
// Row k is the format with the code k.
constexpr FormatRow kFormats[] = {
    // format          keyword    values  change
    {Format::Xyz,      "xyz",     3, [](Position& p, const float* v) { p = {v[0], v[1], v[2]}; }},
    {Format::Xy,       "xy",      2, [](Position& p, const float* v) { p = {v[0], v[1], 0.f}; }},
    {Format::AddX,     "x++",     1, [](Position& p, const float* v) { p.x += v[0]; }},
    {Format::AddY,     "y++",     1, [](Position& p, const float* v) { p.y += v[0]; }},
    {Format::AddZ,     "z++",     1, [](Position& p, const float* v) { p.z += v[0]; }},
    {Format::Ade,      "ade",     3, [](Position& p, const float* v) { p = FromNavigational(v[0], v[2], v[1]); }},
    {Format::Aed,      "aed",     3, [](Position& p, const float* v) { p = FromNavigational(v[0], v[1], v[2]); }},
    {Format::Ae,       "ae",      2, [](Position& p, const float* v) { p = FromNavigational(v[0], v[1], 1.f); }},
    {Format::Ad,       "ad",      2, [](Position& p, const float* v) { p = FromNavigational(v[0], 0.f, v[1]); }},
    {Format::Az,       "az",      1, [](Position& p, const float* v) { p = FromNavigational(v[0], 0.f, 1.f); }},
    {Format::Azim,     "azim",    1, [](Position& p, const float* v) { SetAzimuthDeg(p, v[0]); }},
    {Format::AddAzim,  "azim++",  1, [](Position& p, const float* v) { AddAzimuthDeg(p, v[0]); }},
    {Format::Elev,     "elev",    1, [](Position& p, const float* v) { SetElevationDeg(p, v[0]); }},
    {Format::AddElev,  "elev++",  1, [](Position& p, const float* v) { AddElevationDeg(p, v[0]); }},
    {Format::Dist,     "dist",    1, [](Position& p, const float* v) { SetFlooredDistance(p, std::abs(v[0])); }},
    {Format::AddDist,  "dist++",  1, [](Position& p, const float* v) { SetFlooredDistance(p, Distance(p) + v[0]); }},
    {Format::MulDist,  "dist*=",  1, [](Position& p, const float* v) { SetFlooredDistance(p, Distance(p) * v[0]); }},
    {Format::Quilo3,   "quilo3",  3, [](Position& p, const float* v) { p = FromNavigational(-v[0], v[2], v[1]); }},
    {Format::Wfs,      "wfs",     2, [](Position& p, const float* v) { p = FromNavigational(-v[0], 0.f, v[1]); }},
    {Format::X,        "x",       1, [](Position& p, const float* v) { p.x = v[0]; }},
    {Format::Y,        "y",       1, [](Position& p, const float* v) { p.y = v[0]; }},
    {Format::Z,        "z",       1, [](Position& p, const float* v) { p.z = v[0]; }},
    {Format::None,     "none",    0, nullptr},  // Deliberate: printed, never accepted
};
// clang-format on

const FormatRow* RowOf(Format format) noexcept {
    const auto index = static_cast<std::size_t>(format);  // a negative value becomes a huge one
    return index < std::size(kFormats) ? &kFormats[index] : nullptr;
}

}  // namespace

std::string_view Coordinates::FormatText(Format format) noexcept {
    const FormatRow* row = RowOf(format);
    return row ? row->keyword : std::string_view();
}

std::optional<Format> Coordinates::ParseFormat(std::string_view keyword) noexcept {
    for (const FormatRow& row : kFormats) {
        if (row.change && row.keyword == keyword) return row.format;
    }
    return std::nullopt;
}

unsigned Coordinates::NumValues(Format format) noexcept {
    const FormatRow* row = RowOf(format);
    return row ? row->numValues : 0;
}

bool Coordinates::Apply(CartesianVector& position,
                        Format format,
                        std::span<const float> values) noexcept {
    const FormatRow* row = RowOf(format);
    if (!row || !row->change || values.size() < row->numValues) return false;
    const auto needed = values.first(row->numValues);
    if (!std::ranges::all_of(needed, [](float value) { return std::isfinite(value); }))
        return false;

    CartesianVector changed = position;
    row->change(changed, needed.data());
    if (!IsFinite(changed)) return false;
    position = changed;
    return true;
}

}  // namespace tav
