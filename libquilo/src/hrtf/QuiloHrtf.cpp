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

double LengthOf(const tav::CartesianVector& v) noexcept {
    return std::hypot(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
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
    for (const auto& [key, value] : data_.infos) lines.push_back(key + " : " + value);
    return lines;
}

}  // namespace Quilo
