// SPDX-License-Identifier: MIT
#include "pan/QuiloPanOscRoutes.h"

#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloKnnPanning.h"
#include "pan/QuiloPan.h"
#include "pan/QuiloPanOSC.h"
#include "pan/QuiloRecursivePanning.h"

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace Quilo {

using tav::Coordinates;
using tav::OscCommand;
using tav::OscMessageView;

/// What the rows do. Those with a command run with the panner's lock held, in the audio thread or
/// in another one: they neither allocate nor throw.
class PanOscActions {
public:
    // ---- Sources

    static void Move(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        tav::CartesianVector position = pan.positions_[command.subject];
        const auto format = static_cast<Coordinates::Format>(command.variant);
        if (!Coordinates::Apply(position, format, command.values)) return;
        pan.PlaceSource(command.subject, position);
    }
    static void ComputePlaced(Pan& pan) TAV_UNCHECKED { pan.ComputePlacedSources(); }
    static void Spread(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        SpreadSource(pan, command.subject, command.values[0]);
    }
    static void SpreadXyz(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        const auto isFinite = [](float value) { return std::isfinite(value); };
        if (!std::ranges::all_of(command.values, isFinite)) return;
        pan.ApplySpreadByDirection(command.subject, command.values);
    }
    static void Mute(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        const bool isMuted = command.values[0] != 0.f;
        if (pan.IsMuted(command.subject) == isMuted) return;
        pan.mutes_[command.subject] = isMuted ? 1 : 0;
        pan.ApplySourceMute(command.subject);
    }
    static void NumNeighbors(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        const float most = static_cast<float>(pan.NumOutputs());
        if (pan.NumOutputs() == 0) return;
        const float count = std::clamp(command.values[0], 1.f, most);
        pan.ApplyNumNeighbors(command.subject, static_cast<unsigned>(count));
    }

    // ---- The frame. Its members are called as the frame's own: the panner's take the lock.

    static void MuteAll(Pan& pan, PanOSCReceiver&, const OscCommand& command) {
        pan.SetMute(command.values[0] != 0.f);
    }
    static void Bypass(Pan& pan, PanOSCReceiver&, const OscCommand& command) {
        pan.SetBypass(command.values[0] != 0.f);
    }
    static void AutoMute(Pan& pan, PanOSCReceiver&, const OscCommand& command) {
        pan.AudioProcessorWithAutoMute::SetAutoMute(command.values[0] != 0.f);
    }
    static void AutoMuteTime(Pan& pan, PanOSCReceiver&, const OscCommand& command) {
        pan.AudioProcessorWithAutoMute::SetAutoMuteTime(command.values[0]);
    }

    // ---- ADM-OSC: distances and coordinates from -1 to 1, azimuth positive to the left

    static void AdmPosition(Pan& pan,
                            PanOSCReceiver& receiver,
                            const OscCommand& command) TAV_UNCHECKED {
        using Format = Coordinates::Format;
        const auto& v = command.values;
        const float metres = receiver.admMetres_;
        const auto azimuth = [&] { return -std::clamp(v[0], -180.f, 180.f); };
        const auto elevation = [](float deg) { return std::clamp(deg, -90.f, 90.f); };
        const auto distance = [&](float part) { return std::clamp(part, 0.f, 1.f) * metres; };
        const auto coordinate = [&](float part) { return std::clamp(part, -1.f, 1.f) * metres; };
        OscCommand own = command;
        switch (static_cast<Format>(command.variant)) {
            case Format::Aed: own.values = {azimuth(), elevation(v[1]), distance(v[2])}; break;
            case Format::Azim: own.values[0] = azimuth(); break;
            case Format::Elev: own.values[0] = elevation(v[0]); break;
            case Format::Dist: own.values[0] = distance(v[0]); break;
            default: std::ranges::transform(v, own.values.begin(), coordinate); break;
        }
        Move(pan, receiver, own);
    }
    static void AdmWidth(Pan& pan, PanOSCReceiver&, const OscCommand& command) TAV_UNCHECKED {
        SpreadSource(pan, command.subject, 100.f * std::clamp(command.values[0], 0.f, 1.f));
    }
    static void AdmMetres(Pan&, PanOSCReceiver& receiver, const OscCommand& command) {
        const float metres = command.values[0];
        if (std::isfinite(metres) && metres > 0.f) receiver.admMetres_ = metres;
    }

    // ---- Errands: they may take memory, files and time. Their arguments fit.

    static bool Clear(Pan& pan, const OscMessageView&) {
        pan.Reset();
        return true;
    }
    static bool Corners(Pan& pan, const OscMessageView& message) {
        auto* const panr = dynamic_cast<RecursivePanning*>(&pan);
        if (panr == nullptr) return false;
        std::array<float, 4> azimuths{};
        tav::ReadOscNumbers(message, "nnnn", azimuths);
        panr->SetCorners(azimuths);
        return true;
    }
    static bool LoadPreset(Pan& pan, const OscMessageView& message) {
        pan.Osc().LoadPreset(Word(message));
        return true;
    }
    static bool ExportPreset(Pan& pan, const OscMessageView& message) {
        const std::string file = Word(message);
        pan.Osc().CarryOut();
        pan.ExportPreset(std::u8string(file.begin(), file.end()));
        return true;
    }
    static bool SampleRate(Pan& pan, const OscMessageView& message) {
        const double hz = Number(message);
        if (std::isnan(hz)) return false;
        const auto rate = static_cast<float>(std::clamp(hz, 8000.0, 384000.0));
        pan.Osc().CarryOutLong([&pan, rate] { pan.SetSampleRate(rate); });
        return true;
    }
    static bool BufferSize(Pan& pan, const OscMessageView& message) {
        const double frames = Number(message);
        if (std::isnan(frames)) return false;
        const auto size = static_cast<unsigned>(std::clamp(frames, 1.0, 81920.0));
        pan.Osc().CarryOutLong([&pan, size] { pan.SetBufferSize(size); });
        return true;
    }
    static bool Load(Pan& pan, const OscMessageView& message) {
        pan.LoadHrtf(Word(message));
        return true;
    }
    static bool Speakers(Pan& pan, const OscMessageView& message) {
        const auto speakers = LayoutOf(message);
        if (speakers && speakers->Size() > 0) pan.SetSpeakersPositions(*speakers);
        return speakers.has_value();
    }

    // ---- Which panners have a setting, and take the values

    static bool IsLayout(const Pan&, const OscMessageView& message) {
        return LayoutOf(message).has_value();
    }
    static bool HasSpread(const Pan& pan, const OscMessageView&) { return pan.SupportsSpread(); }
    template <class Panner>
    static bool Is(const Pan& pan, const OscMessageView&) {
        return dynamic_cast<const Panner*>(&pan) != nullptr;
    }

private:
    static void SpreadSource(Pan& pan, unsigned index, float spread) TAV_UNCHECKED {
        if (!std::isfinite(spread)) return;
        pan.ApplySourceSpread(index, std::clamp(spread, 0.f, 100.f));
    }
    /// A layout in one format, in which values that are no whole position are left out; nothing
    /// when a value is no place.
    static std::optional<tav::CartesianArray> LayoutOf(const OscMessageView& message) {
        OscPath path(message.address);
        path.Take();
        const auto format = Coordinates::ParseFormat(path.Take());
        if (!format) return std::nullopt;
        std::vector<float> values(message.tags.size());
        tav::ReadOscNumbers(message, std::string(values.size(), 'n'), values);
        const std::size_t numValues = Coordinates::NumValues(*format);
        tav::CartesianArray speakers(values.size() / numValues);
        for (std::size_t k = 0; k < speakers.Size(); ++k) {
            const auto own = std::span(values).subspan(k * numValues, numValues);
            if (!Coordinates::Apply(speakers[k], *format, own)) return std::nullopt;
        }
        return speakers;
    }
    /// The only argument.
    static tav::OscValue Only(const OscMessageView& message) {
        tav::OscValue value;
        tav::OscReader(message.arguments).ReadArgument(message.tags[0], value);
        return value;
    }
    static std::string Word(const OscMessageView& message) {
        return std::string(Only(message).text);
    }
    static double Number(const OscMessageView& message) { return Only(message).number; }
};

namespace {

using A = PanOscActions;
using F = Coordinates::Format;

// clang-format off
constexpr PanOscRoute kRoutes[] = {
    // address                 arguments  format   attribute           hint                       help                                                                              run               errand           accepts
    {"/source/N/F",            "F",       F::None, "sourcespositions", "[number]...",             "moves a source, in a coordinate format such as xyz or aed",                      A::Move,          nullptr,         nullptr},
    {"/source/N/spread",       "n",       F::None, "spread",           "[number]",                "sets the width of a source (0 to 100)",                                          A::Spread,        nullptr,         A::HasSpread},
    {"/source/N/spreadxyz",    "nnn",     F::None, "spreadxyz",        "[number][number][number]", "sets the width of a source along x, y and z (0 to 100)",                        A::SpreadXyz,     nullptr,         A::Is<DbapPanning>},
    {"/source/N/mute",         "b",       F::None, "",                 "[boolean]",               "mutes a source",                                                                 A::Mute,          nullptr,         nullptr},
    {"/source/N/numneighbors", "u",       F::None, "",                 "[integer]",               "sets the number of loudspeakers that play a source (type knn)",                  A::NumNeighbors,  nullptr,         A::Is<KnnPanning>},
    {"/speakers/F",            "*",       F::None, "",                 "[number][number]...",     "sets the positions of all loudspeakers, in a coordinate format",                 nullptr,          A::Speakers,     A::IsLayout},
    {"/corners",               "nnnn",    F::None, "",                 "[number][number][number][number]", "sets the azimuths of the four corners (type panr)",                     nullptr,          A::Corners,      A::Is<RecursivePanning>},
    {"/load",                  "s",       F::None, "",                 "[string]",                "loads a set of head-related filters from a file",                                nullptr,          A::Load,         A::Is<BinauralPanningDirect>},
    {"/dsp/samplerate",        "n",       F::None, "",                 "[number]",                "sets the sampling rate (in Hz)",                                                 nullptr,          A::SampleRate,   nullptr},
    {"/dsp/buffersize",        "n",       F::None, "",                 "[number]",                "sets the buffer size (in samples)",                                              nullptr,          A::BufferSize,   nullptr},
    {"/dsp/clear",             "",        F::None, "",                 "",                        "clears the internal state of the audio processor",                               nullptr,          A::Clear,        nullptr},
    {"/dsp/mute",              "b",       F::None, "mute",             "[boolean]",               "mutes the DSP rendering",                                                        A::MuteAll,       nullptr,         nullptr},
    {"/dsp/bypass",            "b",       F::None, "bypass",           "[boolean]",               "bypass the DSP rendering",                                                       A::Bypass,        nullptr,         nullptr},
    {"/dsp/automute/active",   "b",       F::None, "automute",         "[boolean]",               "enables/disables the auto-mute",                                                 A::AutoMute,      nullptr,         nullptr},
    {"/dsp/automute/attack",   "n",       F::None, "automute",         "[number]",                "sets the duration (in seconds) before auto-muting",                              A::AutoMuteTime,  nullptr,         nullptr},
    {"/adm/obj/N/aed",         "nnn",     F::Aed,  "sourcespositions", "[number][number][number]", "moves a source: azimuth to the left and elevation in degrees, distance 0 to 1", A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/azim",        "n",       F::Azim, "sourcespositions", "[number]",                "sets the azimuth of a source (in degrees, to the left)",                         A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/elev",        "n",       F::Elev, "sourcespositions", "[number]",                "sets the elevation of a source (in degrees)",                                    A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/dist",        "n",       F::Dist, "sourcespositions", "[number]",                "sets the distance of a source (0 to 1)",                                         A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/xyz",         "nnn",     F::Xyz,  "sourcespositions", "[number][number][number]", "moves a source (-1 to 1 each)",                                                 A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/x",           "n",       F::X,    "sourcespositions", "[number]",                "moves a source to the right (-1 to 1)",                                          A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/y",           "n",       F::Y,    "sourcespositions", "[number]",                "moves a source to the front (-1 to 1)",                                          A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/z",           "n",       F::Z,    "sourcespositions", "[number]",                "moves a source up (-1 to 1)",                                                    A::AdmPosition,   nullptr,         nullptr},
    {"/adm/obj/N/w",           "n",       F::None, "spread",           "[number]",                "sets the width of a source (0 to 1)",                                            A::AdmWidth,      nullptr,         A::HasSpread},
    {"/adm/obj/N/mute",        "b",       F::None, "",                 "[boolean]",               "mutes a source",                                                                 A::Mute,          nullptr,         nullptr},
    {"/adm/config/dmax",       "n",       F::None, "",                 "[number]",                "sets the distance (in metres) that 1 stands for in /adm/obj",                    A::AdmMetres,     nullptr,         nullptr},
    {"/preset/load",           "s",       F::None, "",                 "[string]",                "loads a preset from file (.txt, .xml, .osc)",                                    nullptr,          A::LoadPreset,   nullptr},
    {"/preset/export",         "s",       F::None, "",                 "[string]",                "exports a preset to file (.txt, .xml, .osc, .json)",                             nullptr,          A::ExportPreset, nullptr},
    {"/listener/F",            "*",       F::None, "",                 "[number]...",             "sets the position of the listener, in a coordinate format (binaural types)",       nullptr,          nullptr,         nullptr},
    {"/crossfadetype",         "s",       F::None, "",                 "[string]",                "chooses how filters fade (binaural types)",                                       nullptr,          nullptr,         nullptr},
    {"/implementation",        "?",       F::None, "",                 "[string][value]...",      "chooses how binaural types filter, in pairs of a keyword and a value",            nullptr,          nullptr,         nullptr},
};
// clang-format on

static_assert(std::size(kRoutes) <= 32, "OscChanges has one bit for each");

}  // namespace

void ComputeMovedSources(Pan& pan) { PanOscActions::ComputePlaced(pan); }

std::span<const PanOscRoute> PanOscRoutes() { return kRoutes; }

}  // namespace Quilo
