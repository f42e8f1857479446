// SPDX-License-Identifier: MIT
// Plays every panner under the run-time of the RealtimeSanitizer, which ends the process with a
// report when the audio thread allocates, frees, locks, waits, opens or prints. The compiler need
// not know of it: the run-time stands before the C library, and this program tells it when audio
// begins and ends.
#include "pan/QuiloKeywords.h"
#include "realtime/BusyPan.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <sys/wait.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the names of the run-time
extern "C" {
void __rtsan_init();
void __rtsan_realtime_enter();
void __rtsan_realtime_exit();
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using Quilo::Pan;

void* volatile kept = nullptr;  // from the optimiser

void Allocate() { kept = std::malloc(10); }
void Lock() {
    std::mutex mutex;
    const std::scoped_lock lock(mutex);
}

/// Whether a process survives the action, in its audio thread or outside of it.
bool Survives(void (*action)(), bool isAudio) {
    const pid_t child = fork();
    if (child == 0) {
        if (freopen("/dev/null", "w", stderr) == nullptr) _exit(EXIT_FAILURE);
        if (isAudio) __rtsan_realtime_enter();
        action();
        _exit(EXIT_SUCCESS);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

void Play(Pan::Type type, Tests::PanSize size) {
    for (int subtype = 0; subtype < Tests::kNumPanSubTypes; ++subtype) {
        Tests::BusyPan pan(type, static_cast<Pan::SubType>(subtype), size);
        const char* const effort = std::getenv("QUILO_EFFORT");
        const int changes = static_cast<int>(50 * (effort != nullptr ? std::atof(effort) : 1.0));
        Tests::PlayAmidChanges(pan, changes, [](const std::function<void()>& play) {
            __rtsan_realtime_enter();
            play();
            __rtsan_realtime_exit();
        });
    }
}

}  // namespace

int main() {
    __rtsan_init();
    int failed = 0;
    for (void (*sin)() : {Allocate, Lock}) {
        if (!Survives(sin, false) || Survives(sin, true)) ++failed;
    }
    std::printf("the run-time %s\n", failed == 0 ? "is at work" : "does not see what it should");
    for (int type = 0; type < Tests::kNumPanTypes; ++type) {
        for (const Tests::PanSize size : Tests::kPanSizes) Play(static_cast<Pan::Type>(type), size);
    }
    std::printf("%d passed, %d failed\n", 2 - failed + Tests::kNumPanTypes, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
