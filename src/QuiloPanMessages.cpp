// SPDX-License-Identifier: MIT
#include "QuiloPanMessages.h"

#include "QuiloPanObject.h"
#include "QuiloPanPositions.h"

#include <charconv>
#include <string_view>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Handler;
using VelkMax::Post;
using VelkMax::Reject;

namespace {

/// What follows `source INDEX`: the whole message is kept for refusals.
struct SourceRequest {
    unsigned index = 0;  // from 0, in range
    Atoms values;        // behind the property
    Atoms message;
};

// ---- source: its properties

void SourceSpread(PanObject& object, const SourceRequest& request) {
    const Pan* engine = object.Engine();
    if (engine == nullptr || !engine->SupportsSpread()) return Error(object, kNoSpread);
    if (request.values.Size() != 1 || !request.values.IsNumber(0)) {
        return Reject(object, kInvalidSource, request.message);
    }
    object.SetSourceSpread(request.index, static_cast<float>(request.values.Float(0)));
}

void SourceSpreadXyz(PanObject& object, const SourceRequest& request) {
    const Atoms& values = request.values;
    const bool areNumbers = values.IsNumber(0) && values.IsNumber(1) && values.IsNumber(2);
    if (values.Size() != 3 || !areNumbers) return Error(object, kInvalidSpreadXyz);
    Error(object, kNoSpreadXyz);
}

void SourceNumNeighbors(PanObject& object, const SourceRequest&) { Error(object, kOnlyKnn); }

void SourceMute(PanObject& object, const SourceRequest& request) {
    if (request.values.Size() != 1 || !request.values.IsLong(0)) {
        return Reject(object, kInvalidSource, request.message);
    }
    // Deliberate: 1 is on and every other number is off.
    const bool isMuted = request.values.Long(0) == 1;
    if (object.Engine() != nullptr) object.Engine()->SetSourceMute(request.index, isMuted);
}

struct SourceProperty {
    std::string_view name;
    void (*set)(PanObject& object, const SourceRequest& request);
};

// A property that is none of these is a coordinate format.
// clang-format off
constexpr SourceProperty kSourceProperties[] = {
    {"spread",       SourceSpread},
    {"spreadxyz",    SourceSpreadXyz},
    {"numneighbors", SourceNumNeighbors},
    {"mute",         SourceMute},
};
// clang-format on

const SourceProperty* FindProperty(Atoms property) {
    if (!property.IsSymbol(0)) return nullptr;
    for (const SourceProperty& row : kSourceProperties) {
        if (row.name == property.Symbol(0)->s_name) return &row;
    }
    return nullptr;
}

/// Whether a message begins with an index and goes on with something that a handler can read.
bool IsIndexed(Atoms atoms) {
    return atoms.Size() >= 2 && atoms.IsLong(0) && (atoms.IsSymbol(1) || atoms.IsNumber(1));
}

// ---- The messages

void SourceMessage(PanObject& object, Atoms atoms) {
    if (!IsIndexed(atoms)) return Reject(object, kInvalidSource, atoms);
    const t_atom_long number = atoms.Long(0);
    if (number < 1 || number > object.NumSources()) {
        return Error(object, kInvalidSourceIndex, VelkMax::SaturatedInt(number));
    }
    const auto index = static_cast<unsigned>(number - 1);
    if (const SourceProperty* property = FindProperty(atoms.From(1))) {
        return property->set(object, {index, atoms.From(2), atoms});
    }
    const auto formatted = ReadFormat(object, atoms.From(1));
    if (!formatted) return;
    tav::CartesianVector position = object.Source(index);
    if (ReadPosition(object, kSourceTexts, *formatted, position)) {
        object.MoveSource(index, position);
    }
}

void SpeakersMessage(PanObject& object, Atoms atoms) {
    if (!object.TakesSpeakers() || object.NumSpeakers() == 0) return;
    if (!atoms.IsSymbol(0) && !atoms.IsNumber(0)) return Reject(object, kInvalidSpeakers, atoms);
    const auto formatted = ReadFormat(object, atoms);
    if (!formatted) return;
    tav::CartesianArray speakers = object.Speakers();
    if (ReadLayout(object, *formatted, speakers)) object.SetSpeakers(speakers);
}

void SpeakerMessage(PanObject& object, Atoms atoms) {
    if (!object.TakesSpeakers()) return;
    if (!IsIndexed(atoms)) return Reject(object, kInvalidSpeaker, atoms);
    const t_atom_long number = atoms.Long(0);
    if (number < 1 || number > object.NumSpeakers()) {
        return Error(object, kInvalidSpeakerIndex, VelkMax::SaturatedInt(number));
    }
    const auto formatted = ReadFormat(object, atoms.From(1));
    if (!formatted) return;
    tav::CartesianArray speakers = object.Speakers();
    if (ReadPosition(object, kSpeakerTexts, *formatted,
                     speakers[static_cast<std::size_t>(number - 1)])) {
        object.SetSpeakers(speakers);
    }
}

std::string AutoMuteText(float seconds) {
    if (seconds <= 0.f) return "off";
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, seconds).ptr};
}

void PostDspStatus(const PanObject& object) {
    if (object.Mute() == 1 || object.IsDisabled()) {
        Post(object, VelkMax::kDspMuted);
    } else {
        Post(object, object.Bypass() == 1 ? VelkMax::kDspBypassed : VelkMax::kDspEnabled);
    }
    Post(object, sys_getdspstate() != 0 ? VelkMax::kDspOn : VelkMax::kDspOff);
}

void InfoMessage(PanObject& object) {
    if (Pan* engine = object.Engine()) {
        std::vector<std::string> lines;
        engine->Dump(lines);
        std::vector<std::string> state;
        engine->ReportState(state);
        lines.insert(lines.end(), state.begin(), state.end());
        for (const std::string& line : lines) Post(object, VelkMax::kLine, line.c_str());
        const std::string autoMute = AutoMuteText(object.AutoMute());
        Post(object, kAutoMuteLine, autoMute.c_str());
    }
    PostDspStatus(object);
}

void ClearMessage(PanObject& object) {
    if (object.Engine() != nullptr) object.Engine()->Reset();
}

}  // namespace

std::span<const VelkMax::MessageRow> PanMessages() {
    // clang-format off
    static constexpr VelkMax::MessageRow kMessages[] = {
        // name          handler
        {"source",       Handler<&SourceMessage>},
        {"loudspeakers", Handler<&SpeakersMessage>},
        {"speakers",     Handler<&SpeakersMessage>},
        {"loudspeaker",  Handler<&SpeakerMessage>},
        {"speaker",      Handler<&SpeakerMessage>},
        {"info",         Handler<&InfoMessage>},
        {"clear",        Handler<&ClearMessage>},
    };
    // clang-format on
    return kMessages;
}

}  // namespace Quilo
