// SPDX-License-Identifier: MIT
#include "max/VelkMaxWorker.h"

#include "max/VelkMaxMethod.h"

#include <utility>

namespace VelkMax {

void Worker::Start() noexcept {
    if (!computing_.empty() || added_.empty()) return;
    computing_ = std::exchange(added_, {});
    isComputed_ = false;
    const auto code = systhread_create(AsMethod(&Run), this, 0, 0, 0, &thread_);
    if (code == MAX_ERR_NONE) return;
    thread_ = nullptr;
    ComputeAll();
}

void* Worker::Run(void* worker) noexcept {
    auto& self = *static_cast<Worker*>(worker);
    self.ComputeAll();
    self.wake_(self.owner_);
    return nullptr;
}

void Worker::ComputeAll() noexcept {
    for (Computed& computed : computing_) {
        try {
            computed.work->Compute();
        } catch (...) {
            computed.fault = std::current_exception();
        }
    }
    isComputed_ = true;
}

std::vector<Worker::Computed> Worker::TakeComputed() noexcept {
    if (!isComputed_) return {};
    Join();
    isComputed_ = false;
    return std::exchange(computing_, {});
}

void Worker::Join() noexcept {
    unsigned result = 0;
    if (thread_ != nullptr) systhread_join(std::exchange(thread_, nullptr), &result);
}

void Worker::Close() noexcept {
    Join();
    computing_.clear();
    added_.clear();
}

}  // namespace VelkMax
