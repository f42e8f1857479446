// SPDX-License-Identifier: MIT
#include "QuiloPanAttributes.h"

#include "QuiloPanHeadphones.h"
#include "QuiloPanNearfield.h"
#include "QuiloPanPanners.h"
#include "math/VelkDspKeywords.h"
#include "max/VelkMaxMaxAttribute.h"
#include "pan/QuiloKeywords.h"

namespace Quilo {

using VelkMax::AttributeRow;
using VelkMax::Bind;
using VelkMax::BindAnnounced;
using VelkMax::Range;

namespace {

constexpr Range kOnOff{0, 1};
constexpr Range kChannels{1, kMaxChannels};
constexpr Range kAutoMuteSeconds{0, 500};
constexpr Range kInterpolationMs{0, 200};
constexpr Range kSpread{0, 100};
constexpr Range kSpeakersRadiusMetres{0.2, 20};
constexpr Range kCutoffHz{10, 1000};
constexpr Range kCoefficient{0, 1};
constexpr Range kFromZero{0};
constexpr Range kFromReach{0.2};  // metres

std::string TypeChoices() { return PanTypeKeywords().PrintedKeywords(' '); }

// The menu's own words, not those that the attribute prints: "sh" sets direct, "snowman" prints as
// "snowmanmodel".
std::string SubTypeChoices() {
    return "direct early diffuse nearfield sh sphericalheadmodel snowman continuous";
}

// The markup in the descriptions is that of Max's reference pages.
constexpr char kMuteHelp[] =
    "The <m> mute </m> attribute is used to enable or disable the signal processing. When it is 1 "
    "the signal processing chain is muted: no processing time is spent and all outputs are zero. "
    "When it is 0, which is the default, the object renders its sources. Positions and all other "
    "settings can be changed while the object is muted; they are heard as soon as it is no longer. "
    "<br/> Example: <m> mute 1 </m> silences the object. A single source is silenced by the "
    "message <m> source 2 mute 1 </m>.";
constexpr char kBypassHelp[] =
    "The <m> bypass </m> attribute is used to bypass the signal processing. When it is 1 the "
    "signal processing chain is bypassed: every input is copied to the output of the same number, "
    "further outputs are zero, and no processing time is spent. When it is 0, which is the "
    "default, the object renders its sources. When <m> mute </m> is 1 too, the outputs are zero. "
    "<br/> Example: <m> bypass 1 </m> sends the first source to the first output as it is.";
constexpr char kAutoMuteHelp[] =
    "The <m> automute </m> attribute is used to save processing time. The object inspects its "
    "inputs: those that have been inactive (exactly zero) for this time, in seconds from 1 to 500, "
    "are muted automatically. They come back with their first sample that is not zero, so nothing "
    "is lost. 0 switches the inspection off. The default is 20 seconds. <br/> Example: "
    "<m> automute 2.5 </m> lets sources rest after two and a half seconds of silence.";
constexpr char kInputsHelp[] =
    "The number of sources, from 1 to 250; the object has one signal inlet for each. It is given "
    "in the box, as its first argument, and fixed once the object is created.";
constexpr char kOutputsHelp[] =
    "The number of loudspeakers, ambisonic components or ears, from 1 to 250; the object has one "
    "signal outlet for each. It is given in the box, as its second argument, and fixed once the "
    "object is created.";
constexpr char kTypeHelp[] =
    "The <m> type </m> attribute chooses the panning algorithm. It is given in the box, as its "
    "third argument, and fixed once the object is created. <br/> For two outputs: <m> xy </m>, "
    "<m> ms </m> and <m> ab </m>, which imitate pairs of microphones, and <m> binaural </m> for "
    "headphones. <br/> For loudspeakers round the listener: <m> angular </m>, <m> surround </m> (3 "
    "or 4 outputs), <m> panr </m> (4 to 8 or 12), <m> vbap2d </m> and <m> vbip2d </m>. <br/> For "
    "loudspeakers on a sphere or a dome: <m> vbap </m>, <m> vbip </m> and <m> spcap </m>. <br/> "
    "For loudspeakers anywhere in a room: <m> dbap </m>, <m> dbap3d </m>, <m> vdbap </m> and "
    "<m> knn </m>. <br/> For bass: <m> subwoofers </m>. <br/> For the components of an ambisonic "
    "field: <m> bformat </m> (3 or 4 outputs), <m> hoa2d </m> and <m> nfchoa2d </m> (3, 5, 7 and "
    "so on), <m> hoa3d </m> and <m> nfchoa3d </m> (4, 9, 16 and so on). In these a source in front "
    "is encoded in the component Y. <br/> A type that does not fit the numbers of inputs and "
    "outputs "
    "gives a silent object whose type reads <m> null </m>. <br/> Example: "
    "<m> quilo.pan~ 2 8 vbap2d </m> pans two sources over a ring of eight loudspeakers.";
constexpr char kSubTypeHelp[] =
    "A variant of the panning type. <m> diffuse </m> spreads every source over all outputs without "
    "a direction; the others are for the type <m> binaural </m> and change nothing elsewhere. It "
    "is given in the box, as its fourth argument, and fixed once the object is created.";
constexpr char kSourcesHelp[] =
    "The <m> sourcespositions </m> attribute holds the positions of all sources, in metres: three "
    "values x (right), y (front) and z (up) for each. A shorter list moves the first sources only. "
    "The <m> source </m> message moves a single one, in any coordinate format. <br/> Example: "
    "<m> sourcespositions -1 1 0 1 1 0 </m> places two sources in front, on the left and on the "
    "right.";
constexpr char kSpeakersPositionsHelp[] =
    "The <m> speakerspositions </m> attribute holds the positions of all loudspeakers, in metres: "
    "three values x (right), y (front) and z (up) for each. The <m> speakers </m> message sets "
    "them in any coordinate format, the <m> speaker </m> message a single one. Types that do not "
    "render to loudspeakers keep the positions and ignore them. <br/> Example: "
    "<m> speakerspositions -1 1 0 1 1 0 1 -1 0 -1 -1 0 </m> is a square that begins in front on "
    "the left.";
constexpr char kInterpolationHelp[] =
    "The <m> interpolationtime </m> attribute is the time, in milliseconds from 0 to 200, in which "
    "gains and delays glide to their new values when a source moves. Short times follow fast "
    "movements, long ones are smoother. With 0 they jump, which can be heard as clicks. <br/> "
    "Example: <m> interpolationtime 20 </m> suits positions that arrive every 20 ms.";
constexpr char kEncodingHelp[] =
    "How the components are normalised. SN2D and N2D are for two dimensions only, SN3D and N3D for "
    "three dimensions only; what does not fit becomes SN2D or SN3D. A source in front is encoded "
    "in the component Y. <br/> Example: <m> encoding FuMa </m>.";
constexpr char kHoaModeHelp[] =
    "<m> precise </m> computes the gains of each direction, <m> fast </m> takes them from a table "
    "with steps of one degree.";
constexpr char kSpreadModeHelp[] =
    "With <m> omni </m> a source is widened equally in all directions, by <m> spread </m>. With "
    "<m> directional </m> it is widened along x, y and z, by <m> spreadxyz </m>.";
constexpr char kMuteOutsideHelp[] =
    "When it is 1 a source beyond the loudspeakers is silent, when it is 0 it stays audible.";
constexpr char kSpreadXyzHelp[] =
    "Width of each source along x, y and z, in percent: three values for each. Used when "
    "<m> spreadmode </m> is <m> directional </m>. <br/> Example: <m> spreadxyz 100 0 0 </m> makes "
    "the first source as wide as the room.";
constexpr char kNfcHighPassHelp[] =
    "When it is 1 the bass boost of sources near the listener is limited by high-pass filters.";
constexpr char kSpeakersRadiusHelp[] =
    "Distance of the loudspeakers of the reproduction, in metres from 0.2 to 20.";
constexpr char kSpreadHelp[] =
    "Width of each source, from 0 (a point) to 100, one value for each. It is heard with the types "
    "<m> dbap </m>, <m> dbap3d </m> and <m> spcap </m>; the others keep it. The message "
    "<m> source 1 spread 30 </m> sets a single one. <br/> Example: <m> spread 0 50 </m>.";
constexpr char kCutoffHelp[] =
    "Frequency, in Hz from 10 to 1000, above which the sources are kept from the subwoofers.";

constexpr char kListenerHelp[] =
    "Where the listener's head is, in metres: x (right), y (front) and z (up). Sources stay where "
    "they are. <br/> Example: <m> listenerposition 0 1 0 </m> takes the listener a metre forward.";
constexpr char kHrtfFileHelp[] =
    "The set of head-related filters: the name of a file with the extension hrtf in the search "
    "path, or <m> kemar </m> for the built-in set, with which the object begins. A set that cannot "
    "be loaded changes nothing.";
constexpr char kCrossfadeHelp[] =
    "How long the filters of a source take to change when it moves, in milliseconds from 0 to "
    "10000. With 0 they are exchanged at once.";
constexpr char kItdTypeHelp[] =
    "How the difference between the times of arrival at both ears is computed: "
    "<m> measurement </m> takes what was measured with the filters, <m> NoITD </m> none, the "
    "others models of a head.";
constexpr char kItdLatencyHelp[] =
    "With <m> fixedlatency </m> both ears are a millisecond late, the nearer one less and the "
    "farther one more. With <m> nolatency </m> the farther ear alone is delayed.";
constexpr char kHeadRadiusHelp[] =
    "Radius of the listener's head, in metres up to 1, for the models of <m> itdtype </m> and for "
    "the shadow of the head.";
constexpr char kTorsoReflectionHelp[] =
    "How much of a sound from above the torso reflects to the ears: from 0, nothing, to 1.";
constexpr char kTorsoRadiusHelp[] =
    "Radius of the sphere that is the listener's torso, in metres up to 1. With 0 there is none.";
constexpr char kNeckHeightHelp[] = "Distance of the torso from the head, in metres up to 1.";
constexpr char kNearfieldFileHelp[] =
    "The near-field compensation filters: the name of a file with the extension near in the search "
    "path, or <m> none </m> for the built-in ones, with which the object begins.";
constexpr char kRadiusHelp[] =
    "Sources nearer to the listener than this are heard from this distance, in metres from 0.2 to "
    "100.";
constexpr char kAttenuationHelp[] =
    "When it is 1 a source gets louder as it comes near: its gain is 1 at one metre, 2 at half a "
    "metre.";
constexpr char kCrossEarsHelp[] =
    "When it is 1 each ear takes the filter of the direction in which it sees a near source "
    "itself, when it is 0 both take that of the direction from the middle of the head.";
constexpr char kCompensationHelp[] =
    "When it is 1 filters add what nearness does to the spectrum at each ear.";
constexpr char kHrtfFiltersHelp[] =
    "When it is 0 the head-related filters are left out; delays and levels of the ears stay.";
constexpr char kGainsHelp[] =
    "When it is 1 the ear that a near source faces is louder than the other, in the bass too.";
constexpr char kDelaysHelp[] =
    "When it is 1 the delay between the ears grows as a source comes near.";

// The patcher file saves how the object renders and where the loudspeakers stand. It does not save
// what the box text holds, what is switched during a performance (mute, bypass) and what changes as
// a source moves; preset, pattr and dictionaries store all of these.
constexpr bool kSaved = true;
constexpr bool kNotSaved = false;

using P = PanObject;
using Near = BinauralPanningNearfield::Switch;

// clang-format off
constexpr AttributeRow kClassAttributes[] = {
    // name               type       size              label                                        style    choices         default    units    category   order    saved      accessors and range                                                                help
    {"mute",              "long",    1,                "mute dsp",                                  "onoff", nullptr,        "0",       nullptr, "options", nullptr, kNotSaved, Bind<&P::Mute, &P::SetMute, kOnOff>,                                         kMuteHelp},
    {"bypass",            "long",    1,                "bypass dsp",                                "onoff", nullptr,        "0",       nullptr, "options", nullptr, kNotSaved, Bind<&P::Bypass, &P::SetBypass, kOnOff>,                                     kBypassHelp},
    {"automute",          "float32", 1,                "threshold for auto-muting",                 nullptr, nullptr,        "20.00",   "sec",   "options", nullptr, kSaved,    Bind<&P::AutoMute, &P::SetAutoMute, kAutoMuteSeconds>,                       kAutoMuteHelp},
    {"numinputs",         "long",    1,                "number of input channels",                  nullptr, nullptr,        "1",       nullptr, nullptr,   "1",     kNotSaved, BindAnnounced<&P::NumInputs, &P::SetNumInputs, kChannels>,                   kInputsHelp},
    {"numoutputs",        "long",    1,                "number of output channels",                 nullptr, nullptr,        "4",       nullptr, nullptr,   "2",     kNotSaved, BindAnnounced<&P::NumOutputs, &P::SetNumOutputs, kChannels>,                 kOutputsHelp},
    {"type",              "symbol",  1,                "panning type",                              "enum",  TypeChoices,    "angular", nullptr, nullptr,   "3",     kNotSaved, BindAnnounced<&P::Type, &P::SetType>,                                        kTypeHelp},
    {"subtype",           "symbol",  1,                "panning subtype",                           "enum",  SubTypeChoices, "direct",  nullptr, nullptr,   "4",     kNotSaved, BindAnnounced<&P::SubType, &P::SetSubType>,                                  kSubTypeHelp},
    {"sourcespositions",  "float32", 3 * kMaxChannels, "sources positions",                         nullptr, nullptr,        nullptr,   "xyz",   nullptr,   "5",     kNotSaved, BindAnnounced<&P::SourcesPositions, &P::SetSourcesPositions>,                kSourcesHelp},
    {"speakerspositions", "float32", 3 * kMaxChannels, "speakers positions",                        nullptr, nullptr,        nullptr,   "xyz",   nullptr,   nullptr, kSaved,    BindAnnounced<&P::SpeakersPositions, &P::SetSpeakersPositions>,              kSpeakersPositionsHelp},
    {"interpolationtime", "float32", 1,                "interpolation time (ramp and delay lines)", nullptr, nullptr,        "0.00",    "msec",  nullptr,   "6",     kSaved,    BindAnnounced<&P::InterpolationTime, &P::SetInterpolationTime, kInterpolationMs>,     kInterpolationHelp},
};

// Deliberate: "xyz" is accepted too and not offered.
std::string SpreadModeChoices() { return "omni directional"; }
std::string EncodingChoices() { return tav::NormalizationKeywords().AcceptedKeywords(' '); }
std::string ItdTypeChoices() { return ItdTypeKeywords().AcceptedKeywords(' '); }
std::string ItdLatencyChoices() { return ItdLatencyKeywords().AcceptedKeywords(' '); }
std::string HoaModeChoices() { return tav::HoaModeKeywords().AcceptedKeywords(' '); }

/// Attributes of the objects of one family.
struct AttributeGroup {
    Family family;
    const char* category;
};
constexpr AttributeGroup kHeadphones{Family::Binaural, "binaural"};
constexpr AttributeGroup kSnowman{Family::Snowman, "binaural"};
constexpr AttributeGroup kNearfield{Family::Nearfield, "binaural"};
constexpr AttributeGroup kHoa{Family::Hoa, "hoa"};
constexpr AttributeGroup kDbap{Family::Dbap, "dbap"};
constexpr AttributeGroup kNfcHoa{Family::NfcHoa, "hoa"};
constexpr AttributeGroup kSpreading{Family::Spreading, "options"};
constexpr AttributeGroup kSubwoofers{Family::Subwoofers, nullptr};

/// A row without a default takes the value that a new engine has.
struct InstanceRow {
    const AttributeGroup& group;
    AttributeRow attribute;
};

// In the order in which they are added; an inspector sorts attributes without "order" by name.
constexpr InstanceRow kInstanceAttributes[] = {
    // group         name              type       size              label                                  style    choices            default   units    category order    saved      accessors and range                                                    help
    {kHeadphones,  {"listenerposition", "float32", 3,              "listener position",                   nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kNotSaved, Bind<ListenerPosition, SetListenerPosition>,                           kListenerHelp}},
    {kHeadphones,  {"hrtffile",       "symbol",  1,                "hrtf file",                           "file",  nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<&P::HrtfSource, SetHrtfFile>,                                     kHrtfFileHelp}},
    {kHeadphones,  {"crossfadetime",  "float32", 1,                "filter cross fade time (msec)",       nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<CrossfadeTime, SetCrossfadeTime, kFromZero>,                      kCrossfadeHelp}},
    {kHeadphones,  {"itdtype",        "symbol",  1,                "itd type",                            "enum",  ItdTypeChoices,    nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<ItdType, SetItdType>,                                             kItdTypeHelp}},
    {kHeadphones,  {"itdlatency",     "symbol",  1,                "itd latency mode",                    "enum",  ItdLatencyChoices, nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<ItdLatency, SetItdLatency>,                                       kItdLatencyHelp}},
    {kHeadphones,  {"headradius",     "float32", 1,                "listener head radius [m]",            nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<HeadRadius, SetHeadRadius, kFromZero>,                            kHeadRadiusHelp}},
    {kSnowman,     {"torsoreflection", "float32", 1,               "torso reflection coefficient",        nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<TorsoReflection, SetTorsoReflection, kCoefficient>,               kTorsoReflectionHelp}},
    {kSnowman,     {"torsoradius",    "float32", 1,                "listener torso radius [m]",           nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<TorsoRadius, SetTorsoRadius, kFromZero>,                          kTorsoRadiusHelp}},
    {kSnowman,     {"neckheight",     "float32", 1,                "listener neck height [m]",            nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NeckHeight, SetNeckHeight, kFromZero>,                            kNeckHeightHelp}},
    {kNearfield,  {"nearfieldhrtffile",    "symbol",   1,           "nearfield hrtf file",                                 "file",  nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<&P::NearfieldSource, SetNearfieldFile>, kNearfieldFileHelp}},
    {kNearfield,  {"radius",               "float32",  1,           "radius around listener (m)",                          nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldRadius, SetNearfieldRadius, kFromReach>, kRadiusHelp}},
    {kNearfield,  {"distanceattenuation",  "long",     1,           "distance attenuation",                                "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::DistanceAttenuation>, SetNearfieldSwitch<Near::DistanceAttenuation>, kOnOff>, kAttenuationHelp}},
    {kNearfield,  {"crossearselection",    "long",     1,           "cross ears hrtf selection",                           "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::CrossEarSelection>, SetNearfieldSwitch<Near::CrossEarSelection>, kOnOff>, kCrossEarsHelp}},
    {kNearfield,  {"nfcompensationfilters","long",     1,           "nearfield compensation filters",                      "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::NfCompensationFilters>, SetNearfieldSwitch<Near::NfCompensationFilters>, kOnOff>, kCompensationHelp}},
    {kNearfield,  {"hrtffilters",          "long",     1,           "hrtf filters",                                        "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::HrtfFilters>, SetNearfieldSwitch<Near::HrtfFilters>, kOnOff>, kHrtfFiltersHelp}},
    {kNearfield,  {"gainscorrection",      "long",     1,           "monaural gains correction for distance attenuation",  "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::GainsCorrection>, SetNearfieldSwitch<Near::GainsCorrection>, kOnOff>, kGainsHelp}},
    {kNearfield,  {"delayscorrection",     "long",     1,           "monaural delays (ITD) correction",                    "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NearfieldSwitch<Near::DelaysCorrection>, SetNearfieldSwitch<Near::DelaysCorrection>, kOnOff>, kDelaysHelp}},
    {kHoa,         {"encoding",       "symbol",  1,                "HOA encoding convention",             "enum",  EncodingChoices,   "SN3D",   nullptr, nullptr, nullptr, kSaved,    Bind<Encoding, SetEncoding>,                                           kEncodingHelp}},
    {kHoa,         {"norm",           "symbol",  1,                "HOA encoding convention",             "enum",  EncodingChoices,   "SN3D",   nullptr, nullptr, nullptr, kNotSaved, Bind<Encoding, SetEncoding>,                                           kEncodingHelp, "encoding"}},
    {kHoa,         {"hoamode",        "symbol",  1,                "HOA computation mode",                "enum",  HoaModeChoices,    nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<HoaMode, SetHoaMode>,                                             kHoaModeHelp}},
    {kDbap,        {"spreadmode",     "symbol",  1,                "spread mode",                         "enum",  SpreadModeChoices, nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<SpreadMode, SetSpreadMode>,                                       kSpreadModeHelp}},
    {kDbap,        {"muteoutside",    "long",    1,                "mute sources outside speakers hull",  "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<MuteOutside, SetMuteOutside, kOnOff>,                             kMuteOutsideHelp}},
    {kDbap,        {"spreadxyz",      "float32", 3 * kMaxChannels, "directionnal spread",                 nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kNotSaved, Bind<SpreadXyz, SetSpreadXyz, kSpread>,                                kSpreadXyzHelp}},
    {kNfcHoa,      {"nfchighpass",    "long",    1,                "high-pass filtering for NFC",         "onoff", nullptr,           nullptr,  nullptr, nullptr, nullptr, kSaved,    Bind<NfcHighPass, SetNfcHighPass, kOnOff>,                             kNfcHighPassHelp}},
    {kNfcHoa,      {"speakersradius", "float32", 1,                "speakers radius",                     nullptr, nullptr,           "1.00",   nullptr, nullptr, nullptr, kSaved,    Bind<SpeakersRadius, SetSpeakersRadius, kSpeakersRadiusMetres>,        kSpeakersRadiusHelp}},
    {kSpreading,   {"spread",         "float32", kMaxChannels,     "spread",                              nullptr, nullptr,           nullptr,  nullptr, nullptr, nullptr, kNotSaved, Bind<&P::Spread, &P::SetSpread, kSpread>,                              kSpreadHelp}},
    {kSubwoofers,  {"cutoff",         "float32", 1,                "subwoofers cutoff frequency [Hz]",    nullptr, nullptr,           "125.00", nullptr, nullptr, nullptr, kSaved,    Bind<Cutoff, SetCutoff, kCutoffHz>,                                    kCutoffHelp}},
};
// clang-format on

}  // namespace

std::span<const AttributeRow> PanClassAttributes() { return kClassAttributes; }

void AddPanInstanceAttributes(PanObject& object) {
    if (object.Engine() == nullptr) return;
    for (const InstanceRow& row : kInstanceAttributes) {
        if (!IsOf(object, row.group.family)) continue;
        AttributeRow attribute = row.attribute;
        attribute.category = row.group.category;
        VelkMax::AddInstanceAttribute(MaxObjectOf(object), attribute);
        // The engine's own value may differ from the default of the row. The diffuse subtype keeps
        // it.
        if (attribute.defaultValue != nullptr &&
            object.Engine()->GetSubType() != Pan::SubType::Diffuse) {
            VelkMax::ResetAttributeToDefault(MaxObjectOf(object), attribute.name);
        }
    }
}

}  // namespace Quilo
