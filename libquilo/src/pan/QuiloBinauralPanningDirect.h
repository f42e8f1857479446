// SPDX-License-Identifier: MIT
// Every source through the nearest filters of an HRTF set.
//
//   what               owner              written by, when
//   set_, settings     this panner        control, under the lock
//   Bundle             the hand-over      control makes one per set, rate or way of running it;
//                                         audio takes it at block start and fades over to it
//   newest_            refers to a bundle control writes the targets of sources there; it is freed
//                                         only after a newer one has been published
#pragma once

#include "pan/QuiloBinauralPanning.h"
#include "pan/QuiloHrtfFiltering.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Quilo {

/// Silent until a set is loaded. A source takes the filters of the point that is nearest to it;
/// while it moves within what is nearest to one point, nothing changes.
class BinauralPanningDirect : public BinauralPanning {
public:
    static constexpr unsigned kShortestCut = 16;  // taps
    static constexpr unsigned kLongestCut = 8192;

    BinauralPanningDirect(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    class HrtfLoad;

    /// All steps of an HrtfLoad at once.
    /// @return false: the set that was there stays, as it does after an exception
    bool LoadHrtf(const std::string& path) override;
    /// The empty set before the first load.
    std::shared_ptr<const Hrtf> GetHrtf() const override;

    /// Of the delays of the ears, percent.  @param percent  clamped to 50 .. 200
    void SetDelayScale(float percent);
    float DelayScale() const;

    /// Whether a setting that the filters depend on computes them before it returns, or leaves the
    /// old ones until Refit.
    enum class Refitting : std::uint8_t { AtOnce, Later };

    /// How cells run.
    void SetRealisation(HrtfRealisation realisation, Refitting when = Refitting::AtOnce);
    HrtfRealisation Realisation() const;
    /// Cuts finite responses.  @param taps  clamped to kShortestCut .. kLongestCut
    void SetResponseLength(unsigned taps, Refitting when = Refitting::AtOnce);
    /// kLongestCut where nothing is cut.
    unsigned ResponseLength() const;
    /// Computes the filters for all settings, without the lock, where they have changed.
    /// Thread: control
    void Refit() { RefitSet(false); }

protected:
    /// Computes filters.  Thread: control, without the lock.
    virtual std::unique_ptr<HrtfRendering> MakeRendering(const std::shared_ptr<const Hrtf>& set,
                                                         const HrtfFormat& format) const;
    /// A rendering has come into force; sources are recomputed next.
    virtual void ApplySet() TAV_REQUIRES(controlLock_) {}
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_) { glideMs_ = ms; }
    void Describe(std::vector<std::string>& lines) const override TAV_REQUIRES(controlLock_);

    /// Where targets go; null before the first set.
    HrtfRendering* Rendering() TAV_REQUIRES(controlLock_) {
        return newest_ != nullptr ? newest_->rendering.get() : nullptr;
    }
    /// The audio thread, which may be here for an OSC message, leaves it to others.
    void FreeRetired() TAV_REQUIRES(controlLock_) {
        if (!IsInAudio()) bundles_.FreeRetired();
    }
    const Hrtf& Set() const TAV_REQUIRES(controlLock_) { return *set_; }
    float GlideMs() const TAV_REQUIRES(controlLock_) { return glideMs_; }
    float DelayPart() const override TAV_REQUIRES(controlLock_) {
        return BinauralPanning::DelayPart() * (delayScale_ / 100.f);
    }

private:
    /// What one set needs to sound, and room for what it says while it comes or goes.
    struct Bundle {
        Bundle(std::unique_ptr<HrtfRendering> making, bool startsAtOnce)
            : rendering(std::move(making)),
              ears{std::vector<float>(rendering->BlockSize()),
                   std::vector<float>(rendering->BlockSize())},
              atOnce(startsAtOnce) {}

        const std::unique_ptr<HrtfRendering> rendering;
        std::array<std::vector<float>, 2> ears;
        const bool atOnce;  // audio stands still
    };
    using EarPointers = std::array<float*, 2>;

    void FollowFrame() override { RefitSet(true); }
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ComputeSource(unsigned index, bool immediate, bool force) override
        TAV_REQUIRES(controlLock_);

    HrtfFormat Format() const TAV_REQUIRES(controlLock_);
    /// Whether the bundle was made for the settings that hold now.
    bool IsUpToDate(const Bundle& bundle) const TAV_REQUIRES(controlLock_);
    /// Computes filters without the lock: a setting may have changed when it returns.
    std::unique_ptr<Bundle> PrepareBundle(const std::shared_ptr<const Hrtf>& set,
                                          bool atOnce) const;
    void Install(std::unique_ptr<Bundle> bundle) TAV_REQUIRES(controlLock_);
    bool Install(HrtfLoad& load);
    /// For what the responses depend on, when it has changed: computes without the lock.
    void RefitSet(bool atOnce);
    void PublishSettings() override TAV_REQUIRES(controlLock_);

    void TakeBundle() noexcept TAV_NONBLOCKING;
    void PerformPiece(const EarPointers& outputs, unsigned frames) noexcept TAV_NONBLOCKING;
    const std::vector<float>* Render(Bundle* bundle, unsigned frames) noexcept TAV_NONBLOCKING;

    std::shared_ptr<const Hrtf> set_ TAV_GUARDED_BY(controlLock_);
    HrtfRealisation realisation_ TAV_GUARDED_BY(controlLock_) = HrtfRealisation::Auto;
    unsigned maxTaps_ TAV_GUARDED_BY(controlLock_) = 0;  // 0: whole responses
    float delayScale_ TAV_GUARDED_BY(controlLock_) = 100.f;
    float glideMs_ TAV_GUARDED_BY(controlLock_) = kDefaultInterpolationTimeMs;
    std::vector<std::uint32_t> points_ TAV_GUARDED_BY(controlLock_);  // of each source
    Bundle* newest_ TAV_GUARDED_BY(controlLock_) = nullptr;
    std::uint64_t loadInForce_ TAV_GUARDED_BY(controlLock_) = 0;  // its number
    std::atomic<std::uint64_t> numLoads_ = 0;                     // begun, ever
    // shared: control writes, audio reads
    tav::SlowHandOver<Bundle> bundles_;
    std::atomic<float> crossfadeMs_{BinauralSettings().fadeMs};
    // audio only
    bool hasPlayed_ = false;
    unsigned changeFrames_ = 0;  // since a bundle began to come in
    unsigned changeStart_ = 0;   // frames until it is heard
    unsigned changeLength_ = 0;  // frames of the fade
    std::vector<const float*> inputs_;
};

/// One load of a set, in steps for a caller with a lock of its own: only Read takes long. Of loads
/// that overlap the one that was begun last stays; one that fails takes nothing from the others.
/// What is heard fades from the old set to the new one.
/// Pattern: Read Install.  Thread: control
class BinauralPanningDirect::HrtfLoad {
public:
    /// Begins it.
    explicit HrtfLoad(BinauralPanningDirect& panner)
        : panner_(panner),
          number_(++panner.numLoads_) {}

    /// Reads files and computes filters, both without the panner's lock.
    /// @return false: it is no set for two ears with cells or finite responses
    /// Throws: tav::Exception as Hrtf::Load.
    bool Read(const std::string& path);
    /// What was read.  @pre  Read was true, Install not called
    const Hrtf& Set() const { return *bundle_->rendering->Set(); }
    /// @return false: a load that was begun later is in force and stays
    bool Install() { return panner_.Install(*this); }

private:
    friend class BinauralPanningDirect;

    BinauralPanningDirect& panner_;
    const std::uint64_t number_;
    std::unique_ptr<Bundle> bundle_;
};

}  // namespace Quilo
