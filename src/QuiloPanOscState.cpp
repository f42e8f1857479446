// SPDX-License-Identifier: MIT
#include "QuiloPanOscState.h"

#include "QuiloPanEngine.h"
#include "QuiloPanHeadphones.h"
#include "QuiloPanNearfield.h"
#include "QuiloPanPanners.h"
#include "QuiloPanPositions.h"
#include "math/VelkDspKeywords.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxTexts.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloRecursivePanning.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Quilo {

namespace {

/// Attributes that are fixed in the box, that have addresses of their own, or that are another
/// name.
constexpr std::string_view kElsewhere[] = {
    "numinputs", "numoutputs", "type", "subtype", "sourcespositions", "speakerspositions",
    "spread",    "spreadxyz",  "mute", "bypass",  "automute",         "norm",
};

void AddAttribute(t_object* x, const VelkMax::MaxAttribute& attribute, tav::OSCBundle& state) {
    const VelkMax::AttributeValue value(x, attribute.Name());
    if (value.error != MAX_ERR_NONE) return;
    tav::OSCMessage message("/attribute/" + std::string(attribute.Text()));
    for (const t_atom& atom : value.atoms.View().Span()) {
        switch (atom_gettype(&atom)) {
            case A_LONG: message.Add(tav::OSCArgument(std::int64_t{atom_getlong(&atom)})); break;
            case A_FLOAT: message.Add(tav::OSCArgument(atom_getfloat(&atom))); break;
            default: message.Add(tav::OSCArgument(atom_getsym(&atom)->s_name)); break;
        }
    }
    state.Add(std::move(message));
}

// ---- What the object takes

bool AcceptsSpeakersPositions(const PanObject& object, Atoms xyz) {
    const VelkMax::Door::Visit inside(object.TheDoor());
    tav::CartesianArray speakers = object.Speakers();
    return !object.TakesSpeakers() || ReadTriplets(object, kSpeakersPositionTexts, xyz, speakers);
}

bool AcceptsSourcesPositions(const PanObject& object, Atoms xyz) {
    tav::CartesianArray sources(object.NumSources());
    return ReadTriplets(object, kSourcesPositionTexts, xyz, sources);
}

template <const auto& kKeywords, const auto& kInvalid>
bool IsKeyword(const PanObject& object, Atoms word) {
    return ReadKeyword(object, kKeywords(), word.First(1).Text(), kInvalid).has_value();
}

template <t_symbol* (PanObject::*Source)() const, bool (*Accepts)(const PanObject&, Atoms)>
bool IsInForceOr(const PanObject& object, Atoms name) {
    return name.First(1).Text() == (object.*Source)()->s_name || Accepts(object, name);
}

/// Attributes whose setters look closer than at whether there are numbers.
struct AttributeCheck {
    std::string_view name;
    bool (*accepts)(const PanObject& object, Atoms values);
};
// clang-format off
constexpr AttributeCheck kAttributeChecks[] = {
    {"numinputs",         [](const PanObject& o, Atoms v) { return v.Long(0) == o.NumInputs(); }},
    {"numoutputs",        [](const PanObject& o, Atoms v) { return v.Long(0) == o.NumOutputs(); }},
    {"type",              [](const PanObject& o, Atoms v) { return o.IsOfType(v.Text()); }},
    {"subtype",           [](const PanObject& o, Atoms v) { return o.IsOfSubType(v.Text()); }},
    {"sourcespositions",  AcceptsSourcesPositions},
    {"speakerspositions", AcceptsSpeakersPositions},
    {"encoding",          IsKeyword<tav::NormalizationKeywords, kInvalidEncoding>},
    {"norm",              IsKeyword<tav::NormalizationKeywords, kInvalidEncoding>},
    {"hoamode",           IsKeyword<tav::HoaModeKeywords, kInvalidHoaMode>},
    {"spreadmode",        IsKeyword<PanSpreadingModeKeywords, kInvalidSpreadMode>},
    {"itdtype",           IsKeyword<ItdTypeKeywords, kInvalidItdType>},
    {"itdlatency",        IsKeyword<ItdLatencyKeywords, kInvalidItdLatency>},
    {"hrtffile",          IsInForceOr<&PanObject::HrtfSource, AcceptsHrtfFile>},
    {"nearfieldhrtffile", IsInForceOr<&PanObject::NearfieldSource, AcceptsNearfieldFile>},
};
// clang-format on

}  // namespace

bool HasAttribute(const PanObject& object, t_symbol* name) {
    const VelkMax::MaxAttribute attribute(MaxObjectOf(object), name);
    return attribute.Exists() && attribute.CanBeSet() && !attribute.IsInvisible();
}

bool AcceptsAttribute(const PanObject& object, t_symbol* name, Atoms values) {
    if (values.Empty() || !HasAttribute(object, name)) return false;
    const auto* const check =
        std::ranges::find(kAttributeChecks, std::string_view(name->s_name), &AttributeCheck::name);
    if (check != std::end(kAttributeChecks)) return check->accepts(object, values);
    const VelkMax::MaxAttribute attribute(MaxObjectOf(object), name);
    const std::size_t numRead = attribute.NumAtoms() == 1 ? 1 : values.Size();
    if (values.First(numRead).AreNumbers(numRead)) return true;
    VelkMax::Error(object, VelkMax::kUnreadableValue, name->s_name);
    return false;
}

bool AcceptsSpeakers(const PanObject& object, Atoms atoms) {
    const VelkMax::Door::Visit inside(object.TheDoor());
    return !object.TakesSpeakers() || ReadSpeakers(object, atoms);
}

void AddObjectState(const PanObject& object, tav::OSCBundle& state) {
    t_object* const x = MaxObjectOf(object);
    for (const VelkMax::MaxAttribute& attribute : VelkMax::ListAttributes(x)) {
        const std::string_view name = attribute.Text();
        if (std::ranges::find(kElsewhere, name) == std::end(kElsewhere)) {
            AddAttribute(x, attribute, state);
        }
    }
    const auto* const binaural = EngineAs<BinauralPanning>(object);
    if (binaural == nullptr) return;
    const auto shape = FadeShapeKeywords().Print(binaural->CrossfadeShape());
    state.Add(tav::OSCMessage("/crossfadetype", std::string(shape)));
    state.Add(tav::OSCMessage("/implementation", "delay",
                              static_cast<std::int32_t>(binaural->DelayKind()), "reduction",
                              binaural->DelayReduction()));
    if (const auto* const filtering = dynamic_cast<const BinauralPanningDirect*>(binaural)) {
        const auto realisation = HrtfRealisationKeywords().Print(filtering->Realisation());
        state.Add(tav::OSCMessage("/implementation", "realisation", std::string(realisation),
                                  "length",
                                  static_cast<std::int32_t>(filtering->ResponseLength())));
    }
}

}  // namespace Quilo
