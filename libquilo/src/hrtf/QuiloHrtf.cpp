// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtf.h"

#include "hrtf/QuiloBuiltInHrtf.h"
#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <mutex>
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
    FindClearances(radius);
}

void Hrtf::FindClearances(double radius) {
    const auto isOnSphere = [radius](const tav::CartesianVector& p) {
        return std::abs(LengthOf(p) / radius - 1.0) < kRoundnessTolerance;
    };
    if (std::ranges::all_of(positions_, isOnSphere)) radius_ = radius;
    std::vector<std::size_t> indices;
    std::vector<float> distances;
    for (const tav::CartesianVector& position : positions_) {
        tree_.Nearest(position, 2, indices, distances);
        const auto gap = static_cast<double>(*std::ranges::max_element(distances));
        clearance_.push_back(kClearShare * (positions_.Size() > 1 ? gap : 0.0));
    }
}

bool Hrtf::IsSurelyNearest(std::uint32_t point,
                           const tav::CartesianVector& position) const noexcept {
    if (point >= clearance_.size()) return false;
    // On a sphere all distances from the centre have the same order.
    const double length = LengthOf(position);
    const double scale = radius_ > 0.0 && length > 0.0 ? radius_ / length : 1.0;
    const tav::CartesianVector& p = positions_[point];
    const double x = static_cast<double>(position.x) * scale - static_cast<double>(p.x);
    const double y = static_cast<double>(position.y) * scale - static_cast<double>(p.y);
    const double z = static_cast<double>(position.z) * scale - static_cast<double>(p.z);
    return x * x + y * y + z * z < clearance_[point] * clearance_[point];
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
