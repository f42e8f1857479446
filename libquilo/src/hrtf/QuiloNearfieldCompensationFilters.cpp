// SPDX-License-Identifier: MIT
#include "hrtf/QuiloNearfieldCompensationFilters.h"

#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <utility>

namespace Quilo {

namespace {

constexpr std::size_t kValuesOfOneCell = 6;
constexpr double kLowToneHz = 1000.0;
constexpr double kHighToneHz = 12000.0;

/// Squared magnitude of a cell.
double PowerAt(std::span<const float> cell, double hz, double rateHz) {
    const auto z = std::polar(1.0, -2.0 * std::numbers::pi * std::min(hz / rateHz, 0.5));
    const auto part = [&](std::size_t first) {
        return static_cast<double>(cell[first]) + z * (static_cast<double>(cell[first + 1]) +
                                                       z * static_cast<double>(cell[first + 2]));
    };
    return std::norm(part(0) / part(3));
}

/// The shelf that has the level of the cell at 0 Hz and at both tones.
NearfieldShelf ShelfOf(std::span<const float> cell, double rateHz) {
    constexpr double kFloor = 1e-8;
    const double low = std::max(PowerAt(cell, 0.0, rateHz), kFloor);
    const double middle = std::max(PowerAt(cell, kLowToneHz, rateHz), kFloor);
    const double top = std::max(PowerAt(cell, kHighToneHz, rateHz), kFloor);
    // With u = 1 / fc^2 the power P at f is (low + high u f^2) / (1 + u f^2), so that
    // high u = (P - low) / f^2 + P u at both tones.
    const double slopeMiddle = (middle - low) / (kLowToneHz * kLowToneHz);
    const double slopeTop = (top - low) / (kHighToneHz * kHighToneHz);
    const double u = (slopeTop - slopeMiddle) / (middle - top);
    const double high = slopeTop / u + top;
    const auto decibels = [](double power) { return static_cast<float>(10.0 * std::log10(power)); };
    if (std::isfinite(u) && u > 0.0 && high > kFloor) {
        const double corner = std::clamp(1.0 / std::sqrt(u), 20.0, 20000.0);
        return {decibels(low), decibels(high), static_cast<float>(corner)};
    }
    // No shelf goes through these levels; one between the tones comes near.
    return {decibels(low), decibels(top), static_cast<float>(std::sqrt(kLowToneHz * kHighToneHz))};
}

double DistanceOf(const tav::CartesianVector& p) noexcept {
    return std::hypot(static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z));
}

/// Cosine of the angle between the axis through the ear and the direction of the position.
double CosineAt(const tav::CartesianVector& p, double distance, std::size_t ear) noexcept {
    const double toTheRight = distance > 0.0 ? static_cast<double>(p.x) / distance : 0.0;
    return ear == 0 ? -toTheRight : toTheRight;
}

/// The place in a half plane through the axis of the ear that all places at the same distance and
/// angle stand for.
tav::CartesianVector Unrolled(const tav::CartesianVector& p, std::size_t ear) noexcept {
    const auto along = static_cast<float>(ear == 0 ? -p.x : p.x);
    return {along, std::hypot(p.y, p.z), 0.f};
}

}  // namespace

void NearfieldCompensationFilters::Load(const std::string& path) {
    if (FileExtension(path) != "near") throw tav::Exception("invalid file extension " + path);
    NearfieldCompensationFilters read;
    read.set_ = Hrtf(ReadHrtfFile(path));
    const HrtfData& data = read.set_.Data();
    const bool fits = data.architecture == Hrtfs::Architecture::NearfieldCompensationFilter &&
                      data.filterType == Hrtfs::FilterType::BiquadCells &&
                      (data.numChannels == 1 || data.numChannels == 2) &&
                      data.filtersLength == kValuesOfOneCell;
    HrtfData places;
    for (const HrtfPoint& point : data.points) {
        if (!fits) break;
        for (std::size_t ear = 0; ear < data.numChannels; ++ear) {
            read.shelves_.push_back(
                ShelfOf(point.filters.Row(ear), static_cast<double>(data.samplingRate)));
        }
        read.hasDelays_ = read.hasDelays_ || point.delay != 0.f;
        places.points.push_back(point);
        if (data.numChannels == 1) places.points.back().position = Unrolled(point.position, 1);
    }
    read.places_ = Hrtf(std::move(places));
    *this = std::move(read);
}

const HrtfPoint* NearfieldCompensationFilters::PointFor(const tav::CartesianVector& position,
                                                        std::size_t ear) const noexcept {
    const bool isForBoth = set_.Data().numChannels == 1;
    return places_.NearestPoint(isForBoth ? Unrolled(position, ear) : position);
}

NearfieldShelf NearfieldCompensationFilters::Shelf(const tav::CartesianVector& position,
                                                   std::size_t ear) const noexcept {
    const double distance = DistanceOf(position);
    if (!(static_cast<float>(distance) < static_cast<float>(SphereShelves::kFar))) return {};
    const HrtfPoint* const point = PointFor(position, ear);
    if (point == nullptr) {
        const double cosine = std::clamp(CosineAt(position, distance, ear), -1.0, 1.0);
        return SphereShelves::Get().At(distance, std::acos(cosine));
    }
    return set_.Data().numChannels == 1 ? shelves_[point->index]
                                        : shelves_[std::size_t{2} * point->index + ear];
}

std::optional<float> NearfieldCompensationFilters::Delay(
    const tav::CartesianVector& position) const noexcept {
    if (!hasDelays_) return std::nullopt;
    return PointFor(position, 1)->delay;
}

}  // namespace Quilo
