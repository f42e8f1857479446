// SPDX-License-Identifier: MIT
// Which inputs and outputs are connected, and which inputs have a signal.
#pragma once

#include "containers/VelkDspRelaxed.h"
#include "text/VelkDspNonblocking.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tav {

/// One connected flag per inlet and outlet. All are set when the counts are set.
class InletsOutletsConnectionsStatus {
public:
    /// Thread: control, audio stopped.  Throws: std::bad_alloc.
    void SetNumInlets(unsigned count);
    void SetNumOutlets(unsigned count);

    /// A flag becomes 1 where its count is above 0. Ports without a count keep their flag, surplus
    /// counts are ignored.  Thread: control, audio may run.
    void SetConnections(std::span<const short> inletCounts,
                        std::span<const short> outletCounts) noexcept;

    unsigned NumInlets() const noexcept TAV_NONBLOCKING;
    unsigned NumOutlets() const noexcept TAV_NONBLOCKING;
    /// False for a port that does not exist.  Thread: any.
    bool InletConnected(unsigned inlet) const noexcept TAV_NONBLOCKING;
    bool OutletConnected(unsigned outlet) const noexcept TAV_NONBLOCKING;
    bool AnyOutletConnected() const noexcept TAV_NONBLOCKING;

    /// Counts changes of the flags, so that a reader can skip all of them at once.
    std::uint32_t Changes() const noexcept TAV_NONBLOCKING {
        return changes_.load(std::memory_order_acquire);
    }

protected:
    /// 16-bit, relaxed: the flags are independent; a change may take effect a block later.
    using Flags = std::vector<std::atomic<std::int16_t>>;
    static Flags AllSet(unsigned count);
    static bool IsSet(const Flags& flags, unsigned index) noexcept TAV_NONBLOCKING {
        return index < flags.size() && flags[index].load(kRelaxed) != 0;
    }
    void NoteChange() noexcept TAV_NONBLOCKING { changes_.fetch_add(1, std::memory_order_release); }

    // shared: control writes, audio reads
    Flags inletConnected_;
    Flags outletConnected_;

private:
    std::atomic<std::uint32_t> changes_{0};
};

/// Adds the active flag per inlet: connected, and not silent for the whole auto-mute time.
class InletsActivityAnalyzer : public InletsOutletsConnectionsStatus {
public:
    /// All inlets connected and active, no silence counted.
    /// Thread: control, audio stopped.  Throws: std::bad_alloc.
    void SetNumInlets(unsigned count);

    /// As the base; an inlet's active flag follows at once, until the next Analyze.
    void SetConnections(std::span<const short> inletCounts,
                        std::span<const short> outletCounts) noexcept;

    /// Hz; the hold length follows.  Thread: control.
    void SetSampleRate(float hz) noexcept;
    /// @param seconds  0 or less: auto-mute off. Otherwise on, clamped to [1, 500]. Not finite:
    /// ignored.  Thread: control.
    void SetAutoMuteTime(float seconds) noexcept;
    /// Off, or on with the stored time.  Thread: control.
    void SetAutoMute(bool on) noexcept;
    bool AutoMute() const noexcept TAV_NONBLOCKING;
    /// Seconds; the time that was stored last, also while auto-mute is off.
    float AutoMuteTime() const noexcept TAV_NONBLOCKING;

    /// Sets the active flags for one block. A sample that is not a number counts as signal, and so
    /// does a denormal one, whatever the processor's mode. Silence is counted in whole blocks;
    /// while auto-mute is off or the inlet disconnected, the count does not change. Thread: audio.
    void Analyze(const double* const* inlets, unsigned frames) noexcept TAV_NONBLOCKING;
    bool InletActive(unsigned inlet) const noexcept TAV_NONBLOCKING {
        return IsSet(inletActive_, inlet);
    }
    /// The next Analyze restarts the count of silent samples.  Thread: control, audio may run.
    void Reset() noexcept;

private:
    void UpdateHoldLength() noexcept;

    // shared: control writes, audio reads
    std::atomic<bool> autoMute_{false};
    std::atomic<float> autoMuteSeconds_{20.f};
    std::atomic<std::uint64_t> holdSamples_{0};
    std::atomic<bool> restart_{false};
    // audio writes, any reads
    Flags inletActive_;
    // audio only
    std::vector<std::uint64_t> silentSamples_;
    /// Changes() when Analyze last set all active flags to the connected ones; while it stays the
    /// same and auto-mute is off, there is nothing to do.
    std::optional<std::uint32_t> settled_;
    // control only
    float sampleRate_ = 0.f;
};

}  // namespace tav
