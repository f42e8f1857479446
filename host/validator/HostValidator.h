// SPDX-License-Identifier: MIT
// The validator: tests an object the way patchers, users and system failures treat it, level by
// level.
#pragma once

#include "HostFault.h"
#include "HostOptions.h"
#include "validator/HostBench.h"

#include <string>

namespace Quilo::Host {

inline constexpr int kValidatorLevels = 10;

/// Runs levels 1 to options.validate on the box text options.script and prints what it did, what
/// failed and "N passed, M failed".  Every line is flushed before the next step begins, so that a
/// crash shows where it happened.
/// @return Done, or HostFailed when a check failed    Throws: Fault.
ExitStatus Validate(const Options& options);

/// Receives the results of the checks.
class Report {
public:
    void Line(const std::string& text);
    /// Records one check; `why` is shown when it failed.
    void Check(bool good, const std::string& what, const std::string& why = "");
    /// The same for a check that passes when `why` is empty.
    void Refute(const std::string& what, const std::string& why) { Check(why.empty(), what, why); }
    void Skip(const std::string& what, const std::string& why);

    int NumPassed() const { return numPassed_; }
    int NumFailed() const { return numFailed_; }

private:
    int numPassed_ = 0;
    int numFailed_ = 0;
};

struct Validation {
    Bench bench;
    Report report;
    Random random;

    /// Plays vectors. "" if every sample was written and finite and the API was not misused since
    /// the last call; else the fault.
    std::string Faults(unsigned vectors);
    /// A message with valid arguments, spelled as in a script.
    std::string Sensible(const std::string& message);
    /// Sets random values for every attribute that a user can set.
    void Walk();
};

// The levels.
void CheckThatItSounds(Validation& v);
void CheckAssistance(Validation& v);
void CheckAttributes(Validation& v);
void CheckMessages(Validation& v);
void CheckChain(Validation& v);
void CheckState(Validation& v);
void CheckThreads(Validation& v);
void CheckWalk(Validation& v);
void CheckFailures(Validation& v);
void CheckStorm(Validation& v);

}  // namespace Quilo::Host
