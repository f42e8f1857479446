// SPDX-License-Identifier: MIT
// Through here every message and attribute reaches an object, one at a time.
//
// They come from the main thread, from the scheduler, and, where a patcher runs its scheduler in
// the audio interrupt, from the audio thread. The first two wait for each other. The audio thread
// never waits: what cannot be done at once is kept and done a moment later, off the audio thread.
//
// Nothing of Max's is called while somebody is inside: console lines wait until he has left, and
// changes are announced later, together. Clients may therefore ask back at any time.
//
//   what waits            written by             told or done by, and when
//   letters               audio                  scheduler at its next tick, else main
//   lines of audio        audio                  the next message, or within 40 ms
//   said lines            whoever is inside      the same thread, when it has left
//   changes               whoever is inside      scheduler or main, at most every 40 ms
//   lost letters          audio                  scheduler or main, at most once a second
//   errands               any but audio          main, one after the other
//   long work             an errand              a thread of its own, while later errands wait
//   reminders             any                    scheduler or main, after 100 ms
//
// Pattern: Open, then anything, Close while all that visitors use still stands.
#pragma once

#include "containers/VelkDspMailbox.h"
#include "max/VelkMaxAtoms.h"
#include "max/VelkMaxText.h"
#include "max/VelkMaxWorker.h"
#include "processors/VelkDspControlLock.h"

#include <array>
#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace VelkMax {

/// One call of a message or of an attribute's setter. `run` lets nothing escape.
struct Letter {
    using Run = void (*)(void* record, t_symbol* name, Atoms atoms);
    /// Where it runs.
    enum class Pace : std::uint8_t {
        Prompt,   // inside; short: the audio thread does it itself when nothing is in its way
        Calm,     // inside; may allocate and compute for long: never in the audio thread
        Outside,  // with nobody held up, since it calls Max: never in the audio thread
        InMain,   // the same, in the main thread: for work on files, and what leads to long work
    };

    Run run = nullptr;
    Pace pace = Pace::Calm;
    t_symbol* name = nullptr;
    Atoms atoms{};
    /// How many of the first atoms say what the letter is about, such as the number of a source and
    /// the property: of letters about the same only the newest is worth keeping.  At most 2
    unsigned numSubjectAtoms = 0;
};

/// What a letter is about; two with the same key differ in their values only.
struct LetterKey {
    Letter::Run run = nullptr;
    Letter::Pace pace = Letter::Pace::Calm;
    t_symbol* name = nullptr;
    t_atom_long index = 0;
    t_symbol* property = nullptr;
    bool operator==(const LetterKey&) const = default;
};

class Door {
public:
    enum class Patience : std::uint8_t { Waits, WaitsOutsideAudio };

    class Visit;

    /// @param record  begins with the object's header and outlives this
    /// Throws: std::bad_alloc, also where Max has no clock left.
    explicit Door(void* record);
    ~Door();
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;

    /// From now on changes are announced and letters of the audio thread kept.
    /// @param longestLetter  atoms that the object needs; one that is longer than them and than
    /// 1024 atoms is lost when it comes from the audio thread
    /// @param reminder  what Remind puts off; lets nothing escape
    /// Throws: std::bad_alloc.
    void Open(std::size_t longestLetter, void (*reminder)(void* record) = nullptr);
    /// Ends all that was put off: letters and errands are dropped, no clock comes back. Waits for
    /// those who are inside; nobody enters any more.  Thread: main, once audio has let go.
    void Close() noexcept;

    /// Runs the letter where it belongs, now or soon; letters of the audio thread keep their order.
    /// Thread: any, not inside
    void Enter(const Letter& letter) TAV_EXCLUDES(lock_);

    /// Lets others in while `work` runs: for long work on copies.  Thread: inside, not audio
    template <class Work>
    void StepOutside(const Work& work);

    /// Computes with others let in, then finishes inside. An errand of the pace InMain does not
    /// wait for that: its work goes to a thread of its own, exceptions are said where it would be
    /// finished, and errands behind it are carried out after it.
    /// Throws: what the work throws.  Thread: inside, not audio
    void CarryOut(std::unique_ptr<LongWork> work);

    /// Runs the letter in the main thread, outside the door, once the current message is over:
    /// only then dialogs may open. Such errands run one after the other.
    /// Thread: any but audio, not inside
    void SendToMain(const Letter& letter) noexcept TAV_EXCLUDES(lock_);

    /// Sends the letter to the main thread as one of the pace InMain, before all that waits.
    /// Thread: main, not inside
    void SendNext(Letter letter) noexcept TAV_EXCLUDES(lock_);
    /// Whether there is long work that errands wait for.  Thread: main
    bool HasLongWork() const noexcept { return worker_.IsBusy(); }

    /// Whether the audio thread has left letters that are not carried out yet. Thread: audio
    bool HasLetters() const noexcept;

    /// Calls the reminder in a while, outside the door; several calls until then count as one.
    /// Thread: any
    void Remind() noexcept { Set(Duty::Remind); }

    /// An attribute has another value now and Max does not know of it.
    /// @param attribute  its name.  Thread: any, inside
    void Changed(t_symbol* attribute) noexcept;
    /// The same for an attribute that Max itself is setting. It tells the clients when the setter
    /// returns, so that nothing of this attribute is left to be announced, unless the setter is
    /// carried out later.  Thread: any, inside
    void WasSet(t_symbol* attribute) noexcept;

    /// So many messages came faster than they could be carried out and are lost; that is told once
    /// a second.  Thread: any
    void CountOutrun(int count) noexcept;

    /// Whether the calling thread is inside.  Thread: any
    bool IsInside() const noexcept { return holder_ == std::this_thread::get_id(); }
    /// Whether the calling thread may not post.  Thread: any
    bool KeepsLines() const noexcept;
    /// Whether a line beyond kKeptLineSize would be kept whole.  Thread: any
    static bool KeepsLongLines() noexcept { return systhread_isaudiothread() == 0; }
    /// Keeps a console line until it may be posted. Of a flood in the audio thread the first lines
    /// are kept, and cut at kKeptLineSize.  Thread: audio, or inside
    void KeepLine(ConsoleRow row, std::string_view text) noexcept;

private:
    // What may wait, at least: atoms of one letter, letters, atoms of all.
    static constexpr std::size_t kLongestLetter = 1024;
    static constexpr unsigned kLetters = 256;
    static constexpr std::size_t kLetterAtoms = 4096;
    static constexpr unsigned kAudioLines = 8;
    static constexpr std::size_t kMostChanges = 40;  // more than an object has attributes

    struct Line {
        ConsoleRow row = nullptr;
        std::string text;
    };
    /// The one line that can be kept without memory.
    struct CutLine {
        ConsoleRow row = nullptr;
        std::array<char, kKeptLineSize> text{};
    };
    struct Errand {
        Letter::Run run;
        Letter::Pace pace;
        t_symbol* name;
        std::vector<t_atom> atoms;
    };
    struct Changes {
        std::array<t_symbol*, kMostChanges> attributes{};
        std::size_t numAttributes = 0;
        bool isOfState = false;  // the whole value, as pattr sees it
    };

    enum class State : std::uint8_t { New, Open, Closed };

    /// What is put off, each with a clock of its own.
    enum class Duty : std::uint8_t { CarryOutLetters, Announce, ReportLosses, Remind };
    static constexpr std::size_t kNumDuties = 4;
    struct Clock {
        t_clock* clock = nullptr;
        std::atomic<bool> isSet = false;  // and its duty not done yet
        std::atomic<bool> isDue = false;  // it rang in the audio interrupt: main does the duty
    };
    /// What clocks and queue elements know: it outlives the door.
    struct Handle;

    bool Arrive(Patience patience) TAV_TRY_ACQUIRE(true, lock_);
    void Leave() TAV_RELEASE(lock_);
    /// For functions that the outside calls while it is inside, which no compiler can see there.
    void AssertInside() const TAV_ASSERT_HELD(lock_);
    /// What the audio thread has said is posted by this visit.
    void CollectAudioLines() TAV_REQUIRES(lock_);
    void Say(ConsoleRow row, std::string_view text) noexcept TAV_REQUIRES(lock_);
    void NoteChange(t_symbol* attribute) noexcept TAV_REQUIRES(lock_);
    void KeepLetter(const Letter& letter) noexcept;
    void Set(Duty duty) noexcept;
    void Do(Duty duty);
    bool CarryOutOneLetter() TAV_EXCLUDES(lock_);
    void Announce() TAV_EXCLUDES(lock_);
    void ReportLosses();
    void Send(const Letter& letter, bool isNext) noexcept TAV_EXCLUDES(lock_);
    std::size_t NumErrands() TAV_EXCLUDES(lock_);
    /// None while long work is under way.
    std::optional<Errand> TakeErrand() TAV_EXCLUDES(lock_);
    void FinishLongWork();

    template <Duty kDuty>
    static void Ring(void* handle);
    static void Serve(void* handle);

    void* record_;
    tav::ControlLock lock_;
    std::atomic<std::thread::id> holder_;  // of the lock
    std::atomic<int> visitors_ = 0;        // who enter, are inside or leave
    std::atomic<State> state_ = State::New;

    bool isLate_ TAV_GUARDED_BY(lock_) = false;  // what runs now is a letter that was kept
    // Somebody carries out letters, even while he is outside. Written inside.
    std::atomic<bool> isCarryingOut_ = false;
    void (*reminder_)(void* record) = nullptr;
    Changes changes_ TAV_GUARDED_BY(lock_);
    std::vector<Line> said_ TAV_GUARDED_BY(lock_);
    CutLine cutLine_ TAV_GUARDED_BY(lock_);
    std::deque<Errand> errands_ TAV_GUARDED_BY(lock_);

    std::optional<tav::Mailbox<LetterKey, t_atom>> letters_;
    tav::Mailbox<ConsoleRow, char> audioLines_;
    std::atomic<int> numLost_ = 0;    // letters
    std::atomic<int> numOutrun_ = 0;  // messages of other ways than letters

    Handle& handle_;
    std::array<Clock, kNumDuties> clocks_;
    t_qelem* qelem_ = nullptr;  // runs Serve in the main thread
    Worker worker_;             // used by the main thread only
    // Whose errand the main thread carries out; null when that one waits for its long work.
    static inline Door* served_ = nullptr;
};

/// Inside from its making to its end; what was said meanwhile is posted then. The compiler takes
/// every visit for one that got in: after WaitsOutsideAudio, ask.
class TAV_SCOPED_CAPABILITY Door::Visit {
public:
    explicit Visit(Door& door, Patience patience = Patience::Waits) TAV_ACQUIRE(door.lock_);
    ~Visit() TAV_RELEASE();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    /// False where the audio thread would have had to wait.
    explicit operator bool() const noexcept { return isInside_; }

private:
    Door& door_;
    bool isInside_;
};

template <class Work>
void Door::StepOutside(const Work& work) {
    struct Return {
        ~Return() TAV_UNCHECKED {
            door.Arrive(Patience::Waits);
            door.isLate_ = wasLate;
        }
        Door& door;
        bool wasLate;
    };
    AssertInside();
    const Return after{*this, std::exchange(isLate_, false)};
    Leave();
    work();
}

}  // namespace VelkMax
