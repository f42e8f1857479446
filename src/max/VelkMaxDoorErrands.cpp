// SPDX-License-Identifier: MIT
// What a door has to do in the main thread: duties that rang in the audio interrupt, errands, and
// what comes of long work.
#include "max/VelkMaxDoorHandle.h"
#include "max/VelkMaxHandlers.h"

#include <new>
#include <utility>

namespace VelkMax {

void Door::Serve(void* handle) {
    Door* const door = static_cast<Handle*>(handle)->Knock();
    if (door == nullptr) return;
    for (std::size_t duty = 0; duty < kNumDuties; ++duty) {
        if (door->clocks_[duty].isDue.exchange(false)) door->Do(static_cast<Duty>(duty));
    }
    // Those that are sent meanwhile are served next time.
    std::size_t left = door->NumErrands();
    void* const record = door->record_;
    --door->visitors_;
    // A dialog may take the object away: nobody waits for it, and the errands behind it are lost.
    while (Door* const still = static_cast<Handle*>(handle)->Knock()) {
        still->FinishLongWork();
        still->worker_.Start();
        still->FinishLongWork();  // at once, where Max has given no thread
        const std::optional<Errand> errand = left-- > 0 ? still->TakeErrand() : std::nullopt;
        --still->visitors_;
        if (!errand) return;
        Door* const servedBefore =
            std::exchange(served_, errand->pace == Letter::Pace::InMain ? still : nullptr);
        errand->run(record, errand->name, Atoms(std::span(errand->atoms)));
        served_ = servedBefore;
    }
}

void Door::SendToMain(const Letter& letter) noexcept { Send(letter, false); }

void Door::SendNext(Letter letter) noexcept {
    letter.pace = Letter::Pace::InMain;
    Send(letter, true);
}

void Door::Send(const Letter& letter, bool isNext) noexcept {
    try {
        const auto atoms = letter.atoms.Span();
        Errand errand{letter.run, letter.pace, letter.name, {atoms.begin(), atoms.end()}};
        const tav::ControlGuard guard(lock_);
        if (state_ == State::Closed) return;
        errands_.insert(isNext ? errands_.begin() : errands_.end(), std::move(errand));
        qelem_set(qelem_);
    } catch (const std::bad_alloc& failure) {
        Error(static_cast<t_object*>(record_), kOutOfMemory, failure.what());
    }
}

std::size_t Door::NumErrands() {
    const tav::ControlGuard guard(lock_);
    return errands_.size();
}

std::optional<Door::Errand> Door::TakeErrand() {
    const tav::ControlGuard guard(lock_);
    if (errands_.empty() || worker_.IsBusy()) return std::nullopt;
    std::optional errand(std::move(errands_.front()));
    errands_.pop_front();
    return errand;
}

// ---- Long work

void Door::CarryOut(std::unique_ptr<LongWork> work) {
    AssertInside();
    if (systhread_ismainthread() != 0 && served_ == this) return worker_.Add(std::move(work));
    StepOutside([&] { work->Compute(); });
    work->Finish();
}

namespace {

/// Through whose door lines are said.
struct DoorOwner {
    t_object* header;
    Door& door;

    friend t_object* MaxObjectOf(const DoorOwner& owner) { return owner.header; }
    Door& TheDoor() const { return door; }
};

}  // namespace

void Door::FinishLongWork() {
    const DoorOwner owner{static_cast<t_object*>(record_), *this};
    for (auto& [work, fault] : worker_.TakeComputed()) {
        const Visit inside(*this);
        Guarded(owner, &object_error, [&] {
            if (fault != nullptr) std::rethrow_exception(fault);
            work->Finish();
        });
        work.reset();
    }
}

}  // namespace VelkMax
