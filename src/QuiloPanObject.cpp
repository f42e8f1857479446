// SPDX-License-Identifier: MIT
#include "QuiloPanObject.h"

#include "QuiloPanPanners.h"
#include "QuiloPanPositions.h"
#include "QuiloPanSymbols.h"
#include "laws/QuiloDefaultLayouts.h"
#include "max/VelkMaxMaxAttribute.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloPanDefaults.h"

#include <algorithm>
#include <utility>

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

/// The place that an exception names when memory for attribute values runs short.
constexpr tav::SourceSite kObjectSite{"..\\..\\src\\quilo.pan~", 0};

Pan::Type TypeNamed(std::string_view word) {
    return PanTypeKeywords().Parse(word).value_or(Pan::Type::Null);
}

Pan::SubType SubTypeNamed(std::string_view word) {
    return PanSubTypeKeywords().Parse(word).value_or(Pan::SubType::Direct);
}

std::vector<t_atom> Copy(Atoms atoms) { return {atoms.Span().begin(), atoms.Span().end()}; }

}  // namespace

// ---- Life

PanObject::PanObject(t_pxobject& header)
    : header_(header),
      door_(&header),
      sourcesValues_(kMostCoordinates, kObjectSite),
      speakersValues_(kMostCoordinates, kObjectSite),
      perSourceValues_(kMostCoordinates, kObjectSite),
      hrtfSource_(PanSymbols::Get().noHrtf),
      nearfieldSource_(PanSymbols::Get().noHrtf) {}

void PanObject::BuildEngine() {
    if (engine_ != nullptr) return;
    auto engine = Pan::Create(static_cast<unsigned>(numInputs_), static_cast<unsigned>(numOutputs_),
                              type_, subType_);
    if (engine == nullptr) return VelkMax::Bug(*this, kNotInitialized);
    if (engine->GetType() == Pan::Type::Null) Error(*this, kUnsupported);
    if (interpolationTimeMs_) engine->SetInterpolationTime(*interpolationTimeMs_);
    engine->SetAutoMuteTime(autoMuteSeconds_);
    engine->SetMute(mute_);
    engine->SetBypass(bypass_);
    if (IsOf(*engine, Family::Binaural) &&
        engine->LoadHrtf(PanSymbols::Get().builtInHrtf->s_name)) {
        hrtfSource_ = PanSymbols::Get().builtInHrtf;
    }
    osc_ = std::make_unique<PanOsc>(*this);
    engine->Osc().SetExtension(osc_.get());
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
    tav::CartesianArray sources = DefaultSources(static_cast<unsigned>(numInputs_));
    ReadTriplets(*this, kSourcesPositionTexts, Atoms(givenSources_), sources);
    // Forced, because the spaced pair (type ab) otherwise glides even to a position that is set as
    // a jump: its sources would glide in from the origin when they first sound.
    for (unsigned index = 0; index < NumSources(); ++index) {
        engine_->SetSourcePosition(index, sources[index], true, true);
    }
}

void PanObject::Complete() {
    isBeingMade_ = false;
    // The longest message that the object understands is one that holds its whole state.
    std::size_t longest = 0;
    for (const VelkMax::MaxAttribute& attribute : VelkMax::ListAttributes(&header_.z_ob)) {
        longest += attribute.NumAtoms();
    }
    door_.Open(longest, &PanOsc::LookAfter);
}

// ---- Positions

bool PanObject::TakesSpeakers() const {
    return engine_ != nullptr && !IsOf(*this, Family::Binaural);
}

void PanObject::MoveSource(unsigned index, const tav::CartesianVector& position) {
    if (engine_ != nullptr) engine_->SetSourcePosition(index, position, false, false);
    door_.Changed(PanSymbols::Get().sources);
}

class PanObject::LayoutWork final : public VelkMax::LongWork {
public:
    LayoutWork(PanObject& object, tav::CartesianArray speakers)
        : object_(object),
          number_(++object.numLayouts_),
          asked_(speakers),
          before_(std::exchange(object.speakers_, std::move(speakers))) {}
    ~LayoutWork() override {
        if (!isPrepared_ && IsLatest()) std::swap(object_.speakers_, before_);
    }

    void Compute() override { layout_ = object_.engine_->PrepareSpeakers(asked_); }
    void Finish() override {
        isPrepared_ = true;
        if (IsLatest()) object_.engine_->InstallSpeakers(std::move(layout_));
    }

private:
    bool IsLatest() const { return object_.numLayouts_ == number_; }

    PanObject& object_;
    const unsigned number_;
    const tav::CartesianArray asked_;
    tav::CartesianArray before_;
    std::unique_ptr<SpeakersLayout> layout_;
    bool isPrepared_ = false;
};

void PanObject::SetSpeakers(tav::CartesianArray speakers) {
    door_.CarryOut(std::make_unique<LayoutWork>(*this, std::move(speakers)));
}

tav::CartesianArray PanObject::Sources() const {
    tav::CartesianArray sources(NumSources());
    for (unsigned index = 0; index < NumSources(); ++index) sources[index] = Source(index);
    return sources;
}

std::span<const float> PanObject::SourcesPositions() const {
    return Flatten(Sources(), sourcesValues_);
}

void PanObject::SetSourcesPositions(Atoms xyz) {
    if (engine_ == nullptr) {
        givenSources_ = Copy(xyz);
        return;
    }
    tav::CartesianArray sources = Sources();
    if (ReadTriplets(*this, kSourcesPositionTexts, xyz, sources)) {
        engine_->SetSourcesPositions(sources, false);
    }
}

std::span<const float> PanObject::SpeakersPositions() const {
    return Flatten(speakers_, speakersValues_);
}

void PanObject::SetSpeakersPositions(Atoms xyz) {
    if (engine_ == nullptr) {
        givenSpeakers_ = Copy(xyz);
        return;
    }
    if (!TakesSpeakers()) return;
    tav::CartesianArray speakers = speakers_;
    if (ReadTriplets(*this, kSpeakersPositionTexts, xyz, speakers)) {
        SetSpeakers(std::move(speakers));
    }
}

std::vector<t_symbol*> PanObject::FilterFiles() const {
    const PanSymbols& words = PanSymbols::Get();
    const VelkMax::Door::Visit inside(door_);
    std::vector<t_symbol*> files{hrtfSource_, nearfieldSource_};
    std::erase_if(files, [&](const t_symbol* source) {
        return source == words.builtInHrtf || source == words.noHrtf;
    });
    return files;
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

t_symbol* PanObject::Type() const {
    const Pan::Type type = engine_ != nullptr ? engine_->GetType() : TypeNamed(type_);
    return PanSymbols::Get().types.Of(type);
}

bool PanObject::IsOfType(std::string_view word) const {
    return TypeNamed(word) == engine_->GetType();
}

void PanObject::SetType(std::string_view type) {
    if (engine_ == nullptr) {
        type_ = type;
    } else if (!IsOfType(type)) {
        Error(*this, kTypeIsFixed, std::string(type).c_str());
    }
}

t_symbol* PanObject::SubType() const {
    const Pan::SubType subType =
        engine_ != nullptr ? engine_->GetSubType() : SubTypeNamed(subType_);
    return PanSymbols::Get().subTypes.Of(subType);
}

bool PanObject::IsOfSubType(std::string_view word) const {
    return SubTypeNamed(word) == engine_->GetSubType();
}

void PanObject::SetSubType(std::string_view subType) {
    if (engine_ == nullptr) {
        subType_ = subType;
    } else if (!IsOfSubType(subType)) {
        Error(*this, kSubTypeIsFixed, std::string(subType).c_str());
    }
}

// ---- Other attributes

float PanObject::InterpolationTime() const {
    // The value that was set last, because a panner that does not glide keeps none.
    if (interpolationTimeMs_) return *interpolationTimeMs_;
    return engine_ != nullptr ? engine_->GetInterpolationTime() : 0.f;
}

void PanObject::SetInterpolationTime(float ms) {
    interpolationTimeMs_ = ms;
    if (engine_ != nullptr) engine_->SetInterpolationTime(ms);
}

void PanObject::SetMute(max_long on) {
    mute_ = on != 0;
    if (engine_ != nullptr) engine_->SetMute(mute_);
}

void PanObject::SetBypass(max_long on) {
    bypass_ = on != 0;
    if (engine_ != nullptr) engine_->SetBypass(bypass_);
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
    door_.Changed(PanSymbols::Get().spread);
}

// ---- Audio

void PanObject::Render(double* const* outputs,
                       max_long numOutputs,
                       double* const* inputs,
                       max_long numInputs,
                       max_long frames) noexcept TAV_NONBLOCKING {
    if (frames <= 0) return;
    // Where Max passes other numbers of channels than the object has, all outputs are silent.
    if (engine_ == nullptr || numOutputs != numOutputs_ || numInputs != numInputs_) {
        for (max_long channel = 0; channel < numOutputs; ++channel) {
            std::fill_n(outputs[channel], frames, 0.0);
        }
        return;
    }
    engine_->ProcessHost(outputs, inputs, static_cast<unsigned>(frames), false, false);
}

}  // namespace Quilo
