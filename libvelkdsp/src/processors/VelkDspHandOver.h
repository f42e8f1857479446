// SPDX-License-Identifier: MIT
// Passes values and memory from the control thread to the audio thread without a lock.
//
// The audio thread never waits and never frees memory: it checks once per block, takes what is
// complete, and returns what it no longer uses.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace tav {

/// A few 32-bit values that belong together, written by one thread and read by another.
/// The reader sees all values of one Store or none. Control threads serialise among themselves.
/// @tparam Values  trivially copyable, a multiple of four bytes, no padding
template <class Values>
class SharedCell {
    static_assert(std::is_trivially_copyable_v<Values> && sizeof(Values) % 4 == 0);
    static constexpr std::size_t kWords = sizeof(Values) / 4;
    using Words = std::array<std::uint32_t, kWords>;

public:
    /// Thread: control.
    void Store(const Values& values) noexcept {
        const auto words = std::bit_cast<Words>(values);
        const std::uint32_t sequence = sequence_.load(std::memory_order_relaxed);
        sequence_.store(sequence + 1, std::memory_order_relaxed);  // odd while values are written
        // Each with release, so that a reader of one of these words also sees the odd number.
        for (std::size_t i = 0; i < kWords; ++i) {
            words_[i].store(words[i], std::memory_order_release);
        }
        sequence_.store(sequence + 2, std::memory_order_release);
    }

    /// Reads the values if they were stored since the last successful call.
    /// @return false: nothing new, or a Store is running; `values` unchanged, call again next block
    /// Thread: audio.
    bool Take(Values& values) noexcept TAV_NONBLOCKING {
        const std::uint32_t sequence = sequence_.load(std::memory_order_acquire);
        if (sequence == taken_ || sequence % 2 == 1) return false;
        Words words;
        for (std::size_t i = 0; i < kWords; ++i) {
            words[i] = words_[i].load(std::memory_order_acquire);
        }
        if (sequence_.load(std::memory_order_relaxed) != sequence) return false;
        taken_ = sequence;
        values = std::bit_cast<Values>(words);
        return true;
    }

private:
    // shared: control writes, audio reads
    std::array<std::atomic<std::uint32_t>, kWords> words_{};
    std::atomic<std::uint32_t> sequence_{0};
    // audio only
    std::uint32_t taken_ = 0;
};

/// An object that the audio thread uses and the control thread replaces, such as memory of another
/// size. The control thread frees the replaced object, at the latest in the destructor.
/// Pattern: Publish (Publish | TakeNext Live*)*; control threads serialise among themselves.
template <class Object>
class HandOver {
public:
    HandOver() = default;
    ~HandOver() {
        delete live_;
        delete next_.load(std::memory_order_acquire);
        delete retired_.load(std::memory_order_acquire);
    }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;

    /// The newest object wins; one that audio has not taken yet is freed here.
    /// Thread: control.
    void Publish(std::unique_ptr<Object> object) noexcept {
        delete next_.exchange(object.release(), std::memory_order_acq_rel);
        // After the exchange: when this returns, audio can take the new object.
        delete retired_.exchange(nullptr, std::memory_order_acq_rel);
    }

    /// Makes a published object the live one, unless the control thread has not yet freed the one
    /// that was replaced before. First calls move(newest, replaced), which copies what has to be
    /// kept; `replaced` is null the first time.  Thread: audio, once per block.
    template <class Move>
    void TakeNext(Move&& move) noexcept TAV_NONBLOCKING {
        if (next_.load(std::memory_order_relaxed) == nullptr) return;
        if (retired_.load(std::memory_order_acquire) != nullptr) return;
        Object* const newest = next_.exchange(nullptr, std::memory_order_acq_rel);
        if (newest == nullptr) return;
        move(*newest, live_);
        retired_.store(std::exchange(live_, newest), std::memory_order_release);
    }
    void TakeNext() noexcept TAV_NONBLOCKING {
        TakeNext([](Object&, Object*) {});
    }

    /// Null before the first successful TakeNext.  Thread: audio.
    Object* Live() const noexcept TAV_NONBLOCKING { return live_; }

private:
    std::atomic<Object*> next_{nullptr};     // published, not taken
    std::atomic<Object*> retired_{nullptr};  // given back by audio
    Object* live_ = nullptr;                 // audio only
};

/// As HandOver, for gradual replacement: for some time the audio thread uses both the live object
/// and the incoming one. The control thread frees the replaced object.
/// Pattern: Publish (Publish | (TakeNext Finish)*)*; control threads serialise among themselves.
template <class Object>
class SlowHandOver {
public:
    SlowHandOver() = default;
    ~SlowHandOver() {
        delete live_;
        delete incoming_;
        delete next_.load(std::memory_order_acquire);
        delete retired_.load(std::memory_order_acquire);
    }
    SlowHandOver(const SlowHandOver&) = delete;
    SlowHandOver& operator=(const SlowHandOver&) = delete;

    /// The newest object wins; one that audio has not taken yet is freed here.
    /// Thread: control.
    void Publish(std::unique_ptr<Object> object) noexcept {
        delete next_.exchange(object.release(), std::memory_order_acq_rel);
        FreeRetired();
    }
    /// Frees the object that audio has returned. Thread: control, from time to time.
    void FreeRetired() noexcept { delete retired_.exchange(nullptr, std::memory_order_acq_rel); }

    /// Makes a published object the incoming one, unless there is one already.
    /// @return true: there is a new incoming object.  Thread: audio, once per block.
    bool TakeNext() noexcept TAV_NONBLOCKING {
        if (incoming_ != nullptr || next_.load(std::memory_order_relaxed) == nullptr) return false;
        if (retired_.load(std::memory_order_acquire) != nullptr) return false;
        incoming_ = next_.exchange(nullptr, std::memory_order_acq_rel);
        return incoming_ != nullptr;
    }
    /// Makes the incoming object the live one.  @pre  Incoming() is not null
    /// Thread: audio.
    void Finish() noexcept TAV_NONBLOCKING {
        Object* const replaced = std::exchange(live_, std::exchange(incoming_, nullptr));
        retired_.store(replaced, std::memory_order_release);
    }

    /// Live is null before the first Finish, Incoming except in a change.  Thread: audio.
    Object* Live() const noexcept TAV_NONBLOCKING { return live_; }
    Object* Incoming() const noexcept TAV_NONBLOCKING { return incoming_; }

private:
    std::atomic<Object*> next_{nullptr};     // published, not taken
    std::atomic<Object*> retired_{nullptr};  // given back by audio
    Object* live_ = nullptr;                 // audio only
    Object* incoming_ = nullptr;             // audio only
};

}  // namespace tav
