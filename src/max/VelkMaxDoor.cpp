// SPDX-License-Identifier: MIT
#include "max/VelkMaxDoor.h"

#include "max/VelkMaxMethod.h"
#include "max/VelkMaxRestoring.h"

#include <algorithm>
#include <cstring>

namespace VelkMax {

// ---- Letters

bool LetterBox::Keep(const Letter& letter) noexcept {
    const unsigned written = written_.load(std::memory_order_relaxed);
    const unsigned waiting = written - read_.load(std::memory_order_acquire);
    if (waiting == 0) numAtoms_ = 0;
    const auto count = letter.atoms.Size();
    if (waiting == kLetters || count > kAtoms - numAtoms_) return false;
    t_atom* const copy = atoms_.data() + numAtoms_;
    std::ranges::copy(letter.atoms.Span(), copy);
    numAtoms_ += static_cast<unsigned>(count);
    letters_[written % kLetters] = {letter.run, letter.name,
                                    Atoms(std::span<const t_atom>(copy, count))};
    written_.store(written + 1, std::memory_order_release);
    return true;
}

bool LetterBox::RunOne(void* record) {
    const unsigned read = read_.load(std::memory_order_relaxed);
    if (read == written_.load(std::memory_order_acquire)) return false;
    const Letter& letter = letters_[read % kLetters];
    letter.run(record, letter.name, letter.atoms);
    read_.store(read + 1, std::memory_order_release);
    return true;
}

// ---- The door

Door::Door(void* record) : record_(record), clock_(clock_new(this, AsMethod(&Tick))) {}

Door::~Door() {
    if (clock_ != nullptr) object_free(clock_);
    PostLines();
}

Door::Lock Door::Ask() const {
    if (systhread_isaudiothread() == 0) return Wait();
    return Lock(mutex_, std::try_to_lock);
}

void Door::Enter(const Letter& letter, Pace pace) {
    if (systhread_isaudiothread() == 0) return RunInside(letter, Wait());
    if (pace == Pace::Prompt && letters_.IsEmpty()) {
        if (Lock lock = Ask()) return RunInside(letter, std::move(lock));
    }
    if (clock_ != nullptr && letters_.Keep(letter)) return clock_fdelay(clock_, 0);
    // A flood: to lose a message would be worse than to wait.
    RunWaiting();
    RunInside(letter, Wait());
}

void Door::RunInside(const Letter& letter, Lock lock) {
    if (!KeepsLines()) PostLines();  // they are older than what the letter has to say
    ++depth_;
    letter.run(record_, letter.name, letter.atoms);
    const bool isLast = --depth_ == 0;
    lock.unlock();
    if (!isLast) return;
    if (systhread_isaudiothread() == 0) {
        PostLines();
        return Announce();
    }
    if (clock_ == nullptr) return;  // told with the next message of another thread
    if (HasNews() && !isAnnouncingSoon_.exchange(true)) clock_fdelay(clock_, kAnnounceMs);
}

void Door::RunWaiting() {
    const Lock lock = Wait();
    ++depth_;
    while (letters_.RunOne(record_)) continue;
    --depth_;
}

// ---- Changes

void Door::Changed(t_symbol* attribute) noexcept {
    for (std::atomic<t_symbol*>& place : changed_) {
        t_symbol* found = nullptr;
        if (place.compare_exchange_strong(found, attribute) || found == attribute) return;
    }
}

void Door::Announce() {
    auto* const object = static_cast<t_object*>(record_);
    bool hasNews = false;
    for (std::atomic<t_symbol*>& place : changed_) {
        if (t_symbol* const attribute = place.exchange(nullptr)) {
            object_attr_touch(object, attribute);
            hasNews = true;
        }
    }
    if (hasNews) AnnounceState(object);
}

bool Door::HasNews() const noexcept {
    return std::ranges::any_of(changed_, [](const auto& name) { return name.load(); }) ||
           std::ranges::any_of(lines_, [](const Line& line) { return line.state == Line::Ready; });
}

// ---- Console lines

void Door::KeepLine(ConsoleRow row, const char* text) const noexcept {
    for (Line& line : lines_) {
        Line::State found = Line::Free;
        if (!line.state.compare_exchange_strong(found, Line::Written)) continue;
        line.row = row;
        std::ranges::copy_n(text, static_cast<std::ptrdiff_t>(std::strlen(text) + 1), line.text);
        line.state = Line::Ready;
        return;
    }
}

void Door::PostLines() {
    for (Line& line : lines_) {
        Line::State found = Line::Ready;
        if (!line.state.compare_exchange_strong(found, Line::Written)) continue;
        line.row(static_cast<t_object*>(record_), "%s", line.text);
        line.state = Line::Free;
    }
}

// ---- Off the audio thread

void Door::CatchUp() {
    PostLines();
    RunWaiting();
    Announce();
}

void Door::Tick(void* door) noexcept {
    Door& self = *static_cast<Door*>(door);
    self.isAnnouncingSoon_ = false;
    if (systhread_isaudiothread() == 0) return self.CatchUp();
    // The clock itself runs in the audio interrupt: the main thread is the only way out.
    if (self.letters_.IsEmpty() && !self.HasNews()) return;
    t_atom atom{};
    atom_setobj(&atom, door);
    defer_low(self.record_, AsMethod(&RunDeferred), nullptr, 1, &atom);
}

void Door::RunDeferred(void*, t_symbol*, short, t_atom* door) noexcept {
    static_cast<Door*>(atom_getobj(door))->CatchUp();
}

}  // namespace VelkMax
