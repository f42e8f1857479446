// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningNearfield.h"

#include "laws/QuiloHeadShadow.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <utility>

namespace Quilo {

using tav::CartesianVector;
using tav::ControlGuard;

namespace {

constexpr float kFarMetres = static_cast<float>(SphereShelves::kFar);
constexpr float kCentreMetres = 1e-5f;      // nearer sources have no direction
constexpr float kSmallestSetRadius = 0.5f;  // nearer points give no distance that was measured

float LengthOfVector(const CartesianVector& v) { return std::hypot(v.x, v.y, v.z); }

CartesianVector Scaled(const CartesianVector& v, float factor) {
    return {v.x * factor, v.y * factor, v.z * factor};
}

float AmplitudeOf(float decibels) { return std::pow(10.f, decibels / 20.f); }

/// A section (1 + upper j f/fc) / (1 + lower j f/fc) as a ratio and the corner of its pole.
std::pair<float, float> Section(float upper, float lower, float cornerHz) {
    return {upper / lower, cornerHz / lower};
}

}  // namespace

BinauralPanningNearfield::BinauralPanningNearfield(unsigned numInputs, unsigned numOutputs)
    : BinauralPanningDirect(numInputs, numOutputs),
      filters_(std::make_shared<const NearfieldCompensationFilters>()),
      nearest_(numInputs) {
    switches_.fill(true);
    SphereShelves::Get();  // made now, not when a source is placed
}

std::unique_ptr<HrtfRendering> BinauralPanningNearfield::MakeRendering(
    const std::shared_ptr<const Hrtf>& set, const HrtfFormat& format) const {
    return std::make_unique<HrtfFiltering>(HrtfResponses::Of(set, format), NumInputs(),
                                           BufferSize(), true);
}

// ---- Settings

void BinauralPanningNearfield::SetSwitch(Switch which, bool on) {
    const ControlGuard guard(controlLock_);
    if (std::exchange(switches_[static_cast<std::size_t>(which)], on) != on) RecomputeSources();
}

bool BinauralPanningNearfield::IsOn(Switch which) const {
    const ControlGuard guard(controlLock_);
    return Has(which);
}

void BinauralPanningNearfield::SetRadius(float metres) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(metres)) return;
    const float clamped = std::clamp(metres, kSmallestRadius, kLargestRadius);
    if (std::exchange(radius_, clamped) != clamped) RecomputeSources();
}

float BinauralPanningNearfield::Radius() const {
    const ControlGuard guard(controlLock_);
    return radius_;
}

bool BinauralPanningNearfield::LoadNearfield(const std::string& path) {
    NearfieldLoad load(*this);
    return load.Read(path) && load.Install();
}

std::shared_ptr<const NearfieldCompensationFilters> BinauralPanningNearfield::GetNearfield() const {
    const ControlGuard guard(controlLock_);
    return filters_;
}

bool BinauralPanningNearfield::NearfieldLoad::Read(const std::string& path) {
    filters_ = path.empty() ? std::make_shared<const NearfieldCompensationFilters>()
                            : std::make_shared<const NearfieldCompensationFilters>(path);
    return filters_->IsUsable();
}

bool BinauralPanningNearfield::Install(const NearfieldLoad& load) {
    const ControlGuard guard(controlLock_);
    if (load.number_ < nearfieldInForce_) return false;
    filters_ = load.filters_;
    nearfieldInForce_ = load.number_;
    RecomputeSources();
    return true;
}

void BinauralPanningNearfield::ApplySet() {
    double sum = 0.0;
    for (const CartesianVector& point : Set().Positions()) {
        sum += static_cast<double>(LengthOfVector(point));
    }
    const float mean = static_cast<float>(
        sum / static_cast<double>(std::max<std::size_t>(Set().Positions().Size(), 1)));
    setRadius_ = mean < kSmallestSetRadius ? kFarMetres : std::min(mean, kFarMetres);
}

// ---- Sources

CartesianVector BinauralPanningNearfield::SeenFrom(std::size_t ear,
                                                   const CartesianVector& source) const {
    // Beyond the set a source is where its filters say, as it is for the direct panner.
    if (!Has(Switch::CrossEarSelection) || LengthOfVector(source) >= setRadius_) return source;
    const float side = ear == 0 ? -Itd().headRadius : Itd().headRadius;
    const CartesianVector fromEar{source.x - side, source.y, source.z};
    const float distance = LengthOfVector(fromEar);
    if (distance < kCentreMetres) return {side, 0.f, 0.f};
    const CartesianVector direction = Scaled(fromEar, 1.f / distance);
    // Where the line from the ear through the source meets the sphere of the set.
    const float along = side * direction.x;
    const float reach = setRadius_ * setRadius_ - side * side;
    const float t = std::sqrt(std::max(along * along + reach, 0.f)) - along;
    return {side + t * direction.x, t * direction.y, t * direction.z};
}

NearfieldEar BinauralPanningNearfield::EarFor(std::size_t ear,
                                              const CartesianVector& source,
                                              const CartesianVector& filtered) const {
    const NearfieldShelf shelf = filters_->Shelf(source, ear);
    NearfieldEar result;
    if (Has(Switch::DistanceAttenuation)) result.gain = 1.f / LengthOfVector(source);
    if (Has(Switch::GainsCorrection)) result.gain *= AmplitudeOf(shelf.lowDb);
    if (!Has(Switch::NfCompensationFilters)) return result;
    result.shelf = AmplitudeOf(shelf.highDb - shelf.lowDb);
    result.shelfHz = shelf.cornerHz;
    // The filter of another direction has the shadow of that direction: it is exchanged for the
    // one that belongs to the source, or parallax and shelf would count it twice.
    const float side = ear == 0 ? -1.f : 1.f;
    const float own = side * CosineToRightEar(source), other = side * CosineToRightEar(filtered);
    const float corner = ShadowCornerHz(Itd().headRadius);
    if (own == other || !std::isfinite(corner)) return result;
    std::tie(result.parallax, result.parallaxHz) =
        Section(HeadShadowAlpha(own), HeadShadowAlpha(other), corner);
    return result;
}

EarDelays BinauralPanningNearfield::DelaysOf(unsigned index, const CartesianVector& source) {
    const float distance = LengthOfVector(source);
    // What a model gives for a far source, and what nearness adds to it.
    const bool isNear = distance < kFarMetres;
    const CartesianVector far = isNear ? Scaled(source, kFarMetres / distance) : source;
    InterauralTimeDifference itd = Itd();
    std::optional<float> measured;
    if (itd.Measures()) measured = NearestPoint(far, nearest_[index].fromAfar).delay;
    // Finite responses hold their delays; what is added to them remains.
    if (Set().Data().filterType == Hrtfs::FilterType::Fir) {
        itd.type = InterauralTimeDifference::Type::None;
    }
    float added = 0.f;
    if (isNear && Has(Switch::DelaysCorrection)) {
        const std::optional<float> fromFile = filters_->Delay(source);
        added = fromFile ? *fromFile * 0.5f : itd.SphereDifference(source, far);
    }
    const EarDelays delays = itd.Delays(far, measured, added);
    return {delays.left * DelayPart(), delays.right * DelayPart()};
}

/// @param latest  the answer of the time before; overwritten
const HrtfPoint& BinauralPanningNearfield::NearestPoint(const CartesianVector& position,
                                                        std::uint32_t& latest) const {
    const HrtfPoint& point = *Set().NearestPoint(position, latest);
    latest = point.index;
    return point;
}

void BinauralPanningNearfield::ComputeSource(unsigned index, bool immediate, bool) {
    auto* const filtering = static_cast<HrtfFiltering*>(Rendering());
    if (filtering == nullptr || Set().Data().points.empty()) return;
    FreeRetired();
    CartesianVector source = RelativePosition(index);
    const float distance = LengthOfVector(source);
    if (distance < kCentreMetres) {
        source = {0.f, radius_, 0.f};
    } else if (distance < radius_) {
        source = Scaled(source, radius_ / distance);
    }
    EarPoints points{};
    NearfieldEars ears;
    for (std::size_t ear = 0; ear < ears.size(); ++ear) {
        const CartesianVector seen = SeenFrom(ear, source);
        points.ears[ear] = Has(Switch::HrtfFilters)
                               ? NearestPoint(seen, nearest_[index].fromEars[ear]).index
                               : HrtfResponses::kWire;
        ears[ear] = EarFor(ear, source, seen);
    }
    const float glideMs = immediate ? 0.f : GlideMs();
    filtering->SetSource(index, {points, DelaysOf(index, source), IsMuted(index) ? 0.f : 1.f},
                         glideMs);
    filtering->SetNearfield(index, ears, glideMs);
}

void BinauralPanningNearfield::Describe(std::vector<std::string>& lines) const {
    BinauralPanningDirect::Describe(lines);
    const auto url = filters_->Set().Data().infos.find(HrtfInfo::kUrl);
    const bool isFile = url != filters_->Set().Data().infos.end();
    lines.push_back("nearfield filters : " + (isFile ? url->second : std::string("built-in")));
    lines.push_back("radius : " + tav::NumberText(radius_) + " m");
    constexpr const char* kWords[kNumSwitches] = {
        "distance attenuation", "cross ears selection", "nearfield compensation filters",
        "hrtf filters",         "gains correction",     "delays correction"};
    for (std::size_t i = 0; i < kNumSwitches; ++i) {
        lines.push_back(std::string(kWords[i]) + " : " + (switches_[i] ? "1" : "0"));
    }
}

}  // namespace Quilo
