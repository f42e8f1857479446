// SPDX-License-Identifier: MIT
// Rows of gains that a control thread writes and the audio thread reads, without a lock.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

/// rows x columns gains, all 0 at first. A reader gets the values of one Write or none.
/// Control threads serialise among themselves.
class GainRows {
public:
    enum class Look : std::int32_t { Unchanged, Taken, Torn };
    static constexpr std::uint32_t kNeverSeen = 1;  // odd, so no complete row has this number

    GainRows(std::size_t rows, std::size_t columns)
        : columns_(columns),
          wordsPerRow_((columns + 1) / 2),
          words_(rows * wordsPerRow_),
          sequences_(rows) {}

    /// @param gains  one per column  Thread: control.
    void Write(std::size_t row, std::span<const float> gains) noexcept {
        std::atomic<std::uint32_t>& sequence = sequences_[row];
        const std::uint32_t before = sequence.load(std::memory_order_relaxed);
        sequence.store(before + 1, std::memory_order_relaxed);  // odd while the row is written
        // Each with release, so that a reader of one of these words also sees the odd number.
        std::atomic<Word>* word = words_.data() + row * wordsPerRow_;
        for (std::size_t c = 0; c < columns_; c += 2, ++word) {
            const Pair pair{gains[c], c + 1 < columns_ ? gains[c + 1] : 0.f};
            word->store(std::bit_cast<Word>(pair), std::memory_order_release);
        }
        sequence.store(before + 2, std::memory_order_release);
        const std::uint32_t writes = writes_.load(std::memory_order_relaxed);
        writes_.store(writes + 1, std::memory_order_release);
    }

    /// A counter of all calls of Write, so that a reader can skip all rows at once.  Thread: any.
    std::uint32_t Writes() const noexcept TAV_NONBLOCKING {
        return writes_.load(std::memory_order_acquire);
    }

    /// @param seen  number of the row when it was last taken; updated if the result is Taken
    /// @param gains  one per column; undefined if the result is Torn
    /// Thread: audio.
    Look Read(std::size_t row,
              std::uint32_t& seen,
              std::span<float> gains) const noexcept TAV_NONBLOCKING {
        const std::atomic<std::uint32_t>& sequence = sequences_[row];
        const std::uint32_t before = sequence.load(std::memory_order_acquire);
        if (before == seen) return Look::Unchanged;
        if (before % 2 == 1) return Look::Torn;
        CopyOut(row, gains);
        if (sequence.load(std::memory_order_relaxed) != before) return Look::Torn;
        seen = before;
        return Look::Taken;
    }

    /// Copies the gains that were written last.  Thread: control.
    void CopyOut(std::size_t row, std::span<float> gains) const noexcept TAV_NONBLOCKING {
        const std::atomic<Word>* word = words_.data() + row * wordsPerRow_;
        const std::size_t pairs = columns_ / 2;
        for (std::size_t p = 0; p < pairs; ++p, ++word) {
            const auto pair = std::bit_cast<Pair>(word->load(std::memory_order_acquire));
            gains[2 * p] = pair[0];
            gains[2 * p + 1] = pair[1];
        }
        if (columns_ % 2 == 1) {
            gains[columns_ - 1] = std::bit_cast<Pair>(word->load(std::memory_order_acquire))[0];
        }
    }

private:
    using Word = std::uint64_t;  // two gains in one word, for faster reading
    using Pair = std::array<float, 2>;
    static_assert(std::atomic<Word>::is_always_lock_free);

    const std::size_t columns_;
    const std::size_t wordsPerRow_;
    // shared: control writes, audio reads
    std::vector<std::atomic<Word>> words_;
    std::vector<std::atomic<std::uint32_t>> sequences_;
    std::atomic<std::uint32_t> writes_{0};
};

}  // namespace tav
