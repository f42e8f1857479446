// SPDX-License-Identifier: MIT
// What one quilo.pan~ object is: its settings, its layout and its engine.
//
// Max allocates the record as plain memory, which holds one pointer to the C++ object. An object is
// configured first (numbers of channels, type, subtype), then it gets its engine; from then on
// these settings are fixed.
#pragma once

#include "QuiloPanOsc.h"
#include "QuiloPanTexts.h"
#include "max/VelkMaxAttributes.h"
#include "max/VelkMaxObjectParts.h"
#include "max/VelkMaxStorage.h"
#include "pan/QuiloPan.h"

#include "z_dsp.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo {

using VelkMax::Atoms;

class PanObject;

/// Most channels on either side.
inline constexpr unsigned kMaxChannels = 250;

/// The memory that Max allocates, zeroed.
struct PanRecord {
    t_pxobject header;
    PanObject* object;  // owned; made by quilo_pan_new, deleted by quilo_pan_free
};

/// Pattern: attribute setters*, BuildEngine, (PlaceSpeakers PlaceSources), then anything.
/// Thread: one at a time, through the door; Render alone: audio, at any time.
class PanObject {
public:
    /// Throws: tav::Exception where there is no memory for the values of the attributes.
    explicit PanObject(t_pxobject& header);

    static PanObject& Of(void* record) { return *static_cast<PanRecord*>(record)->object; }
    friend t_object* MaxObjectOf(const PanObject& object) { return &object.header_.z_ob; }
    VelkMax::Door& TheDoor() const { return door_; }
    VelkMax::ObjectParts Parts() { return {&header_.z_ob, door_, dictionary_}; }

    // ---- Life

    /// Makes the engine from the settings, once; posts an error when there is no such panner or no
    /// memory.
    void BuildEngine();
    /// Gives the engine the default layout with the positions that were set before it existed.
    /// Throws: what the engine throws; this object then keeps the layout, the engine does not have
    /// it.
    void PlaceSpeakers();
    void PlaceSources();

    /// True from construction to Complete.
    bool IsBeingMade() const { return isBeingMade_; }
    /// The box is complete: changes are announced from now on.  Throws: std::bad_alloc.
    void Complete();

    /// Null before BuildEngine, and afterwards too when there was no memory for an engine.
    Pan* Engine() const { return engine_.get(); }
    /// Null as long as there is no engine.
    PanOsc* Osc() const { return osc_.get(); }

    // ---- Positions, for attributes and messages alike

    // The engine holds the positions of the sources; this object holds the layout that was set
    // last.

    unsigned NumSources() const { return engine_ != nullptr ? engine_->NumInputs() : 0; }
    unsigned NumSpeakers() const { return static_cast<unsigned>(speakers_.Size()); }
    /// @param index  below NumSources()
    tav::CartesianVector Source(unsigned index) const { return engine_->SourcePosition(index); }
    /// Starts the source's glide to a position. @param index  below NumSources()
    void MoveSource(unsigned index, const tav::CartesianVector& position);
    /// Stores the layout, prepares it outside the door so that other messages are not held up, then
    /// gives it to the engine unless another layout was set meanwhile (as Door::CarryOut).
    /// Thread: inside the door
    /// Throws: std::bad_alloc while preparing, then the old layout is restored; what the engine
    /// throws when it takes the layout, which is kept.
    void SetSpeakers(tav::CartesianArray speakers);
    const tav::CartesianArray& Speakers() const { return speakers_; }
    /// False for a panner to which loudspeaker positions mean nothing.
    bool TakesSpeakers() const;
    /// @param spread  clamped by the engine to 0 .. 100
    void SetSourceSpread(unsigned index, float spread);

    /// How often the ambisonic normalisation and mode were asked for, so that of several that are
    /// computed at the same time the one that was asked for last stays.  Thread: inside the door
    struct EncodingCounts {
        unsigned normalization = 0;
        unsigned mode = 0;
    };
    EncodingCounts& Encodings() { return numEncodings_; }

    /// What the set of filters in force was read from: the path of a file, or "kemar" for the
    /// built-in set; "none" for no set. The symbol was made outside the door.
    t_symbol* HrtfSource() const { return hrtfSource_; }
    void SetHrtfSource(t_symbol* source) { hrtfSource_ = source; }
    /// Likewise of the near-field filters; "none": the built-in ones.
    t_symbol* NearfieldSource() const { return nearfieldSource_; }
    void SetNearfieldSource(t_symbol* source) { nearfieldSource_ = source; }
    /// The paths of the files that the filters in force were read from.  Thread: any, outside the
    /// door
    std::vector<t_symbol*> FilterFiles() const;

    // ---- Attributes

    max_long NumInputs() const { return numInputs_; }
    void SetNumInputs(max_long count);
    max_long NumOutputs() const { return numOutputs_; }
    void SetNumOutputs(max_long count);
    t_symbol* Type() const;
    /// Whether the word names the type of the engine, which there is.
    bool IsOfType(std::string_view word) const;
    void SetType(std::string_view type);
    t_symbol* SubType() const;
    bool IsOfSubType(std::string_view word) const;
    void SetSubType(std::string_view subType);
    /// x, y, z of each position, metres.
    std::span<const float> SourcesPositions() const;
    /// Takes whole triplets, from the first source on; sources beyond the list stay where they are.
    /// Values that are no whole triplet or are beyond the last source are left out with a warning.
    /// A list without a triplet, or with an atom that is no number, changes nothing.
    void SetSourcesPositions(Atoms xyz);
    std::span<const float> SpeakersPositions() const;
    void SetSpeakersPositions(Atoms xyz);
    /// Milliseconds; the value that was set last, also for a panner that does not glide.
    float InterpolationTime() const;
    void SetInterpolationTime(float ms);
    max_long Mute() const { return engine_ != nullptr ? engine_->Mute() : mute_; }
    void SetMute(max_long on);
    max_long Bypass() const { return engine_ != nullptr ? engine_->Bypass() : bypass_; }
    void SetBypass(max_long on);
    /// Seconds; 0 switches it off.
    float AutoMute() const;
    void SetAutoMute(float seconds);
    /// One value for each source.
    std::span<const float> Spread() const;
    void SetSpread(const std::vector<float>& spreads);

    /// Room for `perSource` values of each source, which a getter fills and answers. Valid until
    /// the next such getter runs.  @param perSource  at most 3
    std::span<float> PerSourceValues(std::size_t perSource) const {
        return perSourceValues_.First(perSource * static_cast<std::size_t>(numInputs_));
    }

    /// Whether the patcher has muted the object.
    bool IsDisabled() const { return header_.z_disabled != 0; }

    // ---- Audio

    /// Computes one vector. Writes every output; zeros without an engine or with other channel
    /// counts.
    void Render(double* const* outputs,
                max_long numOutputs,
                double* const* inputs,
                max_long numInputs,
                max_long frames) noexcept TAV_NONBLOCKING;

private:
    class LayoutWork;

    tav::CartesianArray Sources() const;

    t_pxobject& header_;
    mutable VelkMax::Door door_;
    VelkMax::KeptDictionary dictionary_;
    VelkMax::AttributeStorage sourcesValues_;
    VelkMax::AttributeStorage speakersValues_;
    VelkMax::AttributeStorage perSourceValues_;

    bool isBeingMade_ = true;

    // Settings for the engine; once it exists, getters answer what the engine runs with.
    max_long numInputs_ = 1;
    max_long numOutputs_ = 4;
    std::string type_ = "angular";
    std::string subType_ = "direct";
    std::optional<float> interpolationTimeMs_;  // empty: the engine keeps its own
    float autoMuteSeconds_ = 20.f;
    std::vector<t_atom> givenSources_;  // values that were set before the engine existed
    std::vector<t_atom> givenSpeakers_;

    tav::CartesianArray speakers_;
    unsigned numLayouts_ = 0;  // set so far, counted to recognise the latest
    EncodingCounts numEncodings_;
    t_symbol* hrtfSource_;
    t_symbol* nearfieldSource_;
    bool mute_ = false;  // these two for an engine that does not exist yet
    bool bypass_ = false;
    std::unique_ptr<PanOsc> osc_;  // of the engine, which knows it
    std::unique_ptr<Pan> engine_;  // the same one once audio runs
};

}  // namespace Quilo
