// SPDX-License-Identifier: MIT
// The panning engine: N sources become M output signals, each panner by its own law.
//
// Here is what all panners share: types and keywords, the factory, the positions, the per-source
// mute and the lock of the control side. A panner is built once for (type, subtype, N, M) and never
// changes class. Call order: (SetSampleRate SetBufferSize)+ Process*, setters at any time between.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "math/VelkDspVector.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo {

/// A source that moves glides to its new gains over this time unless somebody sets another one.
inline constexpr float kDefaultInterpolationTimeMs = 30.f;
inline constexpr float kMaxInterpolationTimeMs = 200.f;

/// Positions are metres in the listener's frame: x right, y front, z up.
/// Setters clamp to their ranges, refuse values that are not finite and ignore indices out of
/// range. Setters and getters: thread control, one at a time by the engine's own lock; throws
/// nothing but for lack of memory unless said otherwise.
class Pan : public tav::AudioProcessorWithAutoMute {
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

    using AudioProcessorWithAutoMute::Process;
    /// Perform into zeroed outputs.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // What the frame has, under the control lock.
    std::string Name() const override;
    void SetSampleRate(float hz) override;
    void SetBufferSize(unsigned frames) override;
    void Reset() override;
    void SetConnections(std::span<const short> inletCounts,
                        std::span<const short> outletCounts) override;
    void SetAutoMute(bool on) override;
    void SetAutoMuteTime(float seconds) override;

    /// The panner's signal work alone: adds to the outputs.
    virtual void Perform(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING = 0;

    /// Moves a source and recomputes it. A source that stays where it is costs nothing.
    /// @param immediate  jump instead of gliding      @param force  recompute in any case
    virtual void SetSourcePosition(unsigned index,
                                   const tav::CartesianVector& position,
                                   bool immediate,
                                   bool force) = 0;
    /// Sources beyond the array keep their positions, surplus positions are ignored.
    void SetSourcesPositions(const tav::CartesianArray& positions, bool immediate);

    /// Element i feeds output i. Surplus loudspeakers are ignored; outputs without one stay silent.
    /// A layout with a position that is not finite is refused as a whole.
    /// Throws: what ApplySpeakersPositions of the panner throws.
    void SetSpeakersPositions(const tav::CartesianArray& positions);
    /// Installs the layout and recomputes every source.
    /// Throws: tav::Exception where the panner cannot work well with it; the layout is in force.
    virtual void ApplySpeakersPositions(const tav::CartesianArray& positions) = 0;

    /// Duration of a glide. The one in force throws no glide under way back to its start.
    /// @param ms  clamped to 0 .. 200; 0 lets sources jump
    virtual void SetInterpolationTime(float ms);

    virtual void SetSpreadingMode(SpreadingMode mode);
    virtual void SetSpreadingMode(std::string_view keyword);
    /// @param spread  clamped to 0 .. 100
    virtual void SetSourceSpread(unsigned index, float spread);
    virtual void SetSpread(float spread);
    /// @param values  x, y, z, the same for all sources
    virtual void SetSpreadsByDirection(std::span<const float> values);
    /// @param values  x, y, z
    virtual void SetSpreadByDirection(unsigned index, std::span<const float> values);
    virtual bool SupportsSpread() const;

    /// Ambisonic order; 1 where there is none.
    virtual unsigned GetOrder() const;
    virtual void SetOrder(unsigned order);

    // Ambisonic panners; the others ignore the setters.
    /// Whether the distance of one source colours its channels.
    virtual void SetNearfieldCompensation(unsigned index, bool on);
    /// @param metres  distance of the loudspeakers that will play the channels
    virtual void SetSpeakersRadius(float metres);
    /// A normalisation that the dimension does not have becomes the default of the dimension.
    virtual void SetNormalization(tav::SphericalHarmonic::Normalization normalization);
    virtual tav::SphericalHarmonic::Normalization GetNormalization() const;
    /// "precise" or "fast"; other words are ignored.
    virtual void SetComputationMode(std::string_view keyword);
    virtual void SetComputationMode(tav::HoaEncodingVector::Mode mode);
    virtual tav::HoaEncodingVector::Mode GetComputationMode() const;

    virtual void SetNumNeighbors(unsigned index, unsigned count);

    /// Whether the rendering is two-dimensional.
    virtual bool IsPlanar() const = 0;

    /// Replaces `lines` by a description of this panner.
    virtual void Dump(std::vector<std::string>& lines);

    /// What the engine glides over, milliseconds; the default where a panner has no glide of its
    /// own.
    float GetInterpolationTime() const;

    /// The origin for an index out of range.
    tav::CartesianVector SourcePosition(unsigned index) const;
    /// 0 where spread is not supported.
    virtual float SourceSpread(unsigned index) const;

    /// A muted source glides to silence and back; it keeps its position and may move meanwhile.
    void SetSourceMute(unsigned index, bool muted);
    bool SourceMute(unsigned index) const;

protected:
    using ControlLock = std::unique_lock<std::recursive_mutex>;

    Pan(unsigned numInputs, unsigned numOutputs);

    [[nodiscard]] ControlLock LockControl() const { return ControlLock(controlMutex_); }

    /// The first half of every SetSourcePosition: stores the position and says whether the source
    /// has to be computed.  The control lock is held.
    bool StoreSourcePosition(unsigned index, const tav::CartesianVector& position, bool force);
    /// Computes a source where it stands; it glides.  The control lock is held.
    void RecomputeSource(unsigned index);
    /// Computes every source where it stands.
    void RecomputeSources(bool immediate = false);
    /// The same, with the control lock held; a panner that can do all at once overrides it.
    virtual void RecomputeAll(bool immediate);

    const tav::CartesianVector& StoredPosition(unsigned index) const { return positions_[index]; }
    const tav::CartesianArray& StoredPositions() const { return positions_; }
    bool IsMuted(unsigned index) const { return mutes_[index] == 1; }

private:
    // What a setter has stored goes to the signal blocks of the panner.  The control lock is held.
    virtual void ApplySampleRate() {}
    virtual void ApplyReset() {}
    virtual void ApplyInterpolationTime(float) {}
    /// A source's mute changed: start its glide, here by computing it again.
    virtual void ApplySourceMute(unsigned index);

    tav::CartesianArray positions_;
    tav::Vector<short> mutes_;  // 1: muted
    Type type_ = Type::Null;
    SubType subType_ = SubType::Direct;
    float interpolationTimeMs_ = kDefaultInterpolationTimeMs;
    mutable std::recursive_mutex controlMutex_;
};

}  // namespace Quilo
