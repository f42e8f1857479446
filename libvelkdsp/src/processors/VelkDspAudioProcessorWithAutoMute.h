// SPDX-License-Identifier: MIT
// A processor that knows which of its ports are connected and does not process silent inputs.
#pragma once

#include "processors/VelkDspAudioProcessorBase.h"
#include "processors/VelkDspInletsActivity.h"

#include <cstdint>
#include <span>

namespace tav {

/// Starts with all ports connected and auto-mute off. A processor inside another one uses the flags
/// of its owner: see ShareActivityOf.
class AudioProcessorWithAutoMute : public AudioProcessorBase {
public:
    AudioProcessorWithAutoMute(unsigned numInputs, unsigned numOutputs);

    // 1 to 3
    using AudioProcessorBase::Process;
    /// First analyses the inputs as the host passed them, so that NaN counts as signal.
    void Process(double* const* outputs,
                 const double* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // 9, 11
    void SetSampleRate(float hz) override;
    /// Also clears the count of silent samples. Audio may run.
    void Reset() override;

    // 13 to 16: the flags of this processor, or those of its owner
    bool InputConnectedAndActive(unsigned input) const noexcept TAV_NONBLOCKING override;
    bool OutputConnected(unsigned output) const noexcept TAV_NONBLOCKING override;
    bool InputActive(unsigned input) const noexcept TAV_NONBLOCKING override;
    bool AnyOutputConnected() const noexcept TAV_NONBLOCKING override;

    // 17, 18: set the number of ports that are analysed, at most all; all flags become 1.
    // Thread: control, audio stopped.
    virtual void SetAnalyzerInputs(unsigned count);
    virtual void SetAnalyzerOutputs(unsigned count);

    // 20: computes the active flags for one block.  Thread: audio.
    virtual void AnalyzeActivity(const double* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING;

    // 21 to 23.  Thread: control, audio may run.
    /// One connection count per inlet and outlet, as the host passes them; connected when above 0.
    virtual void SetConnections(std::span<const short> inletCounts,
                                std::span<const short> outletCounts);
    /// Switches auto-mute off, or on with the time that was set last (at first 20 s).
    virtual void SetAutoMute(bool on);
    /// @param seconds  0 or less: off. Otherwise on, clamped to [1, 500].
    virtual void SetAutoMuteTime(float seconds);

    // not virtual
    bool InputConnected(unsigned input) const noexcept TAV_NONBLOCKING {
        return InForce().InletConnected(input);
    }
    bool AutoMute() const noexcept { return own_.AutoMute(); }
    /// Seconds
    float AutoMuteTime() const noexcept { return own_.AutoMuteTime(); }

    /// A counter that changes after any of the flags of 13 to 16 has changed.  Thread: any.
    std::uint32_t ActivityChanges() const noexcept TAV_NONBLOCKING {
        return InForce().Changes() + (&Outlets() == &InForce() ? 0 : Outlets().Changes());
    }

    /// For a processor inside another one, such as the gain matrix of a panner: from now on it uses
    /// the activity flags of `owner` and no longer analyses its own inlets. Processors that share
    /// the flags of this one use those of `owner`, too.  @param owner  has to outlive this
    /// Thread: control, audio stopped.
    void ShareActivityOf(const AudioProcessorWithAutoMute& owner) noexcept;
    /// The same for the flags of inputs only; outputs keep their own flags.
    void ShareInputActivityOf(const AudioProcessorWithAutoMute& owner) noexcept;

private:
    const InletsActivityAnalyzer& InForce() const noexcept TAV_NONBLOCKING {
        return owner_ == nullptr ? own_ : owner_->InForce();
    }
    const InletsOutletsConnectionsStatus& Outlets() const noexcept TAV_NONBLOCKING {
        return owner_ == nullptr || ownOutputs_ ? own_ : owner_->Outlets();
    }

    InletsActivityAnalyzer own_;
    const AudioProcessorWithAutoMute* owner_ = nullptr;
    bool ownOutputs_ = false;  // with an owner: only the flags of inputs are shared
};

}  // namespace tav
