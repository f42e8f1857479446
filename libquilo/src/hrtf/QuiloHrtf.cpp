// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtf.h"

#include "hrtf/QuiloBuiltInHrtf.h"
#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <span>
#include <string_view>
#include <utility>

namespace Quilo {

namespace {

constexpr float kReachOverRadius = 64.f;
constexpr double kRoundnessTolerance = 1e-5;
constexpr double kClosest = 0.1;  // of the radius of a sphere: closer to its centre all is searched

double Product(const tav::CartesianVector& a, const tav::CartesianVector& b) noexcept {
    return static_cast<double>(a.x) * static_cast<double>(b.x) +
           static_cast<double>(a.y) * static_cast<double>(b.y) +
           static_cast<double>(a.z) * static_cast<double>(b.z);
}

double LengthOf(const tav::CartesianVector& v) noexcept { return std::sqrt(Product(v, v)); }

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
    double least = radius;
    for (const auto& position : positions_) least = std::min(least, LengthOf(position));
    const bool isSphere = least > (1.0 - kRoundnessTolerance) * radius;
    if (isSphere) radius_ = radius;
    // The border between a point and its neighbour lies half-way, but not quite. The search rounds
    // squared distances, up to (kReachOverRadius radius)^2, to 32 bits, which moves it by at most
    // `rounding` / gap; on a sphere points of unequal length move it by at most `unequal` / gap,
    // most where a position is close to the centre. What is left of the half of the gap is sure.
    const double rounding = 2e-5 * radius * radius;
    const double unequal = isSphere ? (radius * radius - least * least) / (2.0 * kClosest) : 0.0;
    std::vector<std::size_t> indices;
    std::vector<float> distances;
    for (std::uint32_t index = 0; index < positions_.Size(); ++index) {
        Surroundings& around = surroundings_.emplace_back();
        around.neighbours.fill(index);
        double clearance = 0.0;  // nothing closer to the point than this has another nearest one
        if (positions_.Size() > kNeighbours + 1) {
            // The point itself comes first, or another one at the same place.
            tree_.Nearest(positions_[index], kNeighbours + 1, indices, distances);
            const auto gap = static_cast<double>(distances[1]);
            if (gap > 0.0) clearance = std::max(0.499 * gap - (rounding + unequal) / gap, 0.0);
            std::ranges::transform(std::span(indices).subspan(1), around.neighbours.begin(),
                                   [](std::size_t i) { return static_cast<std::uint32_t>(i); });
        }
        around.limit = clearance * clearance;
        if (!isSphere) continue;
        const double length = LengthOf(positions_[index]);
        const double product = radius * radius + length * length - around.limit;
        around.limit = clearance > 0.0 ? product * product / (4.0 * radius * radius)
                                       : std::numeric_limits<double>::infinity();
    }
}

bool Hrtf::IsSurelyNearest(std::uint32_t point,
                           const tav::CartesianVector& position) const noexcept {
    const tav::CartesianVector& p = positions_[point];
    const double limit = surroundings_[point].limit;
    if (radius_ == 0.0) {
        const tav::CartesianVector way{position.x - p.x, position.y - p.y, position.z - p.z};
        return Product(way, way) < limit;
    }
    // On a sphere all distances from the centre have the same order.
    const double square = Product(position, position), product = Product(position, p);
    return product > 0.0 && product * product > limit * square &&
           square > kClosest * kClosest * radius_ * radius_;
}

const HrtfPoint* Hrtf::NearestPoint(const tav::CartesianVector& position,
                                    std::uint32_t guess) const noexcept {
    if (guess >= surroundings_.size()) return NearestPoint(position);
    const auto isIt = [&](std::uint32_t point) { return IsSurelyNearest(point, position); };
    if (isIt(guess)) return &data_.points[guess];
    const auto& neighbours = surroundings_[guess].neighbours;
    const auto* const found = std::ranges::find_if(neighbours, isIt);
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
