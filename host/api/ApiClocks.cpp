// SPDX-License-Identifier: MIT
// Clocks. They run as the scheduler thread when the host advances the time.
#include "ApiObjects.h"
#include "ApiThreads.h"

#include <cmath>
#include <limits>
#include <mutex>
#include <optional>
#include <vector>

namespace HostApi {
namespace {

constexpr double kNotSet = std::numeric_limits<double>::infinity();

struct Clock {
    t_object ob = {};
    void* object = nullptr;
    method function = nullptr;
    double dueMs = kNotSet;
    Target target;
    PutOffCause cause = {};

    static Clock* FromObject(t_object* object) { return reinterpret_cast<Clock*>(object); }
};

struct Time {
    std::mutex mutex;
    double nowMs = 0;
    std::vector<Clock*> clocks;  // in the order in which they were made
};

Time& TheTime() {
    static auto& time = *new Time;
    return time;
}

void ForgetClock(void* clock) {
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    std::erase(time.clocks, static_cast<Clock*>(clock));
}

Class& ClockClass() {
    static Class& type = []() -> Class& {
        Class& made = OwnClass<Clock>("clock");
        made.c_freefun = [](void* clock) -> void* {
            ForgetClock(clock);
            return nullptr;
        };
        return made;
    }();
    return type;
}

/// A copy of what a clock calls, since the clock may be freed just before its function runs.
struct Call {
    method function;
    void* object;
    Target target;
    PutOffCause cause;
};

/// Unsets the earliest clock that is due by `untilMs` and advances the time to it.
std::optional<Call> TakeDue(double untilMs) {
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    Clock* first = nullptr;
    for (Clock* clock : time.clocks)
        if (clock->dueMs <= untilMs && (!first || clock->dueMs < first->dueMs)) first = clock;
    if (!first) return {};
    time.nowMs = std::max(time.nowMs, first->dueMs);
    first->dueMs = kNotSet;
    return Call{first->function, first->object, first->target, first->cause};
}

}  // namespace

void AdvanceClocks(double ms) {
    const double until = systimer_gettime() + std::max(ms, 0.0);
    {
        const ThreadScope scheduler(ThreadKind::Scheduler);
        while (const auto call = TakeDue(until)) {
            const CauseScope cause(call->cause);
            if (CanReach(call->target)) call->function(call->object);
        }
    }
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    time.nowMs = std::max(time.nowMs, until);
}

}  // namespace HostApi

using namespace HostApi;

t_clock* clock_new(void* x, method fn) {
    auto* const clock = new Clock{{}, x, fn, kNotSet, TargetOf(x)};
    AdoptObject(&clock->ob, ClockClass());
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    time.clocks.push_back(clock);
    return clock;
}

void clock_fdelay(t_clock* c, double ms) {
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    auto& clock = *static_cast<Clock*>(c);
    PutOffCause cause = PutOffCause::Now();
    if (clock.dueMs != kNotSet) cause.Add(clock.cause);
    clock.cause = cause;
    clock.dueMs = time.nowMs + (ms > 0 ? ms : 0);
}

void clock_delay(t_clock* c, max_long ms) { clock_fdelay(c, ms); }

void clock_unset(t_clock* c) {
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    static_cast<Clock*>(c)->dueMs = kNotSet;
}

double systimer_gettime() {
    Time& time = TheTime();
    const std::lock_guard lock(time.mutex);
    return time.nowMs;
}
