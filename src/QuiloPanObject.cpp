// SPDX-License-Identifier: MIT
#include "QuiloPanObject.h"

#include "QuiloPanPositions.h"
#include "laws/QuiloDefaultLayouts.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloPanDefaults.h"

#include <algorithm>

namespace Quilo {

using VelkMax::Error;

namespace {

/// x, y, z of each position.
std::span<const float> Flatten(const tav::CartesianArray& positions,
                               const VelkMax::AttributeStorage& storage) {
    const std::span<float> xyz = storage.First(3 * positions.Size());
    auto value = xyz.begin();
    for (const tav::CartesianVector& position : positions) {
        for (const float part : {position.x, position.y, position.z}) *value++ = part;
    }
    return xyz;
}

constexpr std::size_t kMostCoordinates = std::size_t{3} * kMaxChannels;

/// Where memory for the values of attributes is asked for, as it is reported.
constexpr tav::SourceSite kObjectSite{"..\\..\\src\\quilo.pan~", 0};

std::vector<t_atom> Copy(Atoms atoms) { return {atoms.Span().begin(), atoms.Span().end()}; }

}  // namespace

const PanAttributeNames& PanAttributeNames::Get() {
    static const PanAttributeNames names;
    return names;
}

// ---- Life

PanObject::PanObject(t_pxobject& header)
    : header_(header),
      door_(&header),
      sourcesValues_(kMostCoordinates, kObjectSite),
      speakersValues_(kMostCoordinates, kObjectSite),
      perSourceValues_(kMostCoordinates, kObjectSite) {
    PanAttributeNames::Get();
}

void PanObject::BuildEngine() {
    if (engine_ != nullptr) return;
    auto engine = Pan::Create(static_cast<unsigned>(numInputs_), static_cast<unsigned>(numOutputs_),
                              type_, subType_);
    if (engine == nullptr) return VelkMax::Bug(*this, kNotInitialized);
    if (engine->GetType() == Pan::Type::Null) Error(*this, kUnsupported);
    // What is really running, be it an alias or the silent stand-in.
    type_ = engine->GetTypeName();
    subType_ = engine->GetSubTypeName();
    if (interpolationTimeMs_) engine->SetInterpolationTime(*interpolationTimeMs_);
    engine->SetAutoMuteTime(autoMuteSeconds_);
    engine_ = std::move(engine);
}

void PanObject::PlaceSpeakers() {
    if (engine_ == nullptr || !TakesSpeakers()) return;
    speakers_ = DefaultSpeakersFor(engine_->GetType(), static_cast<unsigned>(numOutputs_));
    ReadTriplets(*this, kSpeakersPositionTexts, Atoms(givenSpeakers_), speakers_);
    engine_->SetSpeakersPositions(speakers_);
}

void PanObject::PlaceSources() {
    if (engine_ == nullptr) return;
    sources_ = DefaultSources(static_cast<unsigned>(numInputs_));
    ReadTriplets(*this, kSourcesPositionTexts, Atoms(givenSources_), sources_);
    // Forced: the spaced pair jumps to where it is told to be by force only.
    for (unsigned index = 0; index < NumSources(); ++index) {
        engine_->SetSourcePosition(index, sources_[index], true, true);
    }
}

// ---- Positions

bool PanObject::TakesSpeakers() const {
    return engine_ != nullptr && engine_->GetType() != Pan::Type::Binaural;
}

void PanObject::MoveSource(unsigned index, const tav::CartesianVector& position) {
    sources_[index] = position;
    if (engine_ != nullptr) engine_->SetSourcePosition(index, position, false, false);
    door_.Changed(PanAttributeNames::Get().sources);
}

void PanObject::SetSpeakers(const tav::CartesianArray& speakers) {
    speakers_ = speakers;
    door_.Changed(PanAttributeNames::Get().speakers);
    if (engine_ != nullptr) engine_->SetSpeakersPositions(speakers_);
}

std::span<const float> PanObject::SourcesPositions() const {
    return Flatten(sources_, sourcesValues_);
}

void PanObject::SetSourcesPositions(Atoms xyz) {
    if (engine_ == nullptr) {
        givenSources_ = Copy(xyz);
    } else if (ReadTriplets(*this, kSourcesPositionTexts, xyz, sources_)) {
        engine_->SetSourcesPositions(sources_, false);
    }
}

std::span<const float> PanObject::SpeakersPositions() const {
    return Flatten(speakers_, speakersValues_);
}

void PanObject::SetSpeakersPositions(Atoms xyz) {
    if (engine_ == nullptr) {
        givenSpeakers_ = Copy(xyz);
    } else if (TakesSpeakers() && ReadTriplets(*this, kSpeakersPositionTexts, xyz, speakers_)) {
        engine_->SetSpeakersPositions(speakers_);
    }
}

// ---- Structure: free until there is an engine, then frozen.

void PanObject::SetNumInputs(max_long count) {
    if (engine_ == nullptr) {
        numInputs_ = count;
    } else if (count != numInputs_) {
        Error(*this, kInputsAreFixed, static_cast<int>(count));
    }
}

void PanObject::SetNumOutputs(max_long count) {
    if (engine_ == nullptr) {
        numOutputs_ = count;
    } else if (count != numOutputs_) {
        Error(*this, kOutputsAreFixed, static_cast<int>(count));
    }
}

void PanObject::SetType(t_symbol* type) {
    if (engine_ == nullptr) {
        type_ = type->s_name;
    } else if (PanTypeKeywords().Parse(type->s_name).value_or(Pan::Type::Null) !=
               engine_->GetType()) {
        Error(*this, kTypeIsFixed, type->s_name);
    }
}

void PanObject::SetSubType(t_symbol* subType) {
    if (engine_ == nullptr) {
        subType_ = subType->s_name;
    } else if (PanSubTypeKeywords().Parse(subType->s_name).value_or(Pan::SubType::Direct) !=
               engine_->GetSubType()) {
        Error(*this, kSubTypeIsFixed, subType->s_name);
    }
}

// ---- Other attributes

float PanObject::InterpolationTime() const {
    // Not the engine's own: a panner without a glide keeps none.
    if (interpolationTimeMs_) return *interpolationTimeMs_;
    return engine_ != nullptr ? engine_->GetInterpolationTime() : 0.f;
}

void PanObject::SetInterpolationTime(float ms) {
    interpolationTimeMs_ = ms;
    if (engine_ != nullptr) engine_->SetInterpolationTime(ms);
}

float PanObject::AutoMute() const {
    if (engine_ == nullptr) return autoMuteSeconds_;
    return engine_->AutoMute() ? engine_->AutoMuteTime() : 0.f;
}

void PanObject::SetAutoMute(float seconds) {
    autoMuteSeconds_ = seconds;
    if (engine_ != nullptr) engine_->SetAutoMuteTime(seconds);
}

std::span<const float> PanObject::Spread() const {
    const std::span<float> spreads = PerSourceValues(1);
    for (unsigned index = 0; index < spreads.size(); ++index) {
        spreads[index] = engine_ != nullptr ? engine_->SourceSpread(index) : 0.f;
    }
    return spreads;
}

void PanObject::SetSpread(const std::vector<float>& spreads) {
    const std::size_t count = std::min(spreads.size(), static_cast<std::size_t>(numInputs_));
    for (unsigned index = 0; engine_ != nullptr && index < count; ++index) {
        engine_->SetSourceSpread(index, spreads[index]);
    }
}

void PanObject::SetSourceSpread(unsigned index, float spread) {
    if (engine_ == nullptr) return;
    engine_->SetSourceSpread(index, spread);
    door_.Changed(PanAttributeNames::Get().spread);
}

// ---- Audio

void PanObject::Render(double* const* outputs,
                       max_long numOutputs,
                       double* const* inputs,
                       max_long numInputs,
                       max_long frames) noexcept TAV_NONBLOCKING {
    if (frames <= 0) return;
    // Max may hand over other numbers of channels than the object has: then it stays silent.
    if (engine_ == nullptr || numOutputs != numOutputs_ || numInputs != numInputs_) {
        for (max_long channel = 0; channel < numOutputs; ++channel) {
            std::fill_n(outputs[channel], frames, 0.0);
        }
        return;
    }
    engine_->ProcessHost(outputs, inputs, static_cast<unsigned>(frames), Mute() != 0,
                         Bypass() != 0);
}

}  // namespace Quilo
