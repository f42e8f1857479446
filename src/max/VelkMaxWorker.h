// SPDX-License-Identifier: MIT
// Work of errands that takes long, and the thread that does it, so that the main thread does not
// wait. What messages ask for is computed where they are carried out.
//
// The main thread adds work and starts the thread, which ends when all of that is computed. What
// comes of it is taken by the main thread again.
#pragma once

#include "ext.h"

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace VelkMax {

/// A change that takes long to compute, from the moment when it is asked for: what it needs is kept
/// in it. It is deleted inside the door, whether or not it has been computed or finished.
class LongWork {
public:
    LongWork() = default;
    virtual ~LongWork() = default;
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;

    /// The long part. It calls nothing of Max's.
    /// Thread: any, outside the door.  Throws: what it likes; Finish is not called then
    virtual void Compute() = 0;
    /// The short part, which puts into force what was computed.  Thread: inside the door
    virtual void Finish() = 0;
};

/// Long work that has nothing to put into force in the end.
class PlainWork final : public LongWork {
public:
    explicit PlainWork(std::function<void()> compute) : compute_(std::move(compute)) {}
    void Compute() override { compute_(); }
    void Finish() override {}

private:
    std::function<void()> compute_;
};

/// Pattern: (Add* Start TakeComputed*)* Close.  Thread: main.
class Worker {
public:
    struct Computed {
        std::unique_ptr<LongWork> work;
        std::exception_ptr fault{};  // what Compute has thrown
    };

    /// @param wake  called at the end of the thread: something can be taken
    Worker(void* owner, void (*wake)(void* owner)) : owner_(owner), wake_(wake) {}
    ~Worker() { Close(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Add(std::unique_ptr<LongWork> work) { added_.push_back({std::move(work)}); }
    /// Begins with what was added, unless an earlier start has not been taken back yet. Where Max
    /// gives no thread, the work is done before this returns.
    void Start() noexcept;
    /// Whether there is work that was not taken back yet.
    bool IsBusy() const noexcept { return !added_.empty() || !computing_.empty(); }
    /// All work of the last start, in its order; nothing while it is still being computed.
    std::vector<Computed> TakeComputed() noexcept;
    /// Waits for the thread.
    void Join() noexcept;
    /// Waits for the thread and drops all work.
    void Close() noexcept;

private:
    static void* Run(void* worker) noexcept;
    void ComputeAll() noexcept;

    void* owner_;
    void (*wake_)(void* owner);
    t_systhread thread_ = nullptr;
    std::vector<Computed> added_;
    std::vector<Computed> computing_;  // belongs to the thread until isComputed_ is true
    std::atomic<bool> isComputed_ = false;
};

}  // namespace VelkMax
