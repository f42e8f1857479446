// SPDX-License-Identifier: MIT
#include "processors/VelkDspInletsActivity.h"

#include "containers/VelkDspRelaxed.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace tav {

namespace {

void StoreConnected(std::vector<std::atomic<std::int16_t>>& flags,
                    std::span<const short> counts) noexcept {
    const std::size_t known = std::min(flags.size(), counts.size());
    for (std::size_t i = 0; i < known; ++i) flags[i].store(counts[i] > 0 ? 1 : 0, kRelaxed);
}

/// Tests the bits, since a comparison takes denormals for zero if the host flushes them.
bool AllZero(std::span<const double> samples) noexcept TAV_NONBLOCKING {
    constexpr std::size_t kRun = 64;  // short enough to stop early, long enough to vectorise
    for (std::size_t begin = 0; begin < samples.size(); begin += kRun) {
        std::uint64_t bits = 0;
        for (const double sample : samples.subspan(begin, std::min(kRun, samples.size() - begin))) {
            bits |= std::bit_cast<std::uint64_t>(sample) << 1;  // without the sign: -0 is zero
        }
        if (bits != 0) return false;
    }
    return true;
}

}  // namespace

InletsOutletsConnectionsStatus::Flags InletsOutletsConnectionsStatus::AllSet(unsigned count) {
    Flags flags(count);
    for (auto& flag : flags) flag.store(1, kRelaxed);
    return flags;
}

void InletsOutletsConnectionsStatus::SetNumInlets(unsigned count) {
    inletConnected_ = AllSet(count);
    NoteChange();
}

void InletsOutletsConnectionsStatus::SetNumOutlets(unsigned count) {
    outletConnected_ = AllSet(count);
    NoteChange();
}

void InletsOutletsConnectionsStatus::SetConnections(std::span<const short> inletCounts,
                                                    std::span<const short> outletCounts) noexcept {
    StoreConnected(inletConnected_, inletCounts);
    StoreConnected(outletConnected_, outletCounts);
    NoteChange();
}

unsigned InletsOutletsConnectionsStatus::NumInlets() const noexcept TAV_NONBLOCKING {
    return static_cast<unsigned>(inletConnected_.size());
}

unsigned InletsOutletsConnectionsStatus::NumOutlets() const noexcept TAV_NONBLOCKING {
    return static_cast<unsigned>(outletConnected_.size());
}

bool InletsOutletsConnectionsStatus::InletConnected(unsigned inlet) const noexcept TAV_NONBLOCKING {
    return IsSet(inletConnected_, inlet);
}

bool InletsOutletsConnectionsStatus::OutletConnected(unsigned outlet) const noexcept
    TAV_NONBLOCKING {
    return IsSet(outletConnected_, outlet);
}

bool InletsOutletsConnectionsStatus::AnyOutletConnected() const noexcept TAV_NONBLOCKING {
    return std::ranges::any_of(outletConnected_,
                               [](const auto& flag) { return flag.load(kRelaxed) != 0; });
}

void InletsActivityAnalyzer::SetNumInlets(unsigned count) {
    std::vector<std::uint64_t> silentSamples(count, 0);
    Flags active = AllSet(count);
    InletsOutletsConnectionsStatus::SetNumInlets(count);
    inletActive_ = std::move(active);
    silentSamples_ = std::move(silentSamples);
    NoteChange();
}

void InletsActivityAnalyzer::SetConnections(std::span<const short> inletCounts,
                                            std::span<const short> outletCounts) noexcept {
    InletsOutletsConnectionsStatus::SetConnections(inletCounts, outletCounts);
    StoreConnected(inletActive_, inletCounts);
    NoteChange();
}

void InletsActivityAnalyzer::SetSampleRate(float hz) noexcept {
    sampleRate_ = hz;
    UpdateHoldLength();
}

void InletsActivityAnalyzer::SetAutoMuteTime(float seconds) noexcept {
    if (!std::isfinite(seconds)) return;
    if (seconds > 0.f) {
        autoMuteSeconds_.store(std::clamp(seconds, 1.f, 500.f), kRelaxed);
        UpdateHoldLength();
    }
    SetAutoMute(seconds > 0.f);
}

void InletsActivityAnalyzer::SetAutoMute(bool on) noexcept { autoMute_.store(on, kRelaxed); }

bool InletsActivityAnalyzer::AutoMute() const noexcept TAV_NONBLOCKING {
    return autoMute_.load(kRelaxed);
}

float InletsActivityAnalyzer::AutoMuteTime() const noexcept TAV_NONBLOCKING {
    return autoMuteSeconds_.load(kRelaxed);
}

void InletsActivityAnalyzer::UpdateHoldLength() noexcept {
    const double samples =
        static_cast<double>(AutoMuteTime()) * 1000.0 * 0.001 * static_cast<double>(sampleRate_);
    holdSamples_.store(static_cast<std::uint64_t>(samples), kRelaxed);
}

void InletsActivityAnalyzer::Analyze(const double* const* inlets,
                                     unsigned frames) noexcept TAV_NONBLOCKING {
    if (restart_.load(kRelaxed)) {
        restart_.store(false, kRelaxed);
        std::ranges::fill(silentSamples_, 0);
    }
    const bool autoMute = AutoMute();
    const std::uint32_t before = Changes();
    if (!autoMute && settled_ == before) return;
    const std::uint64_t holdSamples = holdSamples_.load(kRelaxed);
    bool changed = false;
    for (unsigned inlet = 0; inlet < NumInlets(); ++inlet) {
        bool active = InletConnected(inlet);
        if (active && autoMute) {
            std::uint64_t& silent = silentSamples_[inlet];
            silent = AllZero({inlets[inlet], frames}) ? std::min(silent + frames, holdSamples) : 0;
            active = silent == 0 || silent < holdSamples;
        }
        if (active == InletActive(inlet)) continue;
        inletActive_[inlet].store(active ? 1 : 0, kRelaxed);
        changed = true;
    }
    if (changed) NoteChange();
    settled_ = autoMute ? std::nullopt : std::optional(before);
}

void InletsActivityAnalyzer::Reset() noexcept { restart_.store(true, kRelaxed); }

}  // namespace tav
