// SPDX-License-Identifier: MIT
// Through here every message and attribute reaches an object, one at a time.
//
// They come from the main thread, from the scheduler, and, where a patcher runs its scheduler in
// the audio interrupt, from the audio thread. The first two wait for each other. The audio thread
// never waits: what cannot be done at once is kept and done a moment later, off the audio thread
// where there is a way to leave it.
#pragma once

#include "max/VelkMaxAtoms.h"
#include "max/VelkMaxText.h"

#include <array>
#include <atomic>
#include <mutex>

namespace VelkMax {

/// One call of a message or of an attribute's setter. `run` lets nothing escape.
struct Letter {
    using Run = void (*)(void* record, t_symbol* name, Atoms atoms);
    Run run = nullptr;
    t_symbol* name = nullptr;
    Atoms atoms{};
};

/// Letters that wait, with copies of their atoms. One thread keeps, one at a time takes.
class LetterBox {
public:
    bool IsEmpty() const noexcept {
        return read_.load(std::memory_order_acquire) == written_.load(std::memory_order_acquire);
    }
    /// False: no room.  No allocation.
    bool Keep(const Letter& letter) noexcept;
    /// Runs the oldest letter; false when there is none.
    bool RunOne(void* record);

private:
    static constexpr unsigned kLetters = 32;
    static constexpr unsigned kAtoms = 1024;  // the positions of 250 loudspeakers are one letter

    std::array<Letter, kLetters> letters_;
    std::array<t_atom, kAtoms> atoms_{};
    unsigned numAtoms_ = 0;              // the writer's own; from 0 again whenever all is read
    std::atomic<unsigned> written_ = 0;  // letters, ever
    std::atomic<unsigned> read_ = 0;
};

class Door {
public:
    using Lock = std::unique_lock<std::recursive_mutex>;

    /// What the audio thread may do.
    enum class Pace : std::uint8_t {
        Prompt,  // short: at once when nobody else is inside and nothing waits
        Calm,    // may allocate, compute for long, post: never in the audio thread
    };

    /// @param record  begins with the object's header and outlives this
    explicit Door(void* record);
    ~Door();
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;

    /// Runs the letter alone, now or soon; letters of the audio thread keep their order. Then
    /// announces what changed, with nobody inside, so that a client may ask back.  Thread: any
    void Enter(const Letter& letter, Pace pace);

    /// For what Max itself asks of the object.  Thread: not audio.
    [[nodiscard]] Lock Wait() const { return Lock(mutex_); }
    /// Empty-handed where the audio thread would have to wait.  Thread: any
    [[nodiscard]] Lock Ask() const;

    /// An attribute has another value now: its clients, such as inspectors, are told once the
    /// caller has left. What the audio thread changes is collected and told a few times a second.
    /// @param attribute  its name.  Thread: any, inside
    void Changed(t_symbol* attribute) noexcept;

    /// Whether the calling thread may not post.  Thread: any
    bool KeepsLines() const noexcept { return systhread_isaudiothread() != 0; }
    /// Keeps a console line until a thread comes that may post it. Of a flood the first are kept.
    /// Thread: any
    void KeepLine(ConsoleRow row, const char* text) const noexcept;

private:
    static constexpr double kAnnounceMs = 40;

    struct Line {
        enum State : unsigned { Free, Written, Ready };
        std::atomic<State> state = Free;
        ConsoleRow row = nullptr;
        char text[kKeptLineSize] = "";
    };

    bool HasNews() const noexcept;
    void RunInside(const Letter& letter, Lock lock);
    void RunWaiting();
    void PostLines();
    void Announce();
    void CatchUp();
    static void Tick(void* door) noexcept;
    static void RunDeferred(void*, t_symbol*, short, t_atom* door) noexcept;

    void* record_;
    mutable std::recursive_mutex mutex_;
    int depth_ = 0;  // of callers inside each other; under the mutex
    LetterBox letters_;
    std::array<std::atomic<t_symbol*>, 40> changed_{};  // more than an object has attributes
    mutable std::array<Line, 8> lines_;
    std::atomic<bool> isAnnouncingSoon_ = false;
    t_clock* clock_;
};

}  // namespace VelkMax
