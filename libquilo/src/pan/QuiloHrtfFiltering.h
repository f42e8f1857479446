// SPDX-License-Identifier: MIT
// Sources through the filters of one HRTF set, to two ears.
//
// All sizes are those of one set, one rate and one block size: whatever changes them makes a new
// object, which takes the place of this one as a whole.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloHrtfFilterBank.h"
#include "pan/QuiloHrtfRendering.h"
#include "pan/QuiloHrtfVoices.h"
#include "pan/QuiloNearfieldStage.h"
#include "processors/VelkDspHandOver.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Quilo {

class HrtfFiltering final : public HrtfRendering {
public:
    /// What a source is heard as.
    struct Source {
        EarPoints points{};  ///< of the set; beyond its points: silence
        EarDelays delays;    ///< at most HrtfVoices::kLongestDelayMs
        float gain = 1.f;
    };

    /// @param blockSize  frames that the host announced
    /// @param isNearfield  what reaches either ear goes through a NearfieldStage first
    /// Throws: std::bad_alloc.
    HrtfFiltering(const std::shared_ptr<const HrtfResponses>& responses,
                  unsigned numSources,
                  unsigned blockSize,
                  bool isNearfield = false);

    unsigned NumSources() const noexcept { return static_cast<unsigned>(sources_.size()); }

    /// Sources go through delays: their filters do not hold all of them.
    bool HasDelays() const noexcept { return responses_->NeedDelays() || nearfield_ != nullptr; }

    // Thread: control.
    void SetSettings(const Settings& settings) noexcept override { settings_.Store(settings); }
    /// The response fades, the delays glide, the gain glides over 5 ms.
    /// @param glideMs  of the delays; 0: they jump
    void SetSource(unsigned index, const Source& source, float glideMs) noexcept;
    /// The numbers glide.  @pre  isNearfield      @param glideMs  0: they jump
    void SetNearfield(unsigned index, const NearfieldEars& ears, float glideMs) noexcept {
        nearfield_->SetSource(index, ears, glideMs);
    }
    void Reset() noexcept override { resets_.fetch_add(1, std::memory_order_relaxed); }

    // Thread: audio.
    void Perform(float* left,
                 float* right,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

private:
    struct Target {
        EarPoints points = ~std::uint32_t{0};
        float leftMs = 0.f;
        float rightMs = 0.f;
        float gain = 1.f;
        float glideMs = 0.f;
    };
    struct SourceSlot {
        tav::SharedCell<Target> shared;
        Target taken;  // audio only
        SourceState state = SourceState::Asleep;
    };

    void TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING;
    void TakeInputs(const float* const* inputs,
                    unsigned done,
                    unsigned frames) noexcept TAV_NONBLOCKING;
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    void Sleep(unsigned index, SourceState state) noexcept TAV_NONBLOCKING;
    void SetDelays(unsigned index, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;

    // shared: control writes, audio reads
    std::vector<SourceSlot> sources_;
    tav::SharedCell<Settings> settings_;
    std::atomic<std::uint32_t> resets_{0};
    // audio only
    std::uint32_t resetsDone_ = 0;
    std::unique_ptr<HrtfFilterBank> bank_;
    HrtfVoices voices_;
    std::unique_ptr<NearfieldStage> nearfield_;  // null for those without one
    std::vector<float> silence_;                 // a piece for near sources that sleep
};

}  // namespace Quilo
