// SPDX-License-Identifier: MIT
// The progress of a run, one line on standard error.
#pragma once

#include <chrono>

namespace Quilo::Host {

class Progress {
public:
    /// @param shown  false: nothing is ever written    @param seconds  the length of the run
    Progress(bool shown, double seconds);
    /// Erases the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Writes at most ten times a second.
    void Show(double secondsDone);

private:
    using Clock = std::chrono::steady_clock;

    bool shown_;
    double seconds_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point next_ = start_;
    bool written_ = false;
};

}  // namespace Quilo::Host
