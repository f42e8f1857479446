// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtf.h"

#include "hrtf/QuiloBuiltInHrtf.h"
#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <span>
#include <string_view>
#include <utility>

namespace Quilo {

namespace {

constexpr float kReachOverRadius = 64.f;
constexpr double kRoundnessTolerance = 1e-5;
constexpr double kClearShare = 0.49;  // of the way to the next point; a half but for rounding

double LengthOf(const tav::CartesianVector& v) noexcept {
    const double x = static_cast<double>(v.x), y = static_cast<double>(v.y);
    const double z = static_cast<double>(v.z);
    return std::sqrt(x * x + y * y + z * z);
}

HrtfData ReadSet(const std::string& path) {
    const std::string_view extension = FileExtension(path);
    if (extension == "hrtf") return ReadHrtfFile(path);
    if (extension == "sofa") {
        throw tav::Exception("SOFA is not yet implemented on this platform");
    }
    if (extension.empty()) return BuiltInHrtf();
    throw tav::Exception("invalid hrtf file : " + path);
}

}  // namespace

Hrtf::Hrtf(HrtfData data) : data_(std::move(data)), positions_(data_.points.size()) {
    double radius = 0.0;
    for (std::uint32_t index = 0; HrtfPoint & point : data_.points) {
        positions_[index] = point.position;
        point.index = index++;
        radius = std::max(radius, LengthOf(point.position));
    }
    tree_ = tav::KdTreeHelper(positions_);
    reach_ = kReachOverRadius * static_cast<float>(radius);
    FindSurroundings(radius);
}

void Hrtf::FindSurroundings(double radius) {
    const auto isOnSphere = [radius](const tav::CartesianVector& p) {
        return std::abs(LengthOf(p) / radius - 1.0) < kRoundnessTolerance;
    };
    if (std::ranges::all_of(positions_, isOnSphere)) radius_ = radius;
    std::vector<std::size_t> indices;
    std::vector<float> distances;
    for (std::uint32_t index = 0; index < positions_.Size(); ++index) {
        Surroundings& around = surroundings_.emplace_back();
        around.neighbours.fill(index);
        if (positions_.Size() <= kNeighbours + 1) continue;
        // The point itself comes first, or another one at the same place.
        tree_.Nearest(positions_[index], kNeighbours + 1, indices, distances);
        around.clearance = kClearShare * static_cast<double>(distances[1]);
        std::ranges::transform(std::span(indices).subspan(1), around.neighbours.begin(),
                               [](std::size_t i) { return static_cast<std::uint32_t>(i); });
    }
}

const HrtfPoint* Hrtf::NearestPoint(const tav::CartesianVector& position,
                                    std::uint32_t guess) const noexcept {
    if (guess >= surroundings_.size()) return NearestPoint(position);
    // On a sphere all distances from the centre have the same order.
    const double length = LengthOf(position);
    const double scale = radius_ > 0.0 && length > 0.0 ? radius_ / length : 1.0;
    const auto scaled = [scale](float v) { return static_cast<double>(v) * scale; };
    const double x = scaled(position.x), y = scaled(position.y), z = scaled(position.z);
    const auto isSurelyNearest = [&](std::uint32_t index) {
        const tav::CartesianVector& p = positions_[index];
        const double dx = x - static_cast<double>(p.x), dy = y - static_cast<double>(p.y);
        const double dz = z - static_cast<double>(p.z);
        const double clearance = surroundings_[index].clearance;
        return dx * dx + dy * dy + dz * dz < clearance * clearance;
    };
    if (isSurelyNearest(guess)) return &data_.points[guess];
    const auto& neighbours = surroundings_[guess].neighbours;
    const auto* const found = std::ranges::find_if(neighbours, isSurelyNearest);
    return found != neighbours.end() ? &data_.points[*found] : NearestPoint(position);
}

void Hrtf::Load(const std::string& path) { *this = Hrtf(ReadSet(path)); }

std::shared_ptr<const Hrtf> Hrtf::LoadShared(const std::string& path) {
    if (!FileExtension(path).empty()) return std::make_shared<const Hrtf>(path);
    static std::mutex mutex;
    static std::weak_ptr<const Hrtf> builtIn;
    const std::lock_guard lock(mutex);
    auto set = builtIn.lock();
    if (set == nullptr) builtIn = set = std::make_shared<const Hrtf>(path);
    return set;
}

const HrtfPoint* Hrtf::NearestPoint(const tav::CartesianVector& position) const noexcept {
    if (data_.points.empty()) return nullptr;
    const double length = LengthOf(position);
    const double scale =
        length > static_cast<double>(reach_) ? static_cast<double>(reach_) / length : 1.0;
    const auto scaled = [scale](float v) {
        return static_cast<float>(static_cast<double>(v) * scale);
    };
    return &data_.points[tree_.NearestIndex(
        {scaled(position.x), scaled(position.y), scaled(position.z)})];
}

std::vector<std::string> Hrtf::InfoLines() const {
    std::vector<std::string> lines{
        "hrtf type : " + Hrtfs::Text(data_.architecture),
        "filter type : " + Hrtfs::Text(data_.filterType),
        "coefficients : " + std::to_string(data_.filtersLength),
        "channels : " + std::to_string(data_.numChannels),
        "sampling rate : " + tav::NumberText(data_.samplingRate),
        "points : " + std::to_string(data_.numPoints),
    };
    for (const auto& [key, value] : data_.infos) {
        lines.push_back(key);
        lines.back().append(" : ").append(value);
    }
    return lines;
}

}  // namespace Quilo
