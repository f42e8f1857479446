// SPDX-License-Identifier: MIT
#include "max/VelkMaxDoor.h"

#include "max/VelkMaxDoorHandle.h"
#include "max/VelkMaxMethod.h"
#include "max/VelkMaxRestoring.h"
#include "max/VelkMaxSymbols.h"
#include "max/VelkMaxTexts.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace VelkMax {

namespace {

bool InAudioThread() noexcept { return systhread_isaudiothread() != 0; }

/// How long after it was put off each duty is done, milliseconds.
constexpr double kDelaysMs[] = {0, 40, 1000, 100};

}  // namespace

// ---- Life

Door::Door(void* record)
    : record_(record),
      audioLines_({kAudioLines, kAudioLines * kKeptLineSize, kKeptLineSize}),
      handle_(Handle::Of(*this)),
      worker_(this, [](void* door) { qelem_set(static_cast<Door*>(door)->qelem_); }) {
    Symbols();
    clocks_[0].clock = clock_new(&handle_, AsMethod(&Ring<Duty::CarryOutLetters>));
    clocks_[1].clock = clock_new(&handle_, AsMethod(&Ring<Duty::Announce>));
    clocks_[2].clock = clock_new(&handle_, AsMethod(&Ring<Duty::ReportLosses>));
    clocks_[3].clock = clock_new(&handle_, AsMethod(&Ring<Duty::Remind>));
    qelem_ = qelem_new(&handle_, AsMethod(&Serve));
    const auto isMade = [](const Clock& clock) { return clock.clock != nullptr; };
    if (qelem_ != nullptr && std::ranges::all_of(clocks_, isMade)) return;
    Close();
    throw std::bad_alloc();
}

Door::~Door() { Close(); }

void Door::Open(std::size_t longestLetter, void (*reminder)(void* record)) {
    reminder_ = reminder;
    const std::size_t longest = std::max(kLongestLetter, longestLetter);
    letters_.emplace(tav::Mailbox<LetterKey, t_atom>::Room{
        kLetters, std::max(kLetterAtoms, 4 * longest), longest});
    state_ = State::Open;
}

void Door::Close() noexcept {
    if (state_.exchange(State::Closed) == State::Closed) return;
    handle_.Release();
    while (visitors_ > 0) std::this_thread::yield();
    worker_.Join();  // nobody who comes late waits at the lock for so long
    {
        const Visit last(*this);
        worker_.Close();
        errands_.clear();
        CollectAudioLines();
    }
    for (Clock& clock : clocks_) {
        if (clock.clock != nullptr) object_free(clock.clock);
    }
    if (qelem_ != nullptr) qelem_free(qelem_);
    letters_.reset();
}

// ---- Coming and going

Door::Visit::Visit(Door& door, Patience patience) TAV_UNCHECKED : door_(door) {
    ++door.visitors_;
    isInside_ = door.Arrive(patience);
}

Door::Visit::~Visit() TAV_UNCHECKED {
    if (isInside_) door_.Leave();
    --door_.visitors_;
}

bool Door::Arrive(Patience patience) {
    const bool inAudio = InAudioThread();
    if (inAudio && patience == Patience::WaitsOutsideAudio) {
        if (!lock_.TryLock()) return false;
    } else {
        lock_.Lock();
    }
    holder_ = std::this_thread::get_id();
    return true;
}

void Door::AssertInside() const { assert(IsInside()); }

void Door::CollectAudioLines() {
    while (audioLines_.Take([this](ConsoleRow row, std::span<const char> text) {
        AssertInside();
        Say(row, {text.data(), text.size()});
    })) {}
}

void Door::Leave() {
    const std::vector<Line> said = std::exchange(said_, {});
    const CutLine cutLine = std::exchange(cutLine_, {});
    const bool hasNews = changes_.numAttributes > 0 || changes_.isOfState;
    holder_ = std::thread::id();
    lock_.Unlock();
    auto* const object = static_cast<t_object*>(record_);
    for (const Line& line : said) line.row(object, "%s", line.text.c_str());
    if (cutLine.row != nullptr) cutLine.row(object, "%s", cutLine.text.data());
    if (hasNews) Set(Duty::Announce);
}

void Door::Enter(const Letter& letter) {
    using Pace = Letter::Pace;
    const bool inAudio = InAudioThread();
    const bool isForInside = letter.pace == Pace::Prompt || letter.pace == Pace::Calm;
    if (!inAudio && !isForInside) {
        if (letter.pace == Pace::InMain && systhread_ismainthread() == 0) return SendToMain(letter);
        return letter.run(record_, letter.name, letter.atoms);
    }
    if (!inAudio) {
        const Visit inside(*this);
        CollectAudioLines();  // they are older than what the letter has to say
        if (state_ != State::Closed) letter.run(record_, letter.name, letter.atoms);
        return;
    }
    if (letter.pace == Pace::Prompt && !HasLetters()) {
        if (const Visit inside(*this, Patience::WaitsOutsideAudio); inside) {
            return letter.run(record_, letter.name, letter.atoms);
        }
    }
    KeepLetter(letter);
}

// ---- Letters

bool Door::HasLetters() const noexcept {
    // In this order: a letter is marked as being carried out before it leaves the box.
    return letters_ && (!letters_->IsEmpty() || isCarryingOut_);
}

void Door::KeepLetter(const Letter& letter) noexcept {
    if (state_ != State::Open || !letters_) return;
    LetterKey key{letter.run, letter.pace, letter.name, 0, nullptr};
    if (letter.numSubjectAtoms > 0 && letter.atoms.IsLong(0)) key.index = letter.atoms.Long(0);
    if (letter.numSubjectAtoms > 1 && letter.atoms.IsSymbol(1)) {
        key.property = letter.atoms.Symbol(1);
    }
    using Box = tav::Mailbox<LetterKey, t_atom>;
    const auto outcome = letters_->Put(key, letter.atoms.Span(), Box::WhenFull::Replace);
    if (outcome == Box::Outcome::Dropped) {
        ++numLost_;
        Set(Duty::ReportLosses);
    }
    Set(Duty::CarryOutLetters);
}

bool Door::CarryOutOneLetter() {
    const Visit inside(*this);
    CollectAudioLines();
    // Whoever is outside in the middle of a letter goes on with those behind it himself.
    if (isCarryingOut_ || !letters_) return false;
    isCarryingOut_ = isLate_ = true;
    const bool isTaken =
        letters_->Take([this](const LetterKey& key, std::span<const t_atom> atoms) {
            const Letter letter{key.run, key.pace, key.name, Atoms(atoms)};
            if (key.pace == Letter::Pace::Prompt || key.pace == Letter::Pace::Calm) {
                letter.run(record_, letter.name, letter.atoms);
            } else {
                StepOutside([&] { Enter(letter); });
            }
        });
    isCarryingOut_ = isLate_ = false;
    return isTaken;
}

void Door::ReportLosses() {
    if (const int numLost = numLost_.exchange(0); numLost > 0) {
        Warn(static_cast<t_object*>(record_), kLettersLost, numLost);
    }
    if (const int numOutrun = numOutrun_.exchange(0); numOutrun > 0) {
        Warn(static_cast<t_object*>(record_), kMessagesLost, numOutrun);
    }
}

void Door::CountOutrun(int count) noexcept {
    numOutrun_ += count;
    Set(Duty::ReportLosses);
}

// ---- Changes

void Door::NoteChange(t_symbol* attribute) noexcept {
    if (state_ != State::Open) return;
    // The audio thread restores nothing, and is spared a look at what belongs to a thread.
    if (InAudioThread() || !RestoringState::IsByClient()) changes_.isOfState = true;
    if (attribute == nullptr) return;
    const auto known = std::span(changes_.attributes).first(changes_.numAttributes);
    if (std::ranges::find(known, attribute) != known.end()) return;
    if (known.size() < kMostChanges) changes_.attributes[changes_.numAttributes++] = attribute;
}

void Door::Changed(t_symbol* attribute) noexcept {
    AssertInside();
    NoteChange(attribute);
}

void Door::WasSet(t_symbol* attribute) noexcept {
    AssertInside();
    if (isLate_) return NoteChange(attribute);
    NoteChange(nullptr);
    const auto known = std::span(changes_.attributes).first(changes_.numAttributes);
    const auto place = std::ranges::find(known, attribute);
    if (place == known.end()) return;
    *place = known.back();
    --changes_.numAttributes;
}

void Door::Announce() {
    Changes changes;
    {
        const tav::ControlGuard guard(lock_);
        changes = std::exchange(changes_, {});
    }
    auto* const object = static_cast<t_object*>(record_);
    for (t_symbol* attribute : std::span(changes.attributes).first(changes.numAttributes)) {
        object_attr_touch(object, attribute);
    }
    if (changes.isOfState) object_notify(object, Symbols().modified, nullptr);
}

// ---- Console lines

bool Door::KeepsLines() const noexcept { return InAudioThread() || IsInside(); }

void Door::KeepLine(ConsoleRow row, std::string_view text) noexcept {
    if (!InAudioThread()) {
        AssertInside();
        return Say(row, text);
    }
    const char* const begin = text.data();
    const std::span line(begin, std::min(text.size(), kKeptLineSize));
    using Box = tav::Mailbox<ConsoleRow, char>;
    audioLines_.Put(row, line, Box::WhenFull::Drop);
    Set(Duty::Announce);
}

void Door::Say(ConsoleRow row, std::string_view text) noexcept {
    try {
        said_.push_back({row, std::string(text)});
    } catch (const std::bad_alloc&) {
        if (cutLine_.row != nullptr) return;
        cutLine_.row = row;
        const std::string_view head = text.substr(0, kKeptLineSize - 1);
        *std::ranges::copy(head, cutLine_.text.begin()).out = '\0';
    }
}

// ---- Clocks

void Door::Set(Duty duty) noexcept {
    if (state_ != State::Open) return;
    Clock& clock = clocks_[static_cast<std::size_t>(duty)];
    if (!clock.isSet.exchange(true)) {
        clock_fdelay(clock.clock, kDelaysMs[static_cast<std::size_t>(duty)]);
    }
}

void Door::Do(Duty duty) {
    clocks_[static_cast<std::size_t>(duty)].isSet = false;
    switch (duty) {
        case Duty::CarryOutLetters:
            while (CarryOutOneLetter()) continue;
            return;
        case Duty::Announce: {
            const Visit inside(*this);
            CollectAudioLines();
        }
            return Announce();
        case Duty::ReportLosses: return ReportLosses();
        case Duty::Remind:
            if (reminder_ != nullptr) reminder_(record_);
            return;
    }
}

template <Door::Duty kDuty>
void Door::Ring(void* handle) {
    Door* const door = static_cast<Handle*>(handle)->Knock();
    if (door == nullptr) return;
    if (!InAudioThread()) {
        door->Do(kDuty);
    } else {
        // The scheduler runs in the audio interrupt: the main thread is the only way out.
        door->clocks_[static_cast<std::size_t>(kDuty)].isDue = true;
        qelem_set(door->qelem_);
    }
    --door->visitors_;
}

}  // namespace VelkMax
