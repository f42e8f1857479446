// SPDX-License-Identifier: MIT
// The way of OSC messages from the threads where they arrive to the audio thread.
//
// A message is read, checked and resolved where it arrives; what travels is a command of fixed
// size. Memory is taken when the queue is made and never again. While a sender is too fast, the
// newest command about each subject takes the place of the one that waits.
#pragma once

#include "processors/VelkDspControlLock.h"
#include "text/VelkDspNonblocking.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace tav {

/// One thing to do. What route and variant mean is for those who make and run it to say.
struct OscCommand {
    /// A command that has nothing to do any more.
    static constexpr std::uint16_t kVoid = 0xFFFF;

    std::uint16_t route = 0;    // the number of a row in a table of addresses
    std::uint16_t subject = 0;  // such as a source
    std::uint16_t variant = 0;  // such as a coordinate format
    /// Whatever an earlier command with the same key did is gone after this one.
    bool isAbsolute = false;
    std::array<float, 3> values{};

    std::uint64_t Key() const noexcept TAV_NONBLOCKING {
        return (std::uint64_t{route} << 48) | (std::uint64_t{subject} << 32) | variant;
    }
};

/// Commands in the order in which they came, up to a number.
class OscBox {
public:
    enum class Outcome : std::uint8_t { Kept, Replaced, Dropped };

    /// @param capacity  a power of two.  Throws: std::bad_alloc.
    explicit OscBox(std::size_t capacity)
        : capacity_(capacity),
          commands_(2 * capacity),
          places_(2 * capacity) {}

    /// Nobody hears a position that another one follows before the next block: an absolute command
    /// removes the one with the same key that waits. Any other command does so only when the box is
    /// full, and is dropped when there is none.
    /// Cost: constant on average; once in `capacity` calls proportional to that.
    Outcome Put(const OscCommand& command) noexcept TAV_NONBLOCKING {
        if (end_ == commands_.size()) Compact();
        Place& place = PlaceOf(command.Key());
        const bool isKnown = place.round == round_;
        const bool isFull = count_ == capacity_;
        if (isFull && !isKnown) return Outcome::Dropped;
        const bool isLost = isFull && !command.isAbsolute;
        if (isKnown && (command.isAbsolute || isFull)) {
            commands_[place.index].route = OscCommand::kVoid;
            --count_;
        }
        Append(command, place);
        return isLost ? Outcome::Replaced : Outcome::Kept;
    }

    /// Those with the route kVoid have been removed.
    std::span<const OscCommand> Commands() const noexcept TAV_NONBLOCKING {
        return std::span(commands_).first(end_);
    }

    void Clear() noexcept TAV_NONBLOCKING {
        count_ = end_ = 0;
        // Places of older rounds count as empty. In the round after the largest number they are
        // made empty one by one, once in four thousand million.
        if (++round_ == 0) {
            std::ranges::fill(places_, Place{});
            round_ = 1;
        }
    }

private:
    struct Place {
        std::uint32_t round = 0;
        std::uint32_t index = 0;
        std::uint64_t key = 0;
    };

    /// Where the newest command with this key is noted, or where it would be. Every key that is
    /// noted has a command that waits, so at most half of the places are taken and the search ends.
    Place& PlaceOf(std::uint64_t key) noexcept TAV_NONBLOCKING {
        // Multiplicative hashing ("The Art of Computer Programming", vol. 3, D. Knuth, 6.4).
        std::size_t at = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15u) >> 32);
        for (;; ++at) {
            Place& place = places_[at & (places_.size() - 1)];
            if (place.round != round_ || place.key == key) return place;
        }
    }

    void Append(const OscCommand& command, Place& place) noexcept TAV_NONBLOCKING {
        place = {round_, static_cast<std::uint32_t>(end_), command.Key()};
        commands_[end_++] = command;
        ++count_;
    }

    /// Closes the gaps of removed commands, which are half of the commands at least.
    void Compact() noexcept TAV_NONBLOCKING {
        const auto all = Commands();
        Clear();
        for (const OscCommand& command : all) {
            if (command.route == OscCommand::kVoid) continue;
            // Written at or before the place where it stands, so nothing is overwritten unread.
            Append(command, PlaceOf(command.Key()));
        }
    }

    std::size_t capacity_;
    std::vector<OscCommand> commands_;  // the first end_: those that wait, and gaps
    std::vector<Place> places_;
    std::size_t end_ = 0;
    std::size_t count_ = 0;  // that wait, at most capacity_
    std::uint32_t round_ = 1;
};

/// Commands of one packet; only large packets take memory.
class OscCommandList {
public:
    void Add(const OscCommand& command) {
        if (count_ == kFew) many_.assign(few_.begin(), few_.end());
        if (count_ < kFew) {
            few_[count_] = command;
        } else {
            many_.push_back(command);
        }
        ++count_;
    }
    std::span<const OscCommand> All() const noexcept {
        return count_ > kFew ? std::span(many_) : std::span(few_).first(count_);
    }

private:
    static constexpr std::size_t kFew = 1;

    std::array<OscCommand, kFew> few_;
    std::vector<OscCommand> many_;
    std::size_t count_ = 0;
};

/// Any thread puts, one at a time runs. Commands of one packet are run in one go unless they are
/// too many for that.
///
///   pending_  filled by whoever puts, under the lock
///   taken_    being run: the runner's; exchanged with pending_ when all of it has been run
class OscQueue {
public:
    static constexpr std::size_t kCapacity = 4096;

    /// @param capacity  a power of two.  Throws: std::bad_alloc.
    explicit OscQueue(std::size_t capacity = kCapacity) : pending_(capacity), taken_(capacity) {}

    /// @return how many commands are lost: were replaced, or found no place
    /// Thread: any but audio.
    unsigned Put(std::span<const OscCommand> commands) {
        // Nearly always nobody else has it, and then to try costs a third of what locking costs.
        if (!lock_.TryLock()) lock_.Lock();
        unsigned numLost = 0;
        for (const OscCommand& command : commands) {
            if (pending_.Put(command) != OscBox::Outcome::Kept) ++numLost;
        }
        isWaiting_.store(true, std::memory_order_release);
        lock_.Unlock();
        return numLost;
    }
    /// Calls `fill(box)`, which puts commands into the box.
    /// @return false: somebody else puts or takes just now, and nothing has been put
    /// Thread: audio.
    template <class Fill>
    bool PutInAudio(const Fill& fill) noexcept TAV_NONBLOCKING {
        if (!lock_.TryLock()) return false;
        OscBox& box = pending_;
        fill(box);
        isWaiting_.store(true, std::memory_order_release);
        lock_.Unlock();
        return true;
    }

    /// False when a run would find nothing to do.  Thread: any.
    bool IsWaiting() const noexcept TAV_NONBLOCKING {
        return isWaiting_.load(std::memory_order_acquire);
    }

    /// Calls `run(command)` for at most `most` commands in their order; the rest is for the next
    /// time. What cannot be had without waiting stays where it is.
    /// Thread: audio, when no other one runs.
    template <class Run>
    void RunInAudio(std::size_t most, const Run& run) noexcept TAV_NONBLOCKING {
        taken_.RunSome(most, run);
        if (taken_.IsDone() && lock_.TryLock()) {
            Take();
            lock_.Unlock();
            taken_.RunSome(most, run);
        }
        if (!taken_.IsDone()) isWaiting_.store(true, std::memory_order_relaxed);
    }
    /// The same for all that waits.  Thread: control, when no other one runs.
    template <class Run>
    void RunAll(const Run& run) {
        std::size_t most = std::numeric_limits<std::size_t>::max();
        taken_.RunSome(most, run);
        {
            const ControlGuard guard(lock_);
            Take();
        }
        taken_.RunSome(most, run);
    }

private:
    struct Course {
        explicit Course(std::size_t capacity) : box(capacity) {}
        bool IsDone() const noexcept TAV_NONBLOCKING { return next == box.Commands().size(); }

        template <class Run>
        void RunSome(std::size_t& most, const Run& run) noexcept TAV_NONBLOCKING {
            const auto commands = box.Commands();
            for (; next < commands.size(); ++next) {
                if (commands[next].route == OscCommand::kVoid) continue;
                if (most == 0) return;
                run(commands[next]);
                --most;
            }
            box.Clear();
            next = 0;
        }

        OscBox box;
        std::size_t next = 0;  // to be run
    };

    void Take() noexcept TAV_NONBLOCKING TAV_REQUIRES(lock_) {
        std::swap(taken_.box, pending_);
        isWaiting_.store(false, std::memory_order_relaxed);
    }

    ControlLock lock_;
    OscBox pending_ TAV_GUARDED_BY(lock_);
    Course taken_;
    // Something is pending, or taken and not run yet. Set by whoever leaves something, reset where
    // all that is pending is taken.
    std::atomic<bool> isWaiting_ = false;
};

}  // namespace tav
