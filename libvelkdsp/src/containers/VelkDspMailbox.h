// SPDX-License-Identifier: MIT
// A queue from a thread that must not wait to one that may.
//
// The writer neither waits nor allocates. Every record has a key that names its subject. When the
// queue is full, a record replaces the newest waiting one with the same key, so that the latest
// record of each subject arrives; if there is none, it is dropped and the writer is told.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

namespace tav {

/// A queue of records, each a key and a few items. One thread puts; one thread at a time takes.
/// @tparam Key   trivially copyable, comparable
/// @tparam Item  trivially copyable
template <class Key, class Item>
class Mailbox {
    static_assert(std::is_trivially_copyable_v<Key> && std::is_trivially_copyable_v<Item>);

public:
    /// Capacity: number of records, of items in all records together, of items in one record.
    struct Room {
        unsigned records = 0;
        std::size_t items = 0;
        std::size_t longest = 0;
    };
    enum class WhenFull : std::uint8_t { Replace, Drop };
    enum class Outcome : std::uint8_t { Kept, Replaced, Dropped };

    /// Throws: std::bad_alloc.
    // One slot, and the chunks of one longest record, beyond the capacity: they are needed when the
    // record to be replaced is just being taken.
    explicit Mailbox(const Room& room)
        : room_(room),
          slots_(room.records + 1),
          chunks_(NumChunks(room.items) + NumChunks(room.longest)),
          numFree_(chunks_.size()) {
        taken_.reserve(room.longest);
    }

    /// Thread: any.
    bool IsEmpty() const noexcept {
        return read_.load(std::memory_order_acquire) == written_.load(std::memory_order_acquire);
    }

    /// Thread: the writer.
    Outcome Put(const Key& key, std::span<const Item> items, WhenFull whenFull) noexcept {
        const unsigned end = written_.load(std::memory_order_relaxed);
        const unsigned begin = read_.load(std::memory_order_acquire);
        if (end - begin < room_.records && Append(key, items, Reserve::Kept)) return Outcome::Kept;
        if (whenFull == WhenFull::Drop) return Outcome::Dropped;
        for (unsigned place = end; place != begin; --place) {
            Slot& slot = slots_[(place - 1) % slots_.size()];
            if (!(slot.key == key)) continue;
            State found = State::Ready;
            if (!slot.state.compare_exchange_strong(found, State::Writing)) {
                return Append(key, items, Reserve::Used) ? Outcome::Kept : Outcome::Dropped;
            }
            const bool isWritten = Write(slot, items, Reserve::Kept);
            slot.state.store(State::Ready);
            return isWritten ? Outcome::Replaced : Outcome::Dropped;
        }
        return Outcome::Dropped;
    }

    /// Removes the oldest record and calls `use(key, items)` with a copy, which is valid until the
    /// next call.
    /// @return false: the queue is empty, or the writer is just replacing the oldest record
    /// Thread: one at a time, not the writer.
    template <class Use>
    bool Take(const Use& use) {
        const unsigned begin = read_.load(std::memory_order_relaxed);
        if (begin == written_.load(std::memory_order_acquire)) return false;
        Slot& slot = slots_[begin % slots_.size()];
        State found = State::Ready;
        if (!slot.state.compare_exchange_strong(found, State::Taking)) return false;
        const Key key = slot.key;
        taken_.clear();
        for (std::size_t chunk = slot.firstChunk; taken_.size() < slot.count;) {
            const auto& items = chunks_[chunk].items;
            const std::size_t count = std::min(items.size(), slot.count - taken_.size());
            taken_.insert(taken_.end(), items.begin(), items.begin() + Signed(count));
            chunk = chunks_[chunk].next;
        }
        Release(slot);
        slot.state.store(State::Free);
        read_.store(begin + 1, std::memory_order_release);
        use(key, std::span<const Item>(taken_));
        return true;
    }

private:
    enum class State : std::uint8_t { Free, Writing, Ready, Taking };
    enum class Reserve : std::uint8_t { Kept, Used };
    static constexpr std::size_t kItemsOfAChunk = 8;

    struct Slot {
        std::atomic<State> state = State::Free;
        Key key{};
        std::size_t count = 0;       // items
        std::size_t firstChunk = 0;  // of NumChunks(count)
    };
    struct Chunk {
        std::atomic<bool> isUsed = false;
        std::size_t next = 0;
        std::array<Item, kItemsOfAChunk> items{};
    };

    static constexpr std::size_t NumChunks(std::size_t items) noexcept {
        return (items + kItemsOfAChunk - 1) / kItemsOfAChunk;
    }
    static constexpr std::ptrdiff_t Signed(std::size_t count) noexcept {
        return static_cast<std::ptrdiff_t>(count);
    }

    /// Thread: the one that owns the slot.
    void Release(Slot& slot) noexcept {
        const std::size_t count = NumChunks(slot.count);
        std::size_t chunk = slot.firstChunk;
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t next = chunks_[chunk].next;
            chunks_[chunk].isUsed.store(false, std::memory_order_release);
            chunk = next;
        }
        slot.count = 0;
        numFree_.fetch_add(count, std::memory_order_release);
    }

    /// Marks a free chunk as used and returns it. Thread: the writer. @pre  there is a free chunk
    std::size_t UseChunk() noexcept {
        while (chunks_[nextChunk_].isUsed.load(std::memory_order_acquire)) {
            nextChunk_ = (nextChunk_ + 1) % chunks_.size();
        }
        chunks_[nextChunk_].isUsed.store(true, std::memory_order_relaxed);
        return nextChunk_;
    }

    /// Fills a slot that the writer owns. Without room returns false, with nothing changed.
    bool Write(Slot& slot, std::span<const Item> items, Reserve reserve) noexcept {
        if (items.size() > room_.longest) return false;
        const std::size_t kept = reserve == Reserve::Kept ? NumChunks(room_.longest) : 0;
        const std::size_t free = numFree_.load(std::memory_order_acquire) + NumChunks(slot.count);
        if (free < NumChunks(items.size()) + kept) return false;
        Release(slot);
        numFree_.fetch_sub(NumChunks(items.size()), std::memory_order_relaxed);
        std::size_t* link = &slot.firstChunk;
        for (auto rest = items; !rest.empty();) {
            const auto part = rest.first(std::min(rest.size(), kItemsOfAChunk));
            *link = UseChunk();
            Chunk& chunk = chunks_[*link];
            std::ranges::copy(part, chunk.items.begin());
            link = &chunk.next;
            rest = rest.subspan(part.size());
        }
        slot.count = items.size();
        return true;
    }

    bool Append(const Key& key, std::span<const Item> items, Reserve reserve) noexcept {
        const unsigned end = written_.load(std::memory_order_relaxed);
        if (end - read_.load(std::memory_order_acquire) >= slots_.size()) return false;
        Slot& slot = slots_[end % slots_.size()];
        if (!Write(slot, items, reserve)) return false;
        slot.key = key;
        slot.state.store(State::Ready);
        written_.store(end + 1, std::memory_order_release);
        return true;
    }

    Room room_;
    std::vector<Slot> slots_;
    std::vector<Chunk> chunks_;
    std::atomic<std::size_t> numFree_;  // chunks
    std::size_t nextChunk_ = 0;         // where the writer's search for a free chunk begins
    std::vector<Item> taken_;           // used by Take only
    // Numbers of records since the start.
    std::atomic<unsigned> written_ = 0;
    std::atomic<unsigned> read_ = 0;
};

}  // namespace tav
