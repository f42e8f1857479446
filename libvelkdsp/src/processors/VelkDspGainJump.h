// SPDX-License-Identifier: MIT
// Changes of a gain matrix that take effect at the next block, without a glide.
//
// New targets wait for the next segment; immediate rows and a new ramp length do not. They are
// collected on the control side until audio takes them all at once. The result for audio is the
// same as if each had been applied between two blocks.
#pragma once

#include "math/VelkDspMatrix.h"
#include "text/VelkDspNonblocking.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

/// All jumps since audio last took them, as one change of the matrices from and to.
class GainJump {
public:
    enum class Row : std::uint8_t {
        Keep,
        FromTo,   // from becomes audio's own to, then to becomes the value
        Replace,  // from and to become the values
    };

    GainJump(std::size_t rows, std::size_t columns)
        : kinds_(rows, Row::Keep),
          from_(rows, columns),
          to_(rows, columns) {}

    /// from = to = `gains` in this row.
    void SetRow(std::size_t row, std::span<const float> gains) noexcept {
        Replace(row, gains, gains);
    }

    /// from = to, then to = `target` in this row.
    void AdvanceRow(std::size_t row, std::span<const float> target) noexcept {
        if (kinds_[row] == Row::Keep) {
            kinds_[row] = Row::FromTo;
            std::ranges::copy(target, to_.Row(row).begin());
        } else {
            Replace(row, to_.Row(row), target);
        }
    }

    /// Restarts the segment with this length.
    void SetRampLength(std::int32_t length) noexcept {
        newRamp_ = true;
        rampLength_ = length;
    }

    void Clear() noexcept {
        std::ranges::fill(kinds_, Row::Keep);
        newRamp_ = false;
    }

    std::size_t NumRows() const noexcept TAV_NONBLOCKING { return kinds_.size(); }
    Row KindOf(std::size_t row) const noexcept TAV_NONBLOCKING { return kinds_[row]; }
    std::span<const float> From(std::size_t row) const noexcept TAV_NONBLOCKING {
        return from_.Row(row);
    }
    std::span<const float> To(std::size_t row) const noexcept TAV_NONBLOCKING {
        return to_.Row(row);
    }
    bool HasRampLength() const noexcept TAV_NONBLOCKING { return newRamp_; }
    std::int32_t RampLength() const noexcept TAV_NONBLOCKING { return rampLength_; }

private:
    void Replace(std::size_t row, std::span<const float> from, std::span<const float> to) noexcept {
        kinds_[row] = Row::Replace;
        std::ranges::copy(from, from_.Row(row).begin());
        std::ranges::copy(to, to_.Row(row).begin());
    }

    std::vector<Row> kinds_;
    Matrix<float> from_;
    Matrix<float> to_;
    bool newRamp_ = false;
    std::int32_t rampLength_ = 0;
};

/// Passes jumps from control to audio through two slots: while audio reads one, control fills the
/// other. Control takes back a jump that audio has not taken yet, to add to it.
/// Pattern, control threads serialise among themselves: (Open Post)*   (Take Release)*
class GainJumpMailbox {
public:
    GainJumpMailbox(std::size_t rows, std::size_t columns)
        : slots_{{{rows, columns}, {rows, columns}}} {}

    /// The jump that audio has not taken yet, or an empty one.  Thread: control.
    GainJump& Open() noexcept {
        if (Slot* waiting = posted_.exchange(nullptr, std::memory_order_acq_rel)) {
            return waiting->jump;  // the one that was opened last
        }
        // Nothing is posted, so audio holds at most one slot.
        open_ = slots_[0].held.load(std::memory_order_acquire) ? &slots_[1] : &slots_[0];
        open_->jump.Clear();
        return open_->jump;
    }
    /// Passes the jump that Open returned to audio.  Thread: control.
    void Post() noexcept {
        open_->held.store(true, std::memory_order_relaxed);
        posted_.store(open_, std::memory_order_release);
    }

    /// The posted jump; null if there is none.  Thread: audio.
    const GainJump* Take() noexcept TAV_NONBLOCKING {
        if (posted_.load(std::memory_order_relaxed) == nullptr) return nullptr;
        taken_ = posted_.exchange(nullptr, std::memory_order_acq_rel);
        return taken_ == nullptr ? nullptr : &taken_->jump;
    }
    /// Audio no longer reads the jump that Take returned.  Thread: audio.
    void Release() noexcept TAV_NONBLOCKING {
        taken_->held.store(false, std::memory_order_release);
    }

private:
    struct Slot {
        Slot(std::size_t rows, std::size_t columns) : jump(rows, columns) {}
        GainJump jump;
        std::atomic<bool> held{false};  // posted, or read by audio
    };

    std::array<Slot, 2> slots_;
    std::atomic<Slot*> posted_{nullptr};
    Slot* open_ = nullptr;   // control only
    Slot* taken_ = nullptr;  // audio only
};

}  // namespace tav
