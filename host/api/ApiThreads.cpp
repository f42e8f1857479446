// SPDX-License-Identifier: MIT
// Deferral to the main thread, queue elements, critical regions.
#include "ApiThreads.h"

#include "ApiAtomText.h"
#include "ApiFaults.h"
#include "ApiObjects.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

struct t_critical_region {
    std::recursive_mutex mutex;
};

namespace HostApi {
namespace {

struct Work {
    WorkKey key;
    PutOffCause cause;
    Target target;
    std::function<void()> run;
};

struct Queue {
    std::mutex mutex;
    std::deque<Work> waiting;
};

Queue& MainQueue() {
    static auto& queue = *new Queue;
    return queue;
}

struct QueueElement {
    void* object;
    method function;
};

/// Removes queued work whose key has this object.
void ForgetQueued(const void* object) {
    Queue& queue = MainQueue();
    const std::lock_guard lock(queue.mutex);
    std::erase_if(queue.waiting, [object](const Work& w) { return w.key.object == object; });
}

thread_local int messagesAround = 0;  // how many messages this thread is inside of

using DeferredFunction = void(void*, t_symbol*, short, t_atom*);

/// Calls at once when this is the main thread and not `always`; else queues the call with a copy of
/// the atoms.
void Defer(void* x,
           method function,
           t_symbol* s,
           std::span<const t_atom> atoms,
           QueueEnd end,
           bool always) {
    RefusePerform("defer");
    auto work = [x, function, s, copy = std::vector(atoms.begin(), atoms.end())]() mutable {
        const auto count = static_cast<short>(copy.size());
        MaxApi::FromMethod<DeferredFunction>(function)(x, s, count, copy.data());
    };
    if (!always && CurrentThreadKind() == ThreadKind::Main) {
        work();
    } else {
        Enqueue({x, nullptr}, x, end, std::move(work));
    }
}

}  // namespace

void Enqueue(
    const WorkKey& key, const void* x, QueueEnd end, std::function<void()> work, bool collapse) {
    const Target target = TargetOf(x);
    Queue& queue = MainQueue();
    const std::lock_guard lock(queue.mutex);
    PutOffCause cause = PutOffCause::Now();
    if (collapse)
        std::erase_if(queue.waiting, [&](const Work& w) {
            if (w.key == key) cause.Add(w.cause);
            return w.key == key;
        });
    if (end == QueueEnd::Front) {
        queue.waiting.push_front({key, cause, target, std::move(work)});
    } else {
        queue.waiting.push_back({key, cause, target, std::move(work)});
    }
}

std::size_t RunDeferred() {
    Queue& queue = MainQueue();
    std::size_t count = 0;
    std::unique_lock lock(queue.mutex);
    // Takes one item at a time, so that work which is removed with its object is still in the
    // queue. Work that is queued meanwhile stays for the next call.
    for (std::size_t left = queue.waiting.size(); left > 0 && !queue.waiting.empty(); --left) {
        const Work work = std::move(queue.waiting.front());
        queue.waiting.pop_front();
        lock.unlock();
        const ThreadScope main(ThreadKind::Main);
        const CauseScope cause(work.cause);
        const int around = std::exchange(messagesAround, 0);
        if (CanReach(work.target)) work.run();
        messagesAround = around;
        ++count;
        lock.lock();
    }
    return count;
}

bool InMessage() { return messagesAround > 0; }

MessageScope::MessageScope() { ++messagesAround; }

MessageScope::~MessageScope() { --messagesAround; }

}  // namespace HostApi

using namespace HostApi;

void* defer(void* x, method fn, t_symbol* s, short argc, t_atom* argv) {
    Defer(x, fn, s, Atoms(argc, argv), QueueEnd::Front, false);
    return nullptr;
}

void* defer_medium(void* x, method fn, t_symbol* s, short argc, t_atom* argv) {
    Defer(x, fn, s, Atoms(argc, argv), QueueEnd::Back, false);
    return nullptr;
}

void* defer_low(void* x, method fn, t_symbol* s, short argc, t_atom* argv) {
    Defer(x, fn, s, Atoms(argc, argv), QueueEnd::Back, true);
    return nullptr;
}

void* defer_front(void* x, method fn, t_symbol* s, short argc, t_atom* argv) {
    Defer(x, fn, s, Atoms(argc, argv), QueueEnd::Front, true);
    return nullptr;
}

// ---- Queue elements: set several times before they run, they run once

void* qelem_new(void* x, method fn) { return new QueueElement{x, fn}; }

namespace {

void SetElement(t_qelem* q, QueueEnd end) {
    RefusePerform("qelem_set");
    auto* const element = static_cast<QueueElement*>(q);
    Enqueue(
        {element, nullptr}, element->object, end,
        [function = element->function, x = element->object] { function(x); }, true);
}

}  // namespace

void qelem_set(t_qelem* q) { SetElement(q, QueueEnd::Back); }

void qelem_front(t_qelem* q) { SetElement(q, QueueEnd::Front); }

void qelem_unset(t_qelem* q) { ForgetQueued(q); }

void qelem_free(t_qelem* q) {
    ForgetQueued(q);
    delete static_cast<QueueElement*>(q);
}

// ---- Critical regions

namespace {

/// The region of a handle; 0 is the region that separates main thread and scheduler.
t_critical_region& Region(t_critical c) {
    static auto& global = *new t_critical_region;
    return c ? *c : global;
}

}  // namespace

void critical_new(t_critical* c) { *c = new t_critical_region; }

void critical_enter(t_critical c) { Region(c).mutex.lock(); }

void critical_exit(t_critical c) { Region(c).mutex.unlock(); }

short critical_tryenter(t_critical c) { return Region(c).mutex.try_lock() ? 0 : 1; }

void critical_free(t_critical c) { delete c; }
