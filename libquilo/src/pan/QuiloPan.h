// SPDX-License-Identifier: MIT
// The panning engine: N sources become M output signals, each panner by its own law.
//
// Here is what all panners share: types and keywords, the factory, the positions, the per-source
// mute and the lock of the control side. A panner is built once for (type, subtype, N, M) and never
// changes class. Call order: (SetSampleRate SetBufferSize)+ Process*, setters at any time between.
//
// The lock is taken in one place: by the public operations, here or in a derived class. What they
// call, the virtual functions below, requires it and says so (TAV_REQUIRES); it calls no public
// operation of the same panner.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "math/VelkDspVector.h"
#include "pan/QuiloPanOSC.h"
#include "pan/QuiloSpeakersLayout.h"
#include "processors/VelkDspAudioProcessorWithOsc.h"
#include "processors/VelkDspControlLock.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo {

class Hrtf;

/// A source that moves glides to its new gains over this time unless somebody sets another one.
inline constexpr float kDefaultInterpolationTimeMs = 30.f;
inline constexpr float kMaxInterpolationTimeMs = 200.f;

/// Positions are metres in the listener's frame: x right, y front, z up.
/// Setters clamp to their ranges, refuse values that are not finite and ignore indices out of
/// range. Setters and getters: thread control, one at a time by the engine's own lock; throws
/// nothing but for lack of memory unless said otherwise.
class Pan : public tav::AudioProcessorWithOscInAudioInterrupt {
public:
    // clang-format off
    enum class Type : std::int32_t {
        Binaural, Xy, Ms, Ab, Surround, Panr, Angular, Vbap2D, Vbip2D, Vbap, Vbip, Dbap, Dbap3D,
        Bformat, Hoa2D, Hoa3D, Vdbap, Nfchoa2D, Nfchoa3D, Spcap, Knn, Subwoofers, Null
    };
    enum class SubType : std::int32_t {
        Direct, Early, Diffuse, Nearfield, SphericalHeadModel, SnowmanModel, Continuous, Null
    };
    // clang-format on
    enum class SpreadingMode : std::int32_t { Omni, Directional };

    /// A new panner; a silent one where the combination is unsupported or the construction fails.
    /// An unknown type word is the null type, an unknown subtype word is "direct".
    /// Null only when there is no memory for the silent one either.  Throws: nothing.
    static std::unique_ptr<Pan> Create(unsigned numInputs,
                                       unsigned numOutputs,
                                       std::string_view type,
                                       std::string_view subtype) noexcept;
    static std::unique_ptr<Pan> Create(unsigned numInputs,
                                       unsigned numOutputs,
                                       Type type,
                                       SubType subtype) noexcept;

    Type GetType() const { return type_; }
    SubType GetSubType() const { return subType_; }
    /// Canonical keywords; "null" outside the tables.
    std::string_view GetTypeName() const;
    std::string_view GetSubTypeName() const;

    using AudioProcessorWithOscInAudioInterrupt::Process;
    /// Perform into zeroed outputs.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // What the frame has, under the control lock.
    std::string Name() const override;
    void SetSampleRate(float hz) final;
    void SetBufferSize(unsigned frames) final;
    void Reset() final;
    void SetConnections(std::span<const short> inletCounts,
                        std::span<const short> outletCounts) final;
    void SetAutoMute(bool on) final;
    void SetAutoMuteTime(float seconds) final;

    /// The panner's signal work alone: adds to the outputs.
    virtual void Perform(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING = 0;

    /// Moves a source and recomputes it. A source that stays where it is costs nothing.
    /// @param immediate  jump instead of gliding      @param force  recompute in any case
    void SetSourcePosition(unsigned index,
                           const tav::CartesianVector& position,
                           bool immediate,
                           bool force);
    /// Sources beyond the array keep their positions, surplus positions are ignored.
    void SetSourcesPositions(const tav::CartesianArray& positions, bool immediate);

    /// Prepares a layout and installs it.  Throws: what these two throw.
    void SetSpeakersPositions(const tav::CartesianArray& positions);
    /// The long part of a change of layout: computes what the panner needs to know of it, on a
    /// copy and without the lock. Nothing changes yet.
    /// Element i feeds output i. Surplus loudspeakers are ignored; outputs without one stay silent.
    /// @return null for a layout with a position that is not finite: it is refused as a whole
    /// Throws: std::bad_alloc.
    std::unique_ptr<SpeakersLayout> PrepareSpeakers(const tav::CartesianArray& positions) const;
    /// The short part: the layout comes into force, and every source is recomputed and glides.
    /// Where several threads set layouts at once, the one whose preparation was begun last stays;
    /// one that comes here after a later one is dropped.
    /// @param layout  made by PrepareSpeakers of this panner; null changes nothing
    /// Throws: tav::Exception where the panner cannot work well with it; the layout is in force.
    void InstallSpeakers(std::unique_ptr<SpeakersLayout> layout);
    /// The layout that was installed last; empty before the first one.
    tav::CartesianArray SpeakersPositions() const;

    /// How long a source glides to new gains. A new time starts the glides that are running again,
    /// from the gains with which they began. Setting the time that is already in force does not
    /// disturb them.
    /// @param ms  clamped to 0 .. 200; 0 lets sources jump
    void SetInterpolationTime(float ms);

    // Distance-based panners; the others ignore all but SetSourceSpread.
    void SetSpreadingMode(SpreadingMode mode);
    /// An unknown word is "omni".
    void SetSpreadingMode(std::string_view keyword);
    /// @param spread  clamped to 0 .. 100
    void SetSourceSpread(unsigned index, float spread);
    void SetSpread(float spread);
    /// @param values  x, y, z, the same for all sources
    void SetSpreadsByDirection(std::span<const float> values);
    /// @param values  x, y, z
    void SetSpreadByDirection(unsigned index, std::span<const float> values);
    virtual bool SupportsSpread() const;

    /// Ambisonic order; 1 where there is none.
    unsigned GetOrder() const;
    void SetOrder(unsigned order);

    // Ambisonic panners; the others ignore the setters.
    /// Whether the distance of one source colours its channels.
    void SetNearfieldCompensation(unsigned index, bool on);
    /// @param metres  distance of the loudspeakers that will play the channels
    void SetSpeakersRadius(float metres);
    /// A normalisation that the dimension does not have becomes the default of the dimension.
    void SetNormalization(tav::SphericalHarmonic::Normalization normalization);
    tav::SphericalHarmonic::Normalization GetNormalization() const;
    /// "precise" or "fast"; other words are ignored.
    void SetComputationMode(std::string_view keyword);
    void SetComputationMode(tav::HoaEncodingVector::Mode mode);
    tav::HoaEncodingVector::Mode GetComputationMode() const;
    /// What takes long about a new mode or normalisation, for who keeps it until
    /// that is set: setting is short then. Null where nothing does.
    /// Thread: any, without the lock.
    virtual std::shared_ptr<const void> MakeEncodingTable(
        tav::HoaEncodingVector::Mode mode,
        tav::SphericalHarmonic::Normalization normalization) const;

    /// @param count  clamped to 1 .. outputs; ignored by panners that have no neighbours
    void SetNumNeighbors(unsigned index, unsigned count);

    /// Panners with an HRTF set.  @return false: there is no place for that set
    /// Thread: control; reads files.  Throws: tav::Exception.
    virtual bool LoadHrtf(const std::string& path);
    /// The empty set where there is no other.
    virtual std::shared_ptr<const Hrtf> GetHrtf() const;

    /// Whether the rendering is two-dimensional.
    virtual bool IsPlanar() const = 0;

    /// Replaces `lines` by a description of this panner.
    void Dump(std::vector<std::string>& lines) const;

    /// What the engine glides over, milliseconds.
    float GetInterpolationTime() const;

    /// The origin for an index out of range.
    tav::CartesianVector SourcePosition(unsigned index) const;
    /// 0 where spread is not supported, and for an index out of range.
    float SourceSpread(unsigned index) const;

    /// A muted source glides to silence and back; it keeps its position and may move meanwhile.
    void SetSourceMute(unsigned index, bool muted);
    bool SourceMute(unsigned index) const;

    // OSC: addresses, queue and documentation are those of the receiver.
    bool ProcessOsc(const tav::OSCMessage& message) override { return osc_.Process(message); }
    bool AcceptsOsc(const tav::OSCMessage& message) const override { return osc_.Accepts(message); }
    void DocumentOsc(std::vector<tav::OscDocumentation::Entry>& entries) const override {
        osc_.Document(entries);
    }
    tav::OSCBundle OscState() const override;
    PanOSCReceiver& Osc() noexcept { return osc_; }

protected:
    Pan(unsigned numInputs, unsigned numOutputs);

    void ProcessZeroed(float* const* outputs,
                       const float* const* inputs,
                       unsigned frames) noexcept TAV_NONBLOCKING override {
        Perform(outputs, inputs, frames);
    }
    void TakeOsc(unsigned frames) noexcept TAV_NONBLOCKING override { osc_.TakeInAudio(frames); }

    /// Whether whoever holds the lock is the audio thread, which frees nothing.
    bool IsInAudio() const TAV_REQUIRES(controlLock_) { return isInAudio_; }

    /// Computes every source where it stands; a panner that can do all at once overrides it.
    virtual void RecomputeAll(bool immediate) TAV_REQUIRES(controlLock_);
    /// The same; they glide.
    void RecomputeSources() TAV_REQUIRES(controlLock_) { RecomputeAll(false); }
    /// Computes a source where it stands; it glides.
    void RecomputeSource(unsigned index) TAV_REQUIRES(controlLock_) {
        ComputeSource(index, false, true);
    }

    const tav::CartesianVector& StoredPosition(unsigned index) const TAV_REQUIRES(controlLock_) {
        return positions_[index];
    }
    const tav::CartesianArray& StoredPositions() const TAV_REQUIRES(controlLock_) {
        return positions_;
    }
    bool IsMuted(unsigned index) const TAV_REQUIRES(controlLock_) { return mutes_[index] == 1; }

    /// Appends the lines of Dump; overriders begin with those of their base.
    virtual void Describe(std::vector<std::string>& lines) const TAV_REQUIRES(controlLock_);

    /// Guards whatever control threads share.
    mutable tav::ControlLock controlLock_;

private:
    friend class PanOSCReceiver;
    friend class PanOscActions;

    // What the public operations do, each named after its own. Indices are in range, numbers are
    // finite, and where nothing is said the operation is ignored.

    /// A source has the position stored: computes it and hands it to the audio thread.
    virtual void ComputeSource(unsigned index, bool immediate, bool force)
        TAV_REQUIRES(controlLock_) = 0;
    /// What takes long about a layout.  Thread: any, without the lock.
    virtual std::unique_ptr<SpeakersLayout> MakeLayout(tav::CartesianArray positions) const;
    /// @param layout  from MakeLayout; to be freed by the caller, so old memory may go into it
    virtual void ApplySpeakersPositions(SpeakersLayout& layout) TAV_REQUIRES(controlLock_) = 0;
    virtual void ApplySampleRate() TAV_REQUIRES(controlLock_) {}
    /// What takes long about a rate or a block size that was announced.
    /// Thread: control, without the lock.
    virtual void FollowFrame() {}
    virtual void ApplyReset() TAV_REQUIRES(controlLock_) {}
    virtual void ApplyOutletConnections(std::span<const short>) TAV_REQUIRES(controlLock_) {}
    virtual void ApplyInterpolationTime(float) TAV_REQUIRES(controlLock_) {}
    /// A source's mute changed: start its glide, here by computing it again.
    virtual void ApplySourceMute(unsigned index) TAV_REQUIRES(controlLock_);
    virtual void ApplySpreadingMode(SpreadingMode) TAV_REQUIRES(controlLock_) {}
    virtual void ApplySourceSpread(unsigned, float) TAV_REQUIRES(controlLock_) {}
    virtual void ApplySpread(float) TAV_REQUIRES(controlLock_) {}
    virtual void ApplySpreadByDirection(unsigned, std::span<const float>)
        TAV_REQUIRES(controlLock_) {}
    virtual float StoredSpread(unsigned) const TAV_REQUIRES(controlLock_) { return 0.f; }
    virtual void ApplyOrder(unsigned) TAV_REQUIRES(controlLock_) {}
    virtual unsigned OrderInUse() const TAV_REQUIRES(controlLock_) { return 1; }
    virtual void ApplyNearfieldCompensation(unsigned, bool) TAV_REQUIRES(controlLock_) {}
    virtual void ApplySpeakersRadius(float) TAV_REQUIRES(controlLock_) {}
    virtual void ApplyNormalization(tav::SphericalHarmonic::Normalization)
        TAV_REQUIRES(controlLock_) {}
    virtual tav::SphericalHarmonic::Normalization NormalizationInUse() const
        TAV_REQUIRES(controlLock_);
    virtual void ApplyComputationMode(tav::HoaEncodingVector::Mode) TAV_REQUIRES(controlLock_) {}
    virtual tav::HoaEncodingVector::Mode ComputationModeInUse() const TAV_REQUIRES(controlLock_);
    virtual void ApplyNumNeighbors(unsigned, unsigned) TAV_REQUIRES(controlLock_) {}

    void MoveSource(unsigned index,
                    const tav::CartesianVector& position,
                    bool immediate,
                    bool force) TAV_REQUIRES(controlLock_);
    /// Moves a source, which is computed, gliding, by the next ComputePlacedSources: one of many
    /// moves that nothing is heard between.
    void PlaceSource(unsigned index, const tav::CartesianVector& position)
        TAV_REQUIRES(controlLock_);
    /// To be called before the lock in which PlaceSource was called is given back.
    void ComputePlacedSources() TAV_REQUIRES(controlLock_);

    tav::CartesianArray positions_ TAV_GUARDED_BY(controlLock_);
    tav::Vector<short> mutes_ TAV_GUARDED_BY(controlLock_);            // 1: muted
    tav::Vector<std::uint8_t> isPlaced_ TAV_GUARDED_BY(controlLock_);  // but not computed yet
    bool isAnyPlaced_ TAV_GUARDED_BY(controlLock_) = false;
    float interpolationTimeMs_ TAV_GUARDED_BY(controlLock_) = kDefaultInterpolationTimeMs;
    std::uint64_t layoutInForce_ TAV_GUARDED_BY(controlLock_) = 0;  // its number
    mutable std::atomic<std::uint64_t> numLayoutsBegun_{0};
    tav::CartesianArray speakers_ TAV_GUARDED_BY(controlLock_);
    bool isInAudio_ TAV_GUARDED_BY(controlLock_) = false;
    PanOSCReceiver osc_{*this};
    // set by the factory before anybody else has the panner
    Type type_ = Type::Null;
    SubType subType_ = SubType::Direct;
};

}  // namespace Quilo
