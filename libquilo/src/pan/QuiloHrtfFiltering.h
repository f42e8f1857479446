// SPDX-License-Identifier: MIT
// Sources through the filters of one HRTF set, to two ears.
//
// All sizes are those of one set, one rate and one block size: whatever changes them makes a new
// object, which takes the place of this one as a whole.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloHrtfFilterBank.h"
#include "pan/QuiloHrtfVoices.h"
#include "pan/QuiloNearfieldStage.h"
#include "processors/VelkDspHandOver.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Quilo {

class HrtfFiltering {
public:
    /// What a source is heard as.
    struct Source {
        EarPoints points{};  ///< of the set; beyond its points: silence
        EarDelays delays;    ///< at most HrtfVoices::kLongestDelayMs
        float gain = 1.f;
    };
    struct Settings {
        float fadeMs = 5.f;
        tav::FadeShape fadeShape = tav::FadeShape::SquareCosine;
        tav::DelayKind delayKind = tav::DelayKind::Lagrange;
    };

    /// @param blockSize  frames that the host announced
    /// @param isNearfield  what reaches either ear goes through a NearfieldStage first
    /// Throws: std::bad_alloc.
    HrtfFiltering(std::shared_ptr<const HrtfResponses> responses,
                  unsigned numSources,
                  unsigned blockSize,
                  bool isNearfield = false);

    const HrtfResponses& Responses() const noexcept { return *responses_; }
    unsigned NumSources() const noexcept { return static_cast<unsigned>(sources_.size()); }
    unsigned BlockSize() const noexcept TAV_NONBLOCKING { return blockSize_; }

    // Thread: control.
    void SetSettings(const Settings& settings) noexcept { settings_.Store(settings); }
    /// The response fades, the delays glide, the gain glides over 5 ms.
    /// @param glideMs  of the delays; 0: they jump
    void SetSource(unsigned index, const Source& source, float glideMs) noexcept;
    /// The numbers glide.  @pre  isNearfield      @param glideMs  0: they jump
    void SetNearfield(unsigned index, const NearfieldEars& ears, float glideMs) noexcept {
        nearfield_->SetSource(index, ears, glideMs);
    }
    /// Silence behind all sources from the next block on.
    void Reset() noexcept { resets_.fetch_add(1, std::memory_order_relaxed); }

    // Thread: audio.
    /// Adds to the ears.  @param inputs  per source; null: nothing comes, and its past is forgotten
    void Perform(float* left,
                 float* right,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

private:
    struct Target {
        EarPoints points = ~std::uint32_t{0};
        float leftMs = 0.f;
        float rightMs = 0.f;
        float gain = 1.f;
        float glideMs = 0.f;
    };
    enum class State : std::uint8_t { Asleep, Muted, Awake };
    struct SourceSlot {
        tav::SharedCell<Target> shared;
        Target taken;  // audio only
        State state = State::Asleep;
    };

    void TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING;
    void TakeInput(unsigned index, std::span<const float> input) noexcept TAV_NONBLOCKING;
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    void Sleep(unsigned index, State state) noexcept TAV_NONBLOCKING;
    void SetDelays(unsigned index, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;

    const std::shared_ptr<const HrtfResponses> responses_;
    const unsigned blockSize_;
    // shared: control writes, audio reads
    std::vector<SourceSlot> sources_;
    tav::SharedCell<Settings> settings_;
    std::atomic<std::uint32_t> resets_{0};
    // audio only
    std::uint32_t resetsDone_ = 0;
    std::unique_ptr<HrtfFilterBank> bank_;
    HrtfVoices voices_;
    std::unique_ptr<NearfieldStage> nearfield_;  // null for those without one
    std::array<std::vector<float>, 2> ears_;     // a piece of a near source
};

}  // namespace Quilo
