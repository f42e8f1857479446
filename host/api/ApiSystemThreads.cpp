// SPDX-License-Identifier: MIT
// Threads that modules make. They run freely; Settle waits for them.
#include "ApiFaults.h"
#include "ApiThreadState.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

struct t_systhread_record {
    std::thread thread;
};

namespace HostApi {
namespace {

struct ThreadCount {
    std::mutex mutex;
    std::condition_variable hasEnded;
    unsigned numRunning = 0;
    bool wasMade = false;  // one, since the last wait
};

// Never destroyed: threads may end while the process does.
ThreadCount& TheThreads() {
    static auto& threads = *new ThreadCount;
    return threads;
}

void NoteEnd() {
    ThreadCount& threads = TheThreads();
    const std::lock_guard lock(threads.mutex);
    if (--threads.numRunning == 0) threads.hasEnded.notify_all();
}

void RunThread(method entry, void* argument, const PutOffCause& cause) {
    {
        const ThreadScope own(ThreadKind::Module);
        const CauseScope scope(cause);
        MaxApi::FromMethod<void*(void*)>(entry)(argument);
    }
    NoteEnd();
}

}  // namespace

bool WaitForThreads() {
    ThreadCount& threads = TheThreads();
    std::unique_lock lock(threads.mutex);
    threads.hasEnded.wait(lock, [&] { return threads.numRunning == 0; });
    return std::exchange(threads.wasMade, false);
}

void Settle() {
    constexpr int kMostTurns = 256;
    RunDeferred();
    for (int turn = 1; turn < kMostTurns && WaitForThreads(); ++turn) RunDeferred();
}

}  // namespace HostApi

using namespace HostApi;

max_long systhread_create(
    method entry, void* arg, max_long, max_long, max_long, t_systhread* thread) {
    RefusePerform("systhread_create");
    if (InjectedFailure("systhread_create")) return MAX_ERR_GENERIC;
    {
        const std::lock_guard lock(TheThreads().mutex);
        ++TheThreads().numRunning;
        TheThreads().wasMade = true;
    }
    try {
        *thread = new t_systhread_record{std::thread(&RunThread, entry, arg, PutOffCause::Now())};
        return MAX_ERR_NONE;
    } catch (const std::exception&) {
        NoteEnd();
        return MAX_ERR_GENERIC;
    }
}

max_long systhread_join(t_systhread thread, unsigned* retval) {
    thread->thread.join();
    *retval = 0;
    delete thread;
    return MAX_ERR_NONE;
}
