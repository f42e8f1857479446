// SPDX-License-Identifier: MIT
#include "ApiCallWatch.h"

#include "HostBridge.h"

#include <atomic>

namespace HostApi {
namespace {

std::atomic<CallWatch> callWatch = nullptr;

}  // namespace

void WatchCalls(CallWatch watch) { callWatch.store(watch, std::memory_order_relaxed); }

void NoteCall(const char* function) {
    if (const CallWatch watch = callWatch.load(std::memory_order_relaxed)) watch(function);
}

}  // namespace HostApi
