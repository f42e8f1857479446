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
    explicit OscBox(std::size_t capacity) : commands_(capacity), places_(2 * capacity) {}

    /// When the box is full, the command replaces the newest one about the same subject, if any.
    Outcome Put(const OscCommand& command) noexcept TAV_NONBLOCKING {
        Place& place = PlaceOf(command.Key());
        const bool isKnown = place.round == round_;
        if (count_ == commands_.size()) {
            if (!isKnown) return Outcome::Dropped;
            commands_[place.index] = command;
            return Outcome::Replaced;
        }
        // Nobody hears a position that another one follows before the next block.
        if (isKnown && command.isAbsolute) commands_[place.index].route = OscCommand::kVoid;
        place = {round_, static_cast<std::uint32_t>(count_), command.Key()};
        commands_[count_++] = command;
        return Outcome::Kept;
    }

    std::span<const OscCommand> Commands() const noexcept TAV_NONBLOCKING {
        return std::span(commands_).first(count_);
    }

    void Clear() noexcept TAV_NONBLOCKING {
        count_ = 0;
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

    /// Where the newest command with this key is noted, or where it would be. At most half of the
    /// places are taken, so the search ends.
    Place& PlaceOf(std::uint64_t key) noexcept TAV_NONBLOCKING {
        // Multiplicative hashing ("The Art of Computer Programming", vol. 3, D. Knuth, 6.4).
        std::size_t at = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15u) >> 32);
        for (;; ++at) {
            Place& place = places_[at % places_.size()];
            if (place.round != round_ || place.key == key) return place;
        }
    }

    std::vector<OscCommand> commands_;
    std::vector<Place> places_;
    std::size_t count_ = 0;
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
    static constexpr std::size_t kFew = 2;

    std::array<OscCommand, kFew> few_;
    std::vector<OscCommand> many_;
    std::size_t count_ = 0;
};

/// Any thread puts, one at a time runs. Commands of one packet are run in one go unless they are
/// too many for that.
///
///   pending_   filled by control threads, under the lock
///   taken_     being run: the runner's; exchanged with pending_ when it is done
///   fromAudio_ what arrived in the audio interrupt: the audio thread's alone
class OscQueue {
public:
    static constexpr std::size_t kCapacity = 4096;
    static constexpr std::size_t kAudioCapacity = 1024;

    /// @return how many commands are lost: were replaced, or found no place
    /// Thread: any but audio.
    unsigned Put(std::span<const OscCommand> commands) {
        const ControlGuard guard(lock_);
        const unsigned lost = PutInto(pending_, commands);
        isPending_.store(true, std::memory_order_release);
        return lost;
    }
    /// The same.  Thread: audio.
    unsigned PutFromAudio(std::span<const OscCommand> commands) noexcept TAV_NONBLOCKING {
        return PutInto(fromAudio_.box, commands);
    }

    /// Calls `run(command)` for at most `most` commands in their order; the rest is for the next
    /// time. What cannot be had without waiting stays where it is.  Thread: audio.
    template <class Run>
    void RunInAudio(std::size_t most, const Run& run) noexcept TAV_NONBLOCKING {
        if (taken_.IsDone() && isPending_.load(std::memory_order_acquire) && lock_.TryLock()) {
            Take();
            lock_.Unlock();
        }
        taken_.RunSome(most, run);
        fromAudio_.RunSome(most, run);
    }
    /// The same for all that waits, when there is no audio thread.  Thread: control, one at a time.
    template <class Run>
    void RunAll(const Run& run) {
        std::size_t all = kCapacity;
        taken_.RunSome(all, run);
        {
            const ControlGuard guard(lock_);
            Take();
        }
        all = kCapacity;
        taken_.RunSome(all, run);
    }

private:
    struct Course {
        explicit Course(std::size_t capacity) : box(capacity) {}
        bool IsDone() const noexcept TAV_NONBLOCKING { return next == box.Commands().size(); }

        template <class Run>
        void RunSome(std::size_t& most, const Run& run) noexcept TAV_NONBLOCKING {
            const auto commands = box.Commands();
            for (; next < commands.size() && most > 0; ++next) {
                if (commands[next].route == OscCommand::kVoid) continue;
                run(commands[next]);
                --most;
            }
            if (!IsDone()) return;
            box.Clear();
            next = 0;
        }

        OscBox box;
        std::size_t next = 0;  // to be run
    };

    static unsigned PutInto(OscBox& box,
                            std::span<const OscCommand> commands) noexcept TAV_NONBLOCKING {
        unsigned lost = 0;
        for (const OscCommand& command : commands) {
            if (box.Put(command) != OscBox::Outcome::Kept) ++lost;
        }
        return lost;
    }

    void Take() noexcept TAV_NONBLOCKING TAV_REQUIRES(lock_) {
        std::swap(taken_.box, pending_);
        isPending_.store(false, std::memory_order_relaxed);
    }

    ControlLock lock_;
    OscBox pending_ TAV_GUARDED_BY(lock_){kCapacity};
    std::atomic<bool> isPending_ = false;
    Course taken_{kCapacity};
    Course fromAudio_{kAudioCapacity};
};

}  // namespace tav
