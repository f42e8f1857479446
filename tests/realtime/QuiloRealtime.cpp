// SPDX-License-Identifier: MIT
// Plays every panner under the run-time of the RealtimeSanitizer, which ends the process when the
// audio thread allocates, frees, locks, waits, opens or prints. The compiler need not know of it:
// the run-time stands before the C library, and this program tells it when audio begins and ends.
//
// Each scenario has a process of its own, so that one that dies does not end the others.
#include "pan/QuiloKeywords.h"
#include "realtime/BusyPan.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <sys/wait.h>
#include <thread>
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
using Scenario = std::function<void()>;

/// While it lives, its thread is the audio thread.
class RealTime {
public:
    RealTime() { __rtsan_realtime_enter(); }
    ~RealTime() { __rtsan_realtime_exit(); }
    RealTime(const RealTime&) = delete;
    RealTime& operator=(const RealTime&) = delete;
};

struct Ending {
    bool good = false;
    std::string errors;  // what it wrote to standard error
};

/// Runs the scenario in a child process, to its end or its death.
Ending RunApart(const Scenario& scenario) {
    std::array<int, 2> errors{};
    std::fflush(stdout);
    if (pipe(errors.data()) != 0) return {false, "no pipe"};
    const pid_t child = fork();
    if (child < 0) return {false, "no process"};
    if (child == 0) {
        dup2(errors[1], STDERR_FILENO);
        close(errors[0]);
        close(errors[1]);
        scenario();
        _exit(EXIT_SUCCESS);
    }
    close(errors[1]);
    Ending ending;
    std::array<char, 4096> text{};
    for (ssize_t size; (size = read(errors[0], text.data(), text.size())) > 0;) {
        ending.errors.append(text.data(), static_cast<std::size_t>(size));
    }
    close(errors[0]);
    int status = 0;
    ending.good = waitpid(child, &status, 0) == child && status == 0;
    return ending;
}

double Effort() {
    const char* const effort = std::getenv("QUILO_EFFORT");
    return effort != nullptr ? std::clamp(std::atof(effort), 0.1, 1e4) : 1.0;
}

/// One thread changes everything, another plays.
void PlayAmidChanges(Pan::Type type, Pan::SubType subtype, Tests::PanSize size) {
    Tests::BusyPan pan(type, subtype, size);
    std::atomic<bool> playing{false}, over{false};
    std::thread control([&, changes = static_cast<int>(100 * Effort())] {
        std::mt19937 random(3);
        while (!playing) std::this_thread::yield();
        for (int k = 0; k < changes; ++k) pan.Disturb(random);
        over = true;
    });
    do {
        const RealTime audio;
        playing = true;
        pan.Play();
    } while (!over);
    control.join();
}

Scenario PlayAllOf(Pan::Type type) {
    return [type] {
        for (const Tests::PanSize size : Tests::kPanSizes) {
            PlayAmidChanges(type, Pan::SubType::Direct, size);
        }
        for (int subtype = 0; subtype < Tests::kNumPanSubTypes; ++subtype) {
            PlayAmidChanges(type, static_cast<Pan::SubType>(subtype), {2, 2});
        }
    };
}

void* volatile kept = nullptr;  // from the optimiser

/// What must not be done, and the function that the report of the run-time names.
struct Sin {
    const char* function;
    Scenario scenario;
};

const Sin kSins[] = {
    {"malloc", [] { kept = std::malloc(10); }},
    {"pthread_mutex_lock",
     [] {
         std::mutex mutex;
         const std::scoped_lock lock(mutex);
     }},
};

/// The run-time lets the same pass outside, and ends the process inside with a report.
std::string CommitAndConfess(const Sin& sin) {
    const Ending outside = RunApart([&] { sin.scenario(); });
    if (!outside.good) return "dies outside of the audio thread too";
    const Ending inside = RunApart([&] {
        kept = std::malloc(10);
        const RealTime audio;
        sin.scenario();
    });
    const auto says = [&](const std::string& word) {
        return inside.errors.find(word) != std::string::npos;
    };
    if (inside.good) return "is not caught: the run-time is not at work";
    return says("Real-time violation") && says(sin.function) ? "" : inside.errors;
}

int failed = 0;
int passed = 0;

void Report(const std::string& name, const std::string& fault) {
    ++(fault.empty() ? passed : failed);
    std::printf("%s: %s\n", name.c_str(), fault.empty() ? "passed" : ("FAILED\n" + fault).c_str());
}

}  // namespace

int main() {
    __rtsan_init();
    for (const Sin& sin : kSins) {
        Report(std::string("the run-time catches ") + sin.function, CommitAndConfess(sin));
    }
    for (int number = 0; number < Tests::kNumPanTypes; ++number) {
        const auto type = static_cast<Pan::Type>(number);
        const Ending ending = RunApart(PlayAllOf(type));
        Report(std::string(Quilo::PanTypeKeywords().Print(type)) + " plays amid changes",
               ending.good ? "" : "died\n" + ending.errors);
    }
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
