// SPDX-License-Identifier: MIT
// Sources within arm's reach of the head.
#pragma once

#include "hrtf/QuiloNearfieldCompensationFilters.h"
#include "pan/QuiloBinauralPanningDirect.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Quilo {

/// Head-related filters are measured from afar. Below 1.4 m this panner adds what changes with the
/// distance, each of it under a switch of its own; from there on it sounds as the direct one, but
/// for the attenuation. Sources nearer than the radius are heard from the radius, in their
/// direction; one in the centre of the head is heard from ahead.
class BinauralPanningNearfield final : public BinauralPanningDirect {
public:
    static constexpr float kSmallestRadius = 0.2f;  // metres
    static constexpr float kLargestRadius = 100.f;  // beyond any ear's reach

    /// What a user may leave out; all is on at first.
    enum class Switch : std::uint8_t {
        DistanceAttenuation,  // a gain of 1 m / distance
        /// Each ear takes the filter of the direction in which it sees the source itself.
        /// @see "Near-field compensation for HRTF processing", AES 125th Convention, 2008
        CrossEarSelection,
        NfCompensationFilters,  // what nearness does to the spectrum at each ear, but for its bass
        HrtfFilters,            // off: nothing is filtered, but delays and gains are there
        GainsCorrection,        // what nearness does to the level of the bass at each ear
        DelaysCorrection,       // what nearness adds to the difference between the delays
    };
    static constexpr std::size_t kNumSwitches = 6;

    BinauralPanningNearfield(unsigned numInputs, unsigned numOutputs);

    void SetSwitch(Switch which, bool on);
    bool IsOn(Switch which) const;
    /// @param metres  clamped to kSmallestRadius .. kLargestRadius; not finite: ignored
    void SetRadius(float metres);
    float Radius() const;

    class NearfieldLoad;
    /// All steps of a NearfieldLoad at once.  @param path  empty: the built-in filters
    /// @return false: the filters that were there stay, as they do after an exception
    bool LoadNearfield(const std::string& path);
    std::shared_ptr<const NearfieldCompensationFilters> GetNearfield() const;

private:
    std::unique_ptr<HrtfRendering> MakeRendering(const std::shared_ptr<const Hrtf>& set,
                                                 const HrtfFormat& format) const override;
    void ComputeSource(unsigned index, bool immediate, bool force) override
        TAV_REQUIRES(controlLock_);
    void ApplySet() override TAV_REQUIRES(controlLock_);
    void Describe(std::vector<std::string>& lines) const override TAV_REQUIRES(controlLock_);
    bool Install(const NearfieldLoad& load);

    bool Has(Switch which) const TAV_REQUIRES(controlLock_) {
        return switches_[static_cast<std::size_t>(which)];
    }
    /// The place on the sphere of the set that an ear sees behind the source, or before it.
    tav::CartesianVector SeenFrom(std::size_t ear, const tav::CartesianVector& source) const
        TAV_REQUIRES(controlLock_);
    NearfieldEar EarFor(std::size_t ear,
                        const tav::CartesianVector& source,
                        const tav::CartesianVector& filtered) const TAV_REQUIRES(controlLock_);
    EarDelays DelaysOf(unsigned index, const tav::CartesianVector& source)
        TAV_REQUIRES(controlLock_);
    const HrtfPoint& NearestPoint(const tav::CartesianVector& position, std::uint32_t& latest) const
        TAV_REQUIRES(controlLock_);

    /// Points of the set that were nearest to a source, seen from different places.
    struct NearestPoints {
        std::array<std::uint32_t, 2> fromEars{};
        std::uint32_t fromAfar = 0;
    };

    std::array<bool, kNumSwitches> switches_ TAV_GUARDED_BY(controlLock_){};
    float radius_ TAV_GUARDED_BY(controlLock_) = kSmallestRadius;
    float setRadius_ TAV_GUARDED_BY(controlLock_) = 0.f;  // where the points of the set stand
    std::shared_ptr<const NearfieldCompensationFilters> filters_ TAV_GUARDED_BY(controlLock_);
    std::vector<NearestPoints> nearest_ TAV_GUARDED_BY(controlLock_);  // of each source
    std::uint64_t nearfieldInForce_ TAV_GUARDED_BY(controlLock_) = 0;  // its number
    std::atomic<std::uint64_t> numNearfieldLoads_ = 0;                 // begun, ever
};

/// One load of near-field filters, in steps as BinauralPanningDirect::HrtfLoad.
/// Pattern: Read Install.  Thread: control
class BinauralPanningNearfield::NearfieldLoad {
public:
    /// Begins it.
    explicit NearfieldLoad(BinauralPanningNearfield& panner)
        : panner_(panner),
          number_(++panner.numNearfieldLoads_) {}

    /// Reads the file, without the panner's lock.  @param path  empty: the built-in filters
    /// @return false: these are no near-field filters
    /// Throws: tav::Exception as NearfieldCompensationFilters::Load.
    bool Read(const std::string& path);
    /// The sources glide to the new filters.  @pre  Read was true
    /// @return false: a load that was begun later is in force and stays
    bool Install() { return panner_.Install(*this); }

private:
    friend class BinauralPanningNearfield;

    BinauralPanningNearfield& panner_;
    const std::uint64_t number_;
    std::shared_ptr<const NearfieldCompensationFilters> filters_;
};

}  // namespace Quilo
