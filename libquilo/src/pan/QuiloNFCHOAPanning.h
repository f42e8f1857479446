// SPDX-License-Identifier: MIT
// Ambisonic encoding that knows how far a source is.
#pragma once

#include "containers/VelkDspAlignedVector.h"
#include "pan/QuiloHoaEncoding.h"
#include "pan/QuiloNFCHOASourceGroup.h"
#include "processors/VelkDspSignalMatrix.h"

#include <memory>
#include <vector>

namespace Quilo {

/// The gains of a source are those of plain ambisonics; before them, each order is filtered as the
/// curvature of the source's wave front asks for on an array of loudspeakers of a given radius.
/// Sources at the radius sound as in plain ambisonics, nearer ones gain bass in the higher orders,
/// farther ones lose it. Order 0 is untouched: no level and no delay follows the distance.
class NFCHOAPanning : public HoaEncoding<Pan> {
public:
    static constexpr float kNearestSpeakers = 0.2f;  // metres
    static constexpr float kFarthestSpeakers = 20.f;

    /// @param numOutputs  channels of a whole order; where they are not, only (0, 0) sounds
    NFCHOAPanning(unsigned numInputs, unsigned numOutputs, unsigned dimension);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    float SpeakersRadius() const;
    /// On, as it is at first: below the frequency where an order would amplify a near source by
    /// more than 20 dB, a high-pass takes it away. Off: no source counts as nearer than where 0 Hz
    /// is amplified by 40 dB. Glides from one to the other.
    void SetHighPass(bool on);
    bool HighPass() const;

private:
    /// What control hands over besides gains and sources.
    struct Controls {
        float radius = 1.f;
        float highPass = 1.f;
        float glideMs = kDefaultInterpolationTimeMs;
        std::uint32_t order = 0;
        std::uint32_t numResets = 0;
    };

    void ComputeSource(unsigned index, bool immediate, bool) override TAV_REQUIRES(controlLock_);
    void ApplySpeakersPositions(SpeakersLayout&) override TAV_REQUIRES(controlLock_) {}
    /// Off: this source sounds as in plain ambisonics. On at first.
    void ApplyNearfieldCompensation(unsigned index, bool on) override TAV_REQUIRES(controlLock_);
    /// @param metres  clamped to 0.2 .. 20; 1 at first
    void ApplySpeakersRadius(float metres) override TAV_REQUIRES(controlLock_);
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplyOutletConnections(std::span<const short> counts) override TAV_REQUIRES(controlLock_);
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);
    void OrderChanged(unsigned order) override TAV_REQUIRES(controlLock_);
    HoaState State() const override TAV_REQUIRES(controlLock_);
    void PublishControls() TAV_REQUIRES(controlLock_);

    void TakeControls() noexcept TAV_NONBLOCKING;
    void StartAtRate() noexcept TAV_NONBLOCKING;
    void MakePiece(unsigned frames) noexcept TAV_NONBLOCKING;
    void PerformPiece(float* const* outputs,
                      const float* const* inputs,
                      unsigned offset,
                      unsigned frames) noexcept TAV_NONBLOCKING;
    bool RunsOrder(unsigned order) const noexcept TAV_NONBLOCKING;

    NFCHOAFilterBank bank_;
    const NFCHOAHighPassFilterBank highPasses_;
    std::vector<NFCHOAPanningOneSource> sources_;
    std::vector<NFCHOASourceGroup> groups_;                   // of kSourceLanes sources
    std::vector<std::unique_ptr<tav::SignalMatrix>> mixers_;  // one per order: sources x channels
    std::vector<unsigned> firstChannels_;  // of each order; a last one ends the highest order

    // control only
    std::vector<float> row_ TAV_GUARDED_BY(controlLock_);
    Controls newest_ TAV_GUARDED_BY(controlLock_);
    // shared: control writes, audio reads
    tav::SharedCell<Controls> shared_;
    // audio only
    Controls taken_;
    float rateHz_ = 0.f;
    tav::Ramp radius_{1.f};
    tav::Ramp highPass_{1.f};
    unsigned ordersRun_;            // the highest that is computed; above taken_.order it fades out
    std::int64_t fadeSamples_ = 0;  // until those above taken_.order rest
    unsigned toGrid_ = 0;           // samples to the next point of the grid
    NFCHOASettings settings_;       // those of the grid point passed last
    NFCHOAPiece piece_;
    tav::AlignedVector<float> signals_;  // kNFCHOAFrames per source, whole groups
    std::vector<float*> signalPointers_;
    std::vector<const float*> inputs_;  // of the piece
    std::vector<const float*> feeds_;   // the same, null where inactive
    std::vector<float*> outputs_;
    std::vector<char> awake_;  // per group, in this piece
};

using NFCHOAPanning2D = HoaOfDimension<NFCHOAPanning, 2>;
using NFCHOAPanning3D = HoaOfDimension<NFCHOAPanning, 3>;

}  // namespace Quilo
