// SPDX-License-Identifier: MIT
// Which thread a caller counts as, and what caused its work.
#include "ApiThreadState.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>

namespace HostApi {
namespace {

const std::thread::id kMainThread =
    std::this_thread::get_id();  // the thread that loads the library
thread_local std::optional<ThreadKind> assumedKind;
thread_local Cause currentCause;
std::atomic<int> lastInAudio = 0;  // the latest action that sent a message in the audio interrupt

Cause Joined(const Cause& a, const Cause& b) {
    if (a.first == 0 || b.first == 0) return a.first == 0 ? b : a;
    return {std::min(a.first, b.first), std::max(a.last, b.last)};
}

}  // namespace

void SetCause(const Cause& cause) { currentCause = cause; }

Cause CurrentCause() { return currentCause; }

PutOffCause PutOffCause::Now() {
    PutOffCause now;
    now.cause_ = currentCause;
    now.isOfAudio_ = CurrentThreadKind() == ThreadKind::Audio;
    return now;
}

void PutOffCause::Add(const PutOffCause& before) {
    cause_ = Joined(cause_, before.cause_);
    isOfAudio_ |= before.isOfAudio_;
}

Cause PutOffCause::AtWork() const {
    const int last = lastInAudio;
    return isOfAudio_ ? Joined(cause_, {last, last}) : cause_;
}

ThreadKind CurrentThreadKind() {
    if (assumedKind) return *assumedKind;
    return std::this_thread::get_id() == kMainThread ? ThreadKind::Main : ThreadKind::Scheduler;
}

ThreadScope::ThreadScope(ThreadKind kind)
    : previous_(CurrentThreadKind()),
      wasSet_(assumedKind.has_value()) {
    assumedKind = kind;
    if (kind == ThreadKind::Audio) lastInAudio = currentCause.last;
}

ThreadScope::~ThreadScope() { assumedKind = wasSet_ ? std::optional(previous_) : std::nullopt; }

}  // namespace HostApi

using namespace HostApi;

namespace {

bool InScheduler() {
    const ThreadKind kind = CurrentThreadKind();
    return kind == ThreadKind::Scheduler || kind == ThreadKind::Audio;
}

bool InAudio() {
    const ThreadKind kind = CurrentThreadKind();
    return kind == ThreadKind::Audio || kind == ThreadKind::Perform;
}

}  // namespace

max_long isr() { return InScheduler() ? 1 : 0; }

short systhread_ismainthread() { return CurrentThreadKind() == ThreadKind::Main ? 1 : 0; }

short systhread_istimerthread() { return InScheduler() ? 1 : 0; }

short systhread_isaudiothread() { return InAudio() ? 1 : 0; }
