// SPDX-License-Identifier: MIT
#include "QuiloPanAttributes.h"

#include "QuiloPanObject.h"
#include "pan/QuiloKeywords.h"

namespace Quilo {

using VelkMax::AttributeRow;
using VelkMax::Bind;
using VelkMax::Range;

namespace {

constexpr Range kOnOff{0, 1};
constexpr Range kChannels{1, kMaxChannels};
constexpr Range kAutoMuteSeconds{0, 500};
constexpr Range kInterpolationMs{0, 200};
constexpr Range kSpread{0, 100};

std::string TypeChoices() { return PanTypeKeywords().PrintedKeywords(' '); }

// Deliberate: a menu of its own; "sh" stands for "direct" and "snowman" for its canonical word.
std::string SubTypeChoices() {
    return "direct early diffuse nearfield sh sphericalheadmodel snowman continuous";
}

// The markup in the descriptions is that of Max's reference pages.
constexpr char kMuteHelp[] =
    "The <m> mute </m> attribute is used to enable or disable the signal processing. When it is 1 "
    "the signal processing chain is muted: no processing time is spent and all outputs are zero.";
constexpr char kBypassHelp[] =
    "The <m> bypass </m> attribute is used to bypass the signal processing. When it is 1 every "
    "input is copied to the output of the same number, further outputs are zero, and no "
    "processing time is spent.";
constexpr char kAutoMuteHelp[] =
    "The <m> automute </m> attribute is used to save processing time. The object inspects its "
    "inputs: those that have been inactive (exactly zero) for this time are muted automatically. "
    "They come back with their first sample that is not zero. 0 switches the inspection off.";
constexpr char kTypeHelp[] =
    "The <m> type </m> attribute chooses the panning algorithm. It is fixed once the object is "
    "created. A type that does not fit the numbers of inputs and outputs gives a silent object "
    "whose type reads <m> null </m>.";
constexpr char kSourcesHelp[] =
    "The <m> sourcespositions </m> attribute holds the positions of all sources, three values x "
    "(right), y (front) and z (up) for each. The <m> source </m> message moves a single one, in "
    "any coordinate format.";
constexpr char kSpeakersHelp[] =
    "The <m> speakerspositions </m> attribute holds the positions of all loudspeakers, three "
    "values x (right), y (front) and z (up) for each. The <m> speakers </m> message sets them in "
    "any coordinate format.";
constexpr char kInterpolationHelp[] =
    "The <m> interpolationtime </m> attribute is the time in which gains and delays glide to "
    "their new values when a source moves. With 0 they jump.";

using P = PanObject;

// clang-format off
constexpr AttributeRow kClassAttributes[] = {
    // name               type       size              label                                        style    choices         default    units    category   order    accessors and range                                                                help
    {"mute",              "long",    1,                "mute dsp",                                  "onoff", nullptr,        "0",       nullptr, "options", nullptr, Bind<&P::Mute, &P::SetMute, kOnOff>,                                         kMuteHelp},
    {"bypass",            "long",    1,                "bypass dsp",                                "onoff", nullptr,        "0",       nullptr, "options", nullptr, Bind<&P::Bypass, &P::SetBypass, kOnOff>,                                     kBypassHelp},
    {"automute",          "float32", 1,                "threshold for auto-muting",                 nullptr, nullptr,        "20.00",   "sec",   "options", nullptr, Bind<&P::AutoMute, &P::SetAutoMute, kAutoMuteSeconds>,                       kAutoMuteHelp},
    {"numinputs",         "long",    1,                "number of input channels",                  nullptr, nullptr,        "1",       nullptr, nullptr,   "1",     Bind<&P::NumInputs, &P::SetNumInputs, kChannels>,                            nullptr},
    {"numoutputs",        "long",    1,                "number of output channels",                 nullptr, nullptr,        "4",       nullptr, nullptr,   "2",     Bind<&P::NumOutputs, &P::SetNumOutputs, kChannels>,                          nullptr},
    {"type",              "symbol",  1,                "panning type",                              "enum",  TypeChoices,    "angular", nullptr, nullptr,   "3",     Bind<&P::Type, &P::SetType>,                                                 kTypeHelp},
    {"subtype",           "symbol",  1,                "panning subtype",                           "enum",  SubTypeChoices, "direct",  nullptr, nullptr,   "4",     Bind<&P::SubType, &P::SetSubType>,                                           nullptr},
    {"sourcespositions",  "float32", 3 * kMaxChannels, "sources positions",                         nullptr, nullptr,        nullptr,   "xyz",   nullptr,   "5",     Bind<&P::SourcesPositions, &P::SetSourcesPositions>,                         kSourcesHelp},
    {"speakerspositions", "float32", 3 * kMaxChannels, "speakers positions",                        nullptr, nullptr,        nullptr,   "xyz",   nullptr,   nullptr, Bind<&P::SpeakersPositions, &P::SetSpeakersPositions>,                       kSpeakersHelp},
    {"interpolationtime", "float32", 1,                "interpolation time (ramp and delay lines)", nullptr, nullptr,        "0.00",    "msec",  nullptr,   "6",     Bind<&P::InterpolationTime, &P::SetInterpolationTime, kInterpolationMs>,     kInterpolationHelp},
};

/// An attribute of the objects whose engine wants it. Its default is what that engine begins with.
struct InstanceRow {
    bool (*applies)(const Pan& engine) = nullptr;
    std::vector<float> (P::*engineValues)() const = nullptr;
    AttributeRow attribute;
};
constexpr InstanceRow kInstanceAttributes[] = {
    // applies to                                                values      name      type       size          label     style    choices  default  units    category   order    accessors and range                              help
    {[](const Pan& engine) { return engine.SupportsSpread(); }, &P::Spread, {"spread", "float32", kMaxChannels, "spread", nullptr, nullptr, nullptr, nullptr, "options", nullptr, Bind<&P::Spread, &P::SetSpread, kSpread>, nullptr}},
};
// clang-format on

std::string DefaultText(const char* type, const std::vector<float>& values) {
    std::string text;
    for (const float value : values) {
        if (!text.empty()) text += ' ';
        text += VelkMax::PropertyText(type, static_cast<double>(value));
    }
    return text;
}

}  // namespace

std::span<const AttributeRow> PanClassAttributes() { return kClassAttributes; }

void AddPanInstanceAttributes(PanObject& object) {
    if (object.Engine() == nullptr) return;
    for (const InstanceRow& row : kInstanceAttributes) {
        if (!row.applies(*object.Engine())) continue;
        const std::vector<float> values = (object.*row.engineValues)();
        VelkMax::AddInstanceAttribute(MaxObjectOf(object), row.attribute,
                                      static_cast<max_long>(values.size()),
                                      DefaultText(row.attribute.type, values));
    }
}

}  // namespace Quilo
