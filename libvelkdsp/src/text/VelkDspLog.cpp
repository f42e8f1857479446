// SPDX-License-Identifier: MIT
#include "text/VelkDspLog.h"

#include <algorithm>
#include <iostream>
#include <string>

#ifdef _WIN32
extern "C" __declspec(dllimport) void __stdcall OutputDebugStringA(const char* text);
#endif

namespace tav {
namespace {

void WriteToDebugger([[maybe_unused]] std::string_view message) {
#ifdef _WIN32
    OutputDebugStringA(("velkdsp >> " + std::string(message) + "\n").c_str());
#endif
}

}  // namespace

void Log(std::string_view message) {
    // One insertion, so that the lines of several threads are not interleaved.
    std::cerr << std::string(message) + "\n" << std::flush;
    WriteToDebugger(message);
    MaxConsoleNotifier::Instance().Notify(message);
}

MaxConsoleNotifier& MaxConsoleNotifier::Instance() {
    static MaxConsoleNotifier notifier;
    return notifier;
}

void MaxConsoleNotifier::AddListener(Listener& listener) {
    const std::scoped_lock guard(lock_);
    if (std::ranges::find(listeners_, &listener) == listeners_.end()) {
        listeners_.push_back(&listener);
    }
}

void MaxConsoleNotifier::RemoveListener(const Listener& listener) {
    const std::scoped_lock guard(lock_);
    std::erase(listeners_, &listener);
}

void MaxConsoleNotifier::Notify(std::string_view message) {
    const std::scoped_lock guard(lock_);
    // A copy, since a listener may change the list. One that was removed meanwhile is skipped.
    const std::vector<Listener*> walk = listeners_;
    for (Listener* listener : walk) {
        if (std::ranges::find(listeners_, listener) != listeners_.end()) {
            listener->LogMessage(message);
        }
    }
}

}  // namespace tav
