// SPDX-License-Identifier: MIT
#include "QuiloPanMessages.h"

#include "QuiloPanHeadphones.h"
#include "QuiloPanNearfield.h"
#include "QuiloPanObject.h"
#include "QuiloPanPanners.h"
#include "QuiloPanPositions.h"
#include "QuiloPanSource.h"
#include "QuiloPanSymbols.h"

#include <string_view>

namespace Quilo {

using VelkMax::DeferredHandler;
using VelkMax::Error;
using VelkMax::Handler;
using VelkMax::Post;
using VelkMax::PromptHandler;
using VelkMax::Reject;
using VelkMax::Warn;

namespace {

void SpeakersMessage(PanObject& object, Atoms atoms) {
    if (!object.TakesSpeakers() || object.NumSpeakers() == 0) return;
    auto speakers = ReadSpeakers(object, atoms);
    if (!speakers) return;
    object.TheDoor().Changed(PanSymbols::Get().speakers);
    object.SetSpeakers(std::move(*speakers));
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
        object.TheDoor().Changed(PanSymbols::Get().speakers);
        object.SetSpeakers(std::move(speakers));
    }
}

void DspStatusMessage(PanObject& object) {
    if (object.Mute() == 1 || object.IsDisabled()) {
        Post(object, VelkMax::kDspMuted);
    } else {
        Post(object, object.Bypass() == 1 ? VelkMax::kDspBypassed : VelkMax::kDspEnabled);
    }
    Post(object, sys_getdspstate() != 0 ? VelkMax::kDspOn : VelkMax::kDspOff);
}

/// Posts one line for each inlet: not connected, connected and active, or connected and silent.
void DspStateMessage(PanObject& object) {
    const Pan* engine = object.Engine();
    for (unsigned inlet = 0; engine != nullptr && inlet < engine->NumInputs(); ++inlet) {
        const bool isConnected = engine->InputConnected(inlet);
        const char* const state = !isConnected                 ? "not connected"
                                  : engine->InputActive(inlet) ? "connected, active"
                                                               : "connected, silent";
        const std::string line = "inlet " + std::to_string(inlet + 1) + " : " + state;
        Post(object, VelkMax::kLine, line.c_str());
    }
}

void InfoMessage(PanObject& object) {
    if (Pan* engine = object.Engine()) {
        std::vector<std::string> lines;
        engine->Dump(lines);
        std::vector<std::string> state;
        engine->ReportState(state);
        lines.insert(lines.end(), state.begin(), state.end());
        for (const std::string& line : lines) Post(object, VelkMax::kLine, line.c_str());
    }
    DspStatusMessage(object);
}

void ClearMessage(PanObject& object) {
    if (object.Engine() != nullptr) object.Engine()->Reset();
}

void CornersMessage(PanObject& object, Atoms atoms) {
    if (!IsOf(object, Family::Panr)) return Error(object, kOnlyPanr);
    constexpr std::size_t kCorners = 4;
    if (atoms.Size() > kCorners) Warn(object, kTooManyCorners, static_cast<int>(kCorners));
    const Atoms corners = atoms.First(kCorners);
    if (!corners.AreNumbers(kCorners)) return Reject(object, kInvalidCorners, atoms);
    SetCorners(object, corners.Numbers());
}

// ---- Documentation. The markup is that of Max's reference pages.

constexpr VelkMax::ArgumentDoc kSourceArguments[] = {
    {"int", "source index"},
    {"symbol", "name of the property"},
    {"list of int or float or symbol", "value"},
};
constexpr VelkMax::ArgumentDoc kSpeakerArguments[] = {
    {"int", "speaker index"},
    {"symbol", "name of the property"},
    {"list of int or float or symbol", "value"},
};
constexpr VelkMax::ArgumentDoc kPositionsArguments[] = {
    {"symbol", "coordinate format"},
    {"list of int or float", "values"},
};
constexpr VelkMax::ArgumentDoc kCornersArguments[] = {{"list of int or float", "azimuths"}};
constexpr VelkMax::ArgumentDoc kWordArgument[] = {{"symbol", "keyword"}};
constexpr VelkMax::ArgumentDoc kImplementationArguments[] = {{"list", "keywords and values"}};
constexpr VelkMax::ArgumentDoc kPacketArguments[] = {{"int", "size in bytes"}, {"int", "address"}};
constexpr VelkMax::ArgumentDoc kOscArguments[] = {{"list of int or float or symbol", "arguments"}};
constexpr VelkMax::ArgumentDoc kFileArgument[] = {{"symbol", "file name"}};

constexpr char kSourceHelp[] =
    "Moves a source or sets one of its properties. Sources are counted from 1. The property is a "
    "coordinate format, such as <m>xyz</m>, <m>aed</m> (azimuth, elevation, distance) or "
    "<m>azim</m>, followed by as many values as it has; <m>spread</m> (0 to 100); "
    "<m>spreadxyz</m> (three values, types dbap and dbap3d); <m>numneighbors</m> (type knn); or "
    "<m>mute</m> (1 or 0). <br/> Examples: <m>source 1 aed 30 0 2</m>, <m>source 2 xyz 0 1 0</m>, "
    "<m>source 1 mute 1</m>.";
constexpr char kSpeakersHelp[] =
    "Sets the positions of all loudspeakers, from the first outlet on: a coordinate format, then "
    "its values for each. <br/> Example: <m>speakers aed -30 0 2 30 0 2 110 0 2 -110 0 2</m>.";
constexpr char kSpeakerHelp[] =
    "Sets the position of one loudspeaker, counted from 1: a coordinate format, then its values. "
    "<br/> Example: <m>speaker 2 aed 30 0 2</m>.";
constexpr char kCornersHelp[] =
    "Sets the azimuths, in degrees, of the four corners between which the type <m>panr</m> pans. "
    "They begin in front on the left and go on clockwise. <br/> Example: "
    "<m>corners -45 45 135 -135</m>.";
constexpr char kListenerMessageHelp[] =
    "Sets the position of the listener (binaural types only): a coordinate format, then its "
    "values.";
constexpr char kImplementationHelp[] =
    "Chooses how binaural types filter (binaural types only): pairs of a keyword and a value. "
    "<m>realisation</m> auto, cells or fir; <m>delay</m> 0 nearest, 1 linear, 2 Lagrange, 3 "
    "all-pass, 5 Hermite, 6 quadratic, 7 B-spline or 8 cardinal, how delays read between samples; "
    "<m>length</m> 16 to 8192, at which responses are cut; <m>reduction</m> 0 to 100, percent "
    "taken off the delays of the ears. <br/> Example: "
    "<m>implementation realisation fir length 64</m>.";
constexpr char kLoadHelp[] =
    "Loads filters from a file with the extension hrtf in the search path; <m>kemar</m> stands for "
    "the built-in ones. Without a name a dialog asks for the file (binaural types only).";
constexpr char kLoadNearfieldHelp[] =
    "Loads filters from a file with the extension near in the search path; <m>none</m> brings the "
    "built-in ones back (binaural, subtype nearfield only).";
constexpr char kInfoHelp[] =
    "Posts the type, the settings and the state of the signal processing to the Max window.";
constexpr char kClearHelp[] = "Clears what is still on its way in delay lines and filters.";

}  // namespace

std::span<const VelkMax::MessageRow> PanMessages() {
    // It asks Max for the attributes: outside the door.
    constexpr VelkMax::MessageRegistration kPostOsc =
        &VelkMax::MessageHandler<&PostOscMessage, VelkMax::Letter::Pace::Outside>::Register;
    // clang-format off
    static const VelkMax::MessageRow kMessages[] = {
        // name            handler                                  digest                                    description                                                   arguments
        {"postdspstatus",  Handler<&DspStatusMessage>,              "Post the state of the processing",       "post information about the dsp status in the Max window."},
        {"postdspstate",   Handler<&DspStateMessage>,               "Post the state of the inlets",           "post information about the dsp connections."},
        {"source",         PromptHandler<&SourceMessage, 2>,          "Move a source or set its properties",    kSourceHelp,                                                  kSourceArguments},
        {"loudspeakers",   Handler<&SpeakersMessage>,               "Set the positions of all loudspeakers",  kSpeakersHelp,                                                kPositionsArguments},
        {"speakers",       Handler<&SpeakersMessage>,               "Set the positions of all loudspeakers",  kSpeakersHelp,                                                kPositionsArguments},
        {"loudspeaker",    Handler<&SpeakerMessage, 2>,             "Set the position of one loudspeaker",    kSpeakerHelp,                                                 kSpeakerArguments},
        {"speaker",        Handler<&SpeakerMessage, 2>,             "Set the position of one loudspeaker",    kSpeakerHelp,                                                 kSpeakerArguments},
        {"info",           Handler<&InfoMessage>,                   "Post information about the object",      kInfoHelp},
        {"clear",          Handler<&ClearMessage>,                  "Clear the signal processing",            kClearHelp},
        {"corners",        Handler<&CornersMessage>,                "Set the corners of the type panr",       kCornersHelp,                                                 kCornersArguments},
        {"implementation", DeferredHandler<&ImplementationMessage>, "Choose the filters for headphones",      kImplementationHelp,   kImplementationArguments},
        {"crossfadetype",  Handler<&CrossfadeTypeMessage>,          "Choose how filters fade",                "Shape of the fade between two filters: <m>linear</m>, <m>cosine</m> or <m>squareCosine</m> (binaural types only).", kWordArgument},
        {"listener",       Handler<&ListenerMessage>,               "Set the position of the listener",       kListenerMessageHelp,                                         kPositionsArguments},
        {"load",           DeferredHandler<&LoadMessage>,           "Load a set of head-related filters",     kLoadHelp,                                                    kFileArgument},
        {"read",           DeferredHandler<&LoadMessage>,           "Load a set of head-related filters",     "The same as <m>load</m>.",                                   kFileArgument},
        {"loadnf",         Handler<&LoadNearfieldMessage>,          "Load near-field compensation filters",   kLoadNearfieldHelp,        kFileArgument},
        {"loadNF",         Handler<&LoadNearfieldMessage>,          "Load near-field compensation filters",   "The same as <m>loadnf</m>.",                                 kFileArgument},
        {"FullPacket",     RegisterFullPacket,                      "Take an OSC packet",                     "An OSC packet in memory, as <m>udpreceive</m> with a second argument passes it.", kPacketArguments},
        {"anything",       RegisterAnything,                        "Take an OSC message",                    OscAddressesHelp(),                                           kOscArguments},
        {"postosc",        kPostOsc,                                "Post the OSC addresses",                 "post every OSC address with its arguments to the Max window."},
    };
    // clang-format on
    return kMessages;
}

}  // namespace Quilo
