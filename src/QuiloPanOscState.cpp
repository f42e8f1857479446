// SPDX-License-Identifier: MIT
#include "QuiloPanOscState.h"

#include "QuiloPanEngine.h"
#include "max/VelkMaxMaxAttribute.h"
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

}  // namespace

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
